// A module that exports one function and no version.
extern "C" __attribute__((visibility("default"))) int Answer() {
    return 42;
}
