// Texts that are made to cost much: a time that grew with the square of their length would be
// minutes.
#include "SampleDictionary.h"
#include "server/wire/GroupReader.h"
#include "server/wire/WireText.h"

#include "support/Wire.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>

namespace {

using namespace zan::server;

constexpr std::size_t hostileSize = 2'000'000;
constexpr std::chrono::seconds patience(30);

struct Hostile {
    char const* name;
    std::function<std::string(int)> part;
};

// The parts numbered from 0, after a message type.
std::string textOf(Hostile const& hostile) {
    std::string text = "35=D|";
    for (int i = 0; text.size() < hostileSize; ++i) {
        text += hostile.part(i);
    }
    return onTheWire(text);
}

std::function<std::string(int)> always(char const* part) {
    return [part](int) { return std::string(part); };
}

class HostileText : public testing::TestWithParam<Hostile> {};

TEST_P(HostileText, IsReadInNoTimeToSpeakOf) {
    CompiledDictionary const dictionary(sampleDictionary());
    std::string const text = textOf(GetParam());
    auto const start = std::chrono::steady_clock::now();
    auto const model = readMessage(text, fieldSeparator, Reading::Tolerant, dictionary);
    ASSERT_TRUE(model);
    try {
        wireText(*model, dictionary);
        readMessage(text, fieldSeparator, Reading::Strict, dictionary);
    } catch (MalformedMessage const&) {
        // Most of them must not go out.
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, patience);
}

INSTANTIATE_TEST_SUITE_P(
    All, HostileText,
    testing::Values(
        Hostile{"LengthWithoutData", always("95=5|")}, Hostile{"LengthAndNonsense", always("a|")},
        Hostile{"NonsenseAfterALength", [](int i) { return i == 0 ? "95=5|" : "a|"; }},
        Hostile{"DataThatIsTooShort", always("95=9999999|96=x|")},
        Hostile{"EqualSigns", always("=")}, Hostile{"Separators", always("|")},
        Hostile{"Digits", always("1")}, Hostile{"OneValue", always("a")},
        Hostile{"OneTag", always("58=x|")},
        Hostile{"AscendingTags", [](int i) { return std::to_string(1000 + i) + "=x|"; }},
        Hostile{"DescendingTags", [](int i) { return std::to_string(2000000 - i) + "=x|"; }},
        Hostile{"ScatteredTags",
                [](int i) { return std::to_string(1 + i * 7919LL % 1000003) + "=x|"; }},
        Hostile{"Counts", always("453=1|")}, Hostile{"CountsOfTwoGroups", always("453=0|78=0|")},
        Hostile{"Instances", [](int i) { return i == 0 ? "453=1|448=A|" : "448=A|"; }},
        Hostile{"Groups", always("453=1|448=A|")},
        Hostile{"NestedCounts", [](int i) { return i == 0 ? "453=1|448=A|" : "802=1|"; }},
        Hostile{"NestedInstances",
                [](int i) { return i == 0 ? "453=1|448=A|802=9|" : "523=x|803=y|"; }},
        Hostile{"OneMember", [](int i) { return i == 0 ? "453=1|448=A|" : "447=D|"; }}),
    [](auto const& tested) { return std::string(tested.param.name); });

} // namespace
