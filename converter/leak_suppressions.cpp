// Assimp keeps some memory of files that it refuses. LeakSanitizer calls this function, and sets
// its name. NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:libassimp\n"; }
// NOLINTEND(bugprone-reserved-identifier)
