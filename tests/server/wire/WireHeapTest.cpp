// Reading and writing messages does not go to the heap once the free lists are warm.
#include "SampleDictionary.h"
#include "performance/HeapCounter.h"
#include "server/wire/GroupReader.h"
#include "server/wire/WireText.h"

#include "support/Wire.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace zan::server;

constexpr int rounds = 1000;

template <class Work>
std::size_t allocationsOf(Work work) {
    auto const repeat = [&work] {
        for (int i = 0; i < rounds; ++i) {
            work();
        }
    };
    repeat();
    return heapAllocationsOf(repeat);
}

class WireHeap : public testing::TestWithParam<char const*> {
protected:
    void SetUp() override {
#ifdef ZAN_TEST_WITHOUT_POOLS
        GTEST_SKIP() << "this build has no free lists: every block comes from the heap";
#endif
    }

    CompiledDictionary const dictionary_{sampleDictionary()};
    std::string const text_ = onTheWire(GetParam());
};

TEST_P(WireHeap, IsNotNeededToRead) {
    EXPECT_EQ(allocationsOf(
                  [this] { readMessage(text_, fieldSeparator, Reading::Tolerant, dictionary_); }),
              0U);
}

TEST_P(WireHeap, IsNotNeededToWriteIntoATextThatIsUsedAgain) {
    auto const model = readMessage(text_, fieldSeparator, Reading::Tolerant, dictionary_);
    std::string written;
    EXPECT_EQ(allocationsOf([&] {
                  written.clear();
                  appendWireText(written, *model, dictionary_);
              }),
              0U);
}

INSTANTIATE_TEST_SUITE_P(
    All, WireHeap,
    testing::Values("8=FIX.4.4|9=152|35=D|34=7|49=ME|52=20261121-14:05:09.117|56=YOU|1=ACC-7731|"
                    "11=ORD-42|15=USD|21=1|38=250000|40=2|44=1.08425|54=1|55=EURUSD|59=0|"
                    "60=20261121-14:05:09|207=XLON|10=000|",
                    "35=D|11=x|78=2|79=a|80=5|79=b|80=6|453=2|448=A|447=D|802=2|523=x|803=1|"
                    "523=y|448=B|452=3|"));

} // namespace
