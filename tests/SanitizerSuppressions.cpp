// What the sanitizers report of libraries that aren't ours, and aren't built with them. They ask for these by name.

extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() {
    // x265 3.5 loses copies of its parameters and a row of its filters with each encoder that is opened and closed.
    return "leak:libx265.so\n";
}

extern "C" const char* __tsan_default_suppressions() {
    // The encoders' frame and row threads agree through atomics that the checker can't see, since only their calls of
    // memset and memcpy are watched.
    return "race:libx264.so\n"
           "race:libx265.so\n";
}
