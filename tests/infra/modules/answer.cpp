// A module with one function that is seen outside, and one that is not.

extern "C" __attribute__((visibility("default"))) int zan_test_answer();
extern "C" int zan_test_hidden();

int zan_test_answer() {
    return ZAN_TEST_ANSWER;
}

int zan_test_hidden() {
    return 0;
}
