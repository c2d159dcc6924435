// Leaks that aren't ours. The leak checker asks for them by this name.

extern "C" const char* __lsan_default_suppressions();

extern "C" const char* __lsan_default_suppressions() {
    // x265 3.5 loses copies of its parameters and a row of its filters with each encoder that is opened and closed.
    return "leak:libx265.so\n";
}
