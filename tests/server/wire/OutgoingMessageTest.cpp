#include "server/wire/OutgoingMessage.h"

#include "SampleDictionary.h"
#include "server/wire/FieldText.h"

#include "support/Wire.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace {

using namespace zan::server;

std::string printed(FixFields const& fields) {
    std::string text;
    for (FixField const& field : fields) {
        text += std::to_string(field.tag) + "=" + field.value + "|";
    }
    return text;
}

counted_ptr<ZANFieldGroup> instanceOf(int groupTag, int tag, std::string const& value) {
    counted_ptr<ZANFieldGroup> group(new ZANFieldGroup(groupTag));
    group->setFieldValue(tag, value);
    return group;
}

std::string printedModel(ZANFieldGroup const& model) {
    return printed(outgoingFromModel(model, sampleDictionary()).body);
}

TEST(OutgoingMessage, KeepsTheOrderOfItsText) {
    auto const message = outgoingFromText("55=IBM|35=D|11=x|453=1|448=A|54=1|", sampleDictionary());
    EXPECT_EQ(message.type, "D");
    EXPECT_EQ(printed(message.body), "55=IBM|11=x|453=1|448=A|54=1|");
}

TEST(OutgoingMessage, ReadsTextWithTheSeparatorOfTheWire) {
    auto const message =
        outgoingFromText(onTheWire("35=D|11=x") + '\x01' + "58=a|b", sampleDictionary());
    EXPECT_EQ(printed(message.body), "11=x|58=a|b|");
}

TEST(OutgoingMessage, LeavesTheEnginesFieldsToTheEngine) {
    auto const message =
        outgoingFromText("8=FIX.4.2|9=5|35=D|34=7|49=ME|56=YOU|52=now|16577=1|16580=2|11=x|10=000|",
                         sampleDictionary());
    EXPECT_EQ(printed(message.body), "11=x|");
}

TEST(OutgoingMessage, KeepsOtherHeaderFields) {
    EXPECT_EQ(printed(outgoingFromText("35=D|115=desk|11=x", sampleDictionary()).body),
              "115=desk|11=x|");
}

TEST(OutgoingMessage, RefusesMalformedText) {
    EXPECT_THROW(outgoingFromText("35=D|55=A|55=B", sampleDictionary()), MalformedMessage);
}

TEST(OutgoingMessage, KnowsTheTypesOfTheProtocol) {
    for (char const* type : {"0", "1", "2", "3", "4", "5", "A"}) {
        EXPECT_TRUE((OutgoingMessage{type, {}}.isAdmin())) << type;
    }
    for (char const* type : {"6", "D", "a", "AE", "UAJ", "01"}) {
        EXPECT_FALSE((OutgoingMessage{type, {}}.isAdmin())) << type;
    }
}

TEST(OutgoingMessage, WritesAModelByAscendingTags) {
    ZANFieldGroup model("D");
    model.setFieldValue(55, "IBM");
    model.setFieldValue(44, 10.5);
    model.setFieldValue(38, 100);
    model.setFieldValue(43, true);
    model.setFieldValue(54, '1');
    EXPECT_EQ(printedModel(model), "38=100|43=Y|44=10.5|54=1|55=IBM|");
}

TEST(OutgoingMessage, DoesNotMindWhatAModelHoldsForTheEngine) {
    ZANFieldGroup model("D");
    model.setFieldValue(9, "");
    model.setFieldValue(34, "a\x01");
    model.setFieldValue(11, "x");
    EXPECT_EQ(printedModel(model), "11=x|");
}

TEST(OutgoingMessage, WritesGroupsInTheOrderOfTheDictionary) {
    ZANFieldGroup model("D");
    model.setFieldValue(55, "IBM");
    model.setFieldValue(500, "x");
    auto const party = instanceOf(453, 452, "3");
    party->setFieldValue(448, "A");
    party->setFieldValue(447, "D");
    party->addGroup(instanceOf(802, 523, "sub"));
    model.addGroup(party);
    model.addGroup(instanceOf(453, 448, "B"));
    EXPECT_EQ(printedModel(model), "55=IBM|453=2|448=A|447=D|452=3|802=1|523=sub|448=B|500=x|");
}

TEST(OutgoingMessage, LeavesOutAFieldThatAnIteratorEmptied) {
    ZANFieldGroup model("D");
    auto const party = instanceOf(453, 448, "A");
    party->setFieldValue(452, 1);
    auto const fields = party->fieldIterator();
    fields->next();
    fields->current() = nullptr;
    model.addGroup(party);
    EXPECT_EQ(printedModel(model), "453=1|448=A|");
}

TEST(OutgoingMessage, WritesBeforeItsGroupsWhatTheyCouldClaim) {
    ZANFieldGroup model("D");
    model.setFieldValue(523, "of the message"); // a member of a group in the group
    model.setFieldValue(802, "0");
    model.setFieldValue(361, "data");
    model.setFieldValue(500, "x");
    model.addGroup(instanceOf(78, 79, "acc"));
    model.addGroup(instanceOf(453, 448, "A"));
    EXPECT_EQ(printedModel(model),
              "360=4|361=data|523=of the message|802=0|78=1|79=acc|453=1|448=A|500=x|");
}

TEST(OutgoingMessage, WritesBeforeACountOfNothingWhatItCouldClaim) {
    ZANFieldGroup model("D");
    model.setFieldValue(55, "IBM");
    model.setFieldValue(78, "0");
    model.setFieldValue(79, "of the message");
    EXPECT_EQ(printedModel(model), "55=IBM|79=of the message|78=0|");
}

TEST(OutgoingMessage, AddsTheLengthOfData) {
    ZANFieldGroup model("D");
    model.setFieldValue(89, "sign");
    model.setFieldValue(96, std::string("a\x01") + "b");
    EXPECT_EQ(printedModel(model), "93=4|89=sign|95=3|96=a\x01"
                                   "b|");
}

TEST(OutgoingMessage, TakesCountsAndLengthsThatAreTrue) {
    ZANFieldGroup model("D");
    model.setFieldValue(453, 1);
    model.addGroup(instanceOf(453, 448, "A"));
    model.setFieldValue(78, 0);
    model.setFieldValue(95, 2);
    model.setFieldValue(96, "ab");
    EXPECT_EQ(printedModel(model), "78=0|95=2|96=ab|453=1|448=A|");
}

TEST(OutgoingMessage, ComesBackFromItsTextUnchanged) {
    std::string const text = "11=x|55=IBM|95=3|96=a=b|453=2|448=A|447=D|802=2|523=x|803=1|523=y|"
                             "448=B|";
    auto const message = outgoingFromText("35=D|" + text, sampleDictionary());
    EXPECT_EQ(printed(message.body), text);
}

struct BadModel {
    char const* name;
    std::function<void(ZANFieldGroup&)> spoil;
    char const* error;
};

class OutgoingModel : public testing::TestWithParam<BadModel> {};

TEST_P(OutgoingModel, IsRefusedWithTagAndReason) {
    ZANFieldGroup model("D");
    GetParam().spoil(model);
    try {
        outgoingFromModel(model, sampleDictionary());
        FAIL() << "a bad model was taken";
    } catch (MalformedMessage const& e) {
        EXPECT_STREQ(e.what(), GetParam().error);
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, OutgoingModel,
    testing::Values(
        BadModel{"NoType", [](ZANFieldGroup& model) { model.removeField(35); },
                 "tag 35, the type of the message, is missing"},
        BadModel{"EmptyValue", [](ZANFieldGroup& model) { model.setFieldValue(55, ""); },
                 "tag 55 has an empty value"},
        BadModel{"BadTag", [](ZANFieldGroup& model) { model.setFieldValue(-4, "x"); },
                 "tag -4: a tag has to be a positive number"},
        BadModel{"Separator", [](ZANFieldGroup& model) { model.setFieldValue(58, "a\x01"); },
                 "tag 58 holds the separator (SOH) of fields in its value"},
        BadModel{"Length",
                 [](ZANFieldGroup& model) {
                     model.setFieldValue(95, 5);
                     model.setFieldValue(96, "ab");
                 },
                 "tag 95 tells a length of 5, but tag 96 has 2 characters"},
        BadModel{"LengthAlone", [](ZANFieldGroup& model) { model.setFieldValue(95, 5); },
                 "tag 95 tells the length of tag 96, which is missing"},
        BadModel{"Count",
                 [](ZANFieldGroup& model) {
                     model.setFieldValue(453, 2);
                     model.addGroup(instanceOf(453, 448, "A"));
                 },
                 "tag 453 tells 2 instances of its group, but their number is 1"},
        BadModel{"CountAlone", [](ZANFieldGroup& model) { model.setFieldValue(453, 2); },
                 "tag 453 tells 2 instances of its group, but their number is 0"},
        BadModel{"UnknownGroup",
                 [](ZANFieldGroup& model) { model.addGroup(instanceOf(555, 600, "A")); },
                 "tag 555: the session's dictionary knows no such group in message type D; a "
                 "DataDictionary that knows it would be right"},
        BadModel{"UnknownMember",
                 [](ZANFieldGroup& model) {
                     auto const party = instanceOf(453, 448, "A");
                     party->setFieldValue(55, "IBM");
                     model.addGroup(party);
                 },
                 "tag 55: the session's dictionary knows no such member of group 453 in message "
                 "type D; a DataDictionary that knows it would be right"},
        BadModel{"UnknownSubGroup",
                 [](ZANFieldGroup& model) {
                     auto const party = instanceOf(453, 448, "A");
                     party->addGroup(instanceOf(78, 79, "acc"));
                     model.addGroup(party);
                 },
                 "tag 78: the session's dictionary knows no such member of group 453 in message "
                 "type D; a DataDictionary that knows it would be right"},
        BadModel{"NoDelimiter",
                 [](ZANFieldGroup& model) { model.addGroup(instanceOf(453, 447, "D")); },
                 "tag 448 is missing in an instance of group 453, which has to begin with it"}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST(OutgoingMessage, PutsFieldsWhereTheDictionaryOrTheStandardPutsThem) {
    GroupDictionary own;
    own.header[20010] = {20011, {20011, 20012}, {}};
    CompiledDictionary const dictionary = own.compiled();
    OutgoingMessage const message =
        outgoingFromText("35=D|11=x|20010=1|20011=a|20012=b|90=1|91=s|93=1|89=z|", dictionary);
    std::string places;
    for (FixField const& field : message.body) {
        places += "bht"[static_cast<int>(field.place)];
    }
    EXPECT_EQ(places, "bhhhhhtt");
}

TEST(LogonFields, NeedNoType) {
    ZANFieldGroup fields;
    fields.setFieldValue(553, "user");
    fields.setFieldValue(554, "secret");
    EXPECT_EQ(printed(logonFieldsFromModel(fields, sampleDictionary())), "553=user|554=secret|");
}

TEST(LogonFields, CannotBeOfAnotherType) {
    EXPECT_THROW(logonFieldsFromModel(ZANFieldGroup("D"), sampleDictionary()), MalformedMessage);
    EXPECT_EQ(printed(logonFieldsFromModel(ZANFieldGroup("A"), sampleDictionary())), "");
}

} // namespace
