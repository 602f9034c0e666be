// Work on messages does not go to the heap once the free lists are warm.
#include "HeapCounter.h"
#include "TestOrder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace {

// More than a batch of free blocks, so that the lists have to be refilled, too.
constexpr int rounds = 1000;

struct Work {
    char const* name;
    std::function<void()> once;
};

void copyOrder() {
    static auto const body = newOrderBody();
    ZANFieldGroup const copied(*body);
}

void walkOrder() {
    static auto const body = newOrderBody();
    int tags = 0;
    for (auto const fields = body->fieldIterator(); fields->hasNext(); fields->next()) {
        tags += fields->current()->getTag();
    }
    ASSERT_EQ(tags, 11 + 1 + 55 + 54 + 38 + 40 + 44 + 59 + 60 + 21 + 207 + 15 + 8 + 35);
}

// Builds many orders before it frees the first, as an application does that keeps some.
void keepOrders() {
    constexpr int kept = 50;
    static std::vector<counted_ptr<ZANMessage>> orders(kept);
    for (auto& order : orders) {
        order = newOrder();
    }
    for (auto& order : orders) {
        order.reset();
    }
}

std::vector<Work> const allWork = {
    {"build", [] { newOrder(); }},
    {"build and keep", keepOrders},
    {"copy", copyOrder},
    {"walk", walkOrder},
};

} // namespace

TEST(HeapCounter, SeesAnAllocationByNewAndByMalloc) {
#ifdef ZAN_TEST_SANITIZED
    GTEST_SKIP() << "a sanitizer has a heap of its own";
#endif
    EXPECT_GE(heapAllocationsOf([] { std::string const text(1000, 'x'); }), 1U);
    EXPECT_GE(heapAllocationsOf([] {
                  void* volatile block = std::malloc(10);
                  std::free(block);
              }),
              1U);
}

TEST(HeapAllocation, IsNotNeededToBuildCopyOrWalkAnOrder) {
#ifdef ZAN_TEST_WITHOUT_POOLS
    GTEST_SKIP() << "this build has no free lists: every block comes from the heap";
#endif
    for (auto const& work : allWork) {
        SCOPED_TRACE(work.name);
        auto const repeat = [&work] {
            for (int i = 0; i < rounds; ++i) {
                work.once();
            }
        };
        repeat();
        EXPECT_EQ(heapAllocationsOf(repeat), 0U);
    }
}
