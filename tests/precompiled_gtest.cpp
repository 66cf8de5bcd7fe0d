// Nothing runs this: its precompiled header is what the tests use.
int main() { return 0; }
