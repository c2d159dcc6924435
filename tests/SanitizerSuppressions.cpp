// What the sanitizers report of libraries that aren't ours, and aren't built with them. They ask for these by name.

extern "C" const char* __asan_default_suppressions();
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions();

extern "C" const char* __asan_default_suppressions() {
    // xkbcommon copies names out of the server's answers, which end without a zero byte, with strndup;
    // strict_string_checks wants one there.
    return "interceptor_via_lib:libxkbcommon-x11.so\n";
}

extern "C" const char* __lsan_default_suppressions() {
    // x265 3.5 loses copies of its parameters and a row of its filters with each encoder that is opened and closed.
    return "leak:libx265.so\n";
}

extern "C" const char* __tsan_default_suppressions() {
    // The encoders' frame and row threads agree through atomics that the checker can't see, since only their calls of
    // memset and memcpy are watched.
    //
    // PipeWire asks getpwuid, which has one answer for all threads, for each context that is made: ours and the tests'
    // own client's. The loader frees under a lock of its own, which the checker doesn't see; PipeWire's parts are
    // loaded and unloaded on many threads.
    //
    // An exception's owners are counted inside the C++ library, where the checker doesn't see it: who lets go of one
    // last seems to free what others have read.
    //
    // libusbmuxd finds out the program's name, which is part of its messages, on first use and without a lock.
    return "race:libx264.so\n"
           "race:libx265.so\n"
           "race:pw_get_user_name\n"
           "race:_dl_close_worker\n"
           "race:std::__exception_ptr::exception_ptr::_M_release\n"
           "race:plist_new_string\n";
}
