#include "server/wire/GroupReader.h"

#include "SampleDictionary.h"

#include "support/Wire.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

using namespace zan::server;

// A short text of a model: fields and groups by ascending tag, instances in parentheses.
std::string shape(ZANFieldGroup const& group) {
    std::string text;
    for (auto fields = group.fieldIterator(); fields->hasNext(); fields->next()) {
        ZANField const& field = *std::as_const(*fields).current();
        text += std::to_string(field.getTag()) + "=" + field.getValue().asString() + "|";
    }
    for (auto groups = group.groupIterator(); groups->hasNext(); groups->next()) {
        ZANFieldGroup const& instance = *std::as_const(*groups).current();
        text += std::to_string(instance.getGroupTag()) + "(" + shape(instance) + ")";
    }
    return text;
}

std::string read(std::string const& text, Reading reading = Reading::Strict) {
    return shape(*readMessage(text, '|', reading, sampleDictionary()));
}

std::string refusalOf(std::string const& text) {
    try {
        read(text);
    } catch (MalformedMessage const& e) {
        return e.what();
    }
    return "no error";
}

TEST(GroupReader, KeepsEveryFieldAsAString) {
    auto const model = readMessage("35=D|38=100|", '|', Reading::Strict, sampleDictionary());
    EXPECT_EQ(model->getField(38)->getType(), Value::STRING);
    EXPECT_EQ(model->getField(38)->getValue().asString(), "100");
    EXPECT_EQ(model->getGroupTag(), 0);
}

TEST(GroupReader, MakesNestedGroupsOfRepeatedMembers) {
    EXPECT_EQ(read("35=D|453=2|448=A|447=D|802=2|523=x|803=1|523=y|448=B|452=3|55=IBM|"),
              "35=D|55=IBM|453(447=D|448=A|802(523=x|803=1|)802(523=y|))453(448=B|452=3|)");
}

TEST(GroupReader, EndsAGroupAtTheFirstTagThatIsNoMember) {
    EXPECT_EQ(read("35=D|78=1|79=acc|80=5|453=1|448=A|58=x|"),
              "35=D|58=x|78(79=acc|80=5|)453(448=A|)");
}

TEST(GroupReader, KnowsTheGroupsOfTheHeader) {
    EXPECT_EQ(read("35=0|627=1|628=hop|629=t|112=id|"), "35=0|112=id|627(628=hop|629=t|)");
}

TEST(GroupReader, TakesTheMessageTypeFromAnywhere) {
    EXPECT_EQ(read("453=1|448=A|35=D|"), "35=D|453(448=A|)");
}

TEST(GroupReader, LeavesGroupsOfOtherTypesAlone) {
    EXPECT_EQ(read("35=8|453=1|448=A|"), "35=8|448=A|453=1|");
}

TEST(GroupReader, KeepsACountWithoutInstancesAsAField) {
    EXPECT_EQ(read("35=D|453=0|55=IBM|"), "35=D|55=IBM|453=0|");
}

TEST(GroupReader, KeepsDataWithSeparatorsInsideAGroup) {
    EXPECT_EQ(read("35=D|78=2|79=a|360=3|361=|=||79=b|"), "35=D|78(79=a|360=3|361=|=||)78(79=b|)");
}

struct Text {
    char const* name;
    char const* text;
    char const* result;
};

std::string textName(testing::TestParamInfo<Text> const& tested) {
    return tested.param.name;
}

class GroupReaderRefusal : public testing::TestWithParam<Text> {};

TEST_P(GroupReaderRefusal, NamesTagAndReason) {
    EXPECT_EQ(refusalOf(GetParam().text), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    All, GroupReaderRefusal,
    testing::Values(
        Text{"NoType", "55=IBM|", "tag 35, the type of the message, is missing"},
        Text{"Nothing", "", "tag 35, the type of the message, is missing"},
        Text{"RepeatedTag", "35=D|55=A|55=B|",
             "tag 55 stands twice, and the session's dictionary knows no group of message type D "
             "that holds it; a DataDictionary that knows the group would be right"},
        Text{"RepeatedMember", "35=D|453=1|448=A|447=D|447=E|",
             "tag 447 stands twice in one instance of group 453"},
        Text{"RepeatedCount", "35=D|453=1|448=A|55=x|453=1|448=B|",
             "tag 453 counts the instances of a group, and stands twice"},
        Text{"TooFew", "35=D|453=2|448=A|55=x|",
             "tag 453 tells 2 instances of its group, but the number of those that follow is 1"},
        Text{"TooMany", "35=D|453=1|448=A|448=B|",
             "tag 453 tells 1 instances of its group, but the number of those that follow is 2"},
        Text{"None", "35=D|453=1|",
             "tag 453 tells 1 instances of its group, but the number of those that follow is 0"},
        Text{"NestedTooFew", "35=D|453=1|448=A|802=2|523=x|",
             "tag 802 tells 2 instances of its group, but the number of those that follow is 1"},
        Text{"WrongBegin", "35=D|453=1|447=D|448=A|",
             "tag 447: an instance of group 453 has to begin with tag 448"},
        Text{"NoCount", "35=D|453=x|448=A|",
             "tag 453 counts the instances of a group, so a number would be right, not x"},
        Text{"NegativeCount", "35=D|453=-1|448=A|",
             "tag 453 counts the instances of a group, so a number would be right, not -1"}),
    textName);

class GroupReaderTolerance : public testing::TestWithParam<Text> {};

TEST_P(GroupReaderTolerance, MakesTheBestOfIt) {
    EXPECT_EQ(read(GetParam().text, Reading::Tolerant), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    All, GroupReaderTolerance,
    testing::Values(Text{"NoType", "55=IBM|", "55=IBM|"}, Text{"Nothing", "", ""},
                    Text{"RepeatedTag", "35=D|55=A|55=B|", "35=D|55=B|"},
                    Text{"RepeatedMember", "35=D|453=1|448=A|447=D|447=E|",
                         "35=D|453(447=E|448=A|)"},
                    Text{"TooFew", "35=D|453=2|448=A|55=x|", "35=D|55=x|453(448=A|)"},
                    Text{"TooMany", "35=D|453=1|448=A|448=B|", "35=D|453(448=A|)453(448=B|)"},
                    Text{"WrongBegin", "35=D|453=1|447=D|448=A|", "35=D|447=D|448=A|453=1|"},
                    Text{"NoCount", "35=D|453=x|448=A|", "35=D|453(448=A|)"},
                    Text{"CountTwice", "35=D|453=1|448=A|55=x|453=1|448=B|",
                         "35=D|55=x|453(448=A|)453(448=B|)"}),
    textName);

TEST(GroupReader, MakesAModelOfEveryBeginningOfAMessage) {
    std::string const whole = onTheWire(
        "8=FIX.4.4|9=100|35=D|95=5|96=a|b=c|453=1|448=A|802=1|523=x|803=1|55=IBM|10=000|");
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        EXPECT_TRUE(readMessage(std::string_view(whole).substr(0, length), fieldSeparator,
                                Reading::Tolerant, sampleDictionary()));
    }
}

} // namespace
