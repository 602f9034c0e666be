// A module that cannot be loaded, because it needs a function that nobody has.

extern "C" int zan_test_nowhere();

extern "C" __attribute__((visibility("default"))) int zan_test_answer();

int zan_test_answer() {
    return zan_test_nowhere();
}
