// Asked by the thread sanitizer where a program is built with it; nobody else calls this. FFmpeg's libraries
// are not instrumented: how their threads wait for each other cannot be seen, and so the memory that they
// share shall not be looked at either. All code of ours in this program still is.
extern "C" __attribute__((visibility("default"), used)) const char* __tsan_default_options();

extern "C" const char* __tsan_default_options() {
    return "ignore_noninstrumented_modules=1";
}
