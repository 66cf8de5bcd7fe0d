// Assimp keeps some memory of files that it refuses. LeakSanitizer calls this function.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:libassimp\n"; }
