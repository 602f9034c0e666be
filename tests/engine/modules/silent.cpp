// A module without a creation function.
extern "C" __attribute__((visibility("default"))) int const zan_test_module_without_function = 1;
