// A module that shows a variable and no function.

extern "C" __attribute__((visibility("default"))) int const zan_test_variable = 1;
