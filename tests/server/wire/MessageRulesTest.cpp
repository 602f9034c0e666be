#include "server/wire/MessageRules.h"

#include "support/Wire.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace zan::server;

struct Format {
    char const* type;
    char const* good;
    char const* bad;
};

class FieldFormat : public testing::TestWithParam<Format> {};

TEST_P(FieldFormat, IsLookedAt) {
    FieldType const type = fieldTypeOf(GetParam().type);
    EXPECT_TRUE(hasFormat(type, GetParam().good));
    EXPECT_FALSE(hasFormat(type, GetParam().bad));
}

INSTANTIATE_TEST_SUITE_P(
    Types, FieldFormat,
    testing::Values(
        Format{"CHAR", "x", "xy"}, Format{"INT", "-12", "+12"}, Format{"INT", "007", "1.5"},
        Format{"NUMINGROUP", "0", "-1"}, Format{"LENGTH", "12", "1a"}, Format{"SEQNUM", "12", ""},
        Format{"PRICE", "-10.50", "+200.00"}, Format{"QTY", "100", "1e5"}, Format{"AMT", ".5", "."},
        Format{"FLOAT", "5.", "-"}, Format{"PERCENTAGE", "0.1", "0.1.2"},
        Format{"BOOLEAN", "Y", "y"}, Format{"DAYOFMONTH", "31", "32"},
        Format{"LOCALMKTDATE", "20261122", "2026-11-22"},
        Format{"UTCDATEONLY", "20261231", "20261301"}, Format{"MONTHYEAR", "202611", "202613"},
        Format{"MONTHYEAR", "202611w3", "202611w6"}, Format{"MONTHYEAR", "20261131", "2026"},
        Format{"UTCTIMEONLY", "23:59:60", "24:00:00"},
        Format{"UTCTIMEONLY", "09:30:00.123456", "09:30:00."},
        Format{"UTCTIMESTAMP", "20261122-09:30:00.123", "20261122 09:30:00"},
        Format{"UTCTIMESTAMP", "20261122-09:30:00", "20261122-09:30"}));

TEST(FieldFormat, TakesAnythingForTypesThatNobodyKnows) {
    EXPECT_TRUE(hasFormat(fieldTypeOf("COLOUR"), "any thing"));
    EXPECT_TRUE(hasFormat(fieldTypeOf("STRING"), "any thing"));
}

TEST(StandardTypes, BelongToTheVersionsThatHaveThem) {
    EXPECT_TRUE(isTypeOfStandard("D", "FIX.4.0"));
    EXPECT_FALSE(isTypeOfStandard("V", "FIX.4.1"));
    EXPECT_TRUE(isTypeOfStandard("V", "FIX.4.2"));
    EXPECT_FALSE(isTypeOfStandard("AE", "FIX.4.2"));
    EXPECT_TRUE(isTypeOfStandard("AE", "FIX.4.3"));
    EXPECT_FALSE(isTypeOfStandard("BZ", "FIX.4.4"));
    EXPECT_TRUE(isTypeOfStandard("BZ", "FIXT.1.1"));
    EXPECT_TRUE(isTypeOfStandard("U1", "FIX.4.0"));
    EXPECT_FALSE(isTypeOfStandard("*", "FIXT.1.1"));
    EXPECT_FALSE(isTypeOfStandard("ZZZ", "FIXT.1.1"));
    EXPECT_FALSE(isTypeOfStandard("", "FIX.4.4"));
}

constexpr char orders[] = R"(<fix type="FIX" major="4" minor="4">
 <header><field name="Begin" required="Y"/></header>
 <trailer><field name="Sum" required="Y"/></trailer>
 <messages>
  <message name="Order" msgtype="D" msgcat="app">
   <field name="Id" required="Y"/>
   <group name="NoLegs" required="N">
    <field name="Leg" required="N"/>
    <group name="NoParts" required="N">
     <field name="Part" required="N"/>
     <field name="Share" required="Y"/>
    </group>
   </group>
  </message>
 </messages>
 <fields>
  <field number="8" name="Begin" type="STRING"/><field number="10" name="Sum" type="STRING"/>
  <field number="35" name="Type" type="STRING"/><field number="11" name="Id" type="STRING"/>
  <field number="555" name="NoLegs" type="NUMINGROUP"/><field number="600" name="Leg" type="STRING"/>
  <field number="539" name="NoParts" type="NUMINGROUP"/><field number="524" name="Part" type="STRING"/>
  <field number="525" name="Share" type="INT"/>
 </fields>
</fix>)";

struct Checked {
    char const* body;
    RejectReason reason;
    int tag;
};

class NestedGroups : public testing::TestWithParam<Checked> {};

TEST_P(NestedGroups, AreCheckedAtEveryDepth) {
    CompiledDictionary const dictionary = compileDictionary(orders, "orders");
    ValidationSettings settings;
    settings.useDictionary = true;
    MessageFault const fault =
        MessageRules(dictionary, settings)
            .check(onTheWire("8=FIX.4.4|35=D|11=a|" + std::string(GetParam().body) + "10=000|"));
    EXPECT_EQ(fault.reason, GetParam().reason);
    EXPECT_EQ(fault.tag, GetParam().tag);
}

constexpr int noTag = FixScanner::noNumber;

INSTANTIATE_TEST_SUITE_P(
    Bodies, NestedGroups,
    testing::Values(Checked{"555=2|600=A|539=2|524=x|525=1|524=y|525=2|600=B|", RejectReason::none,
                            noTag},
                    Checked{"555=1|600=A|539=0|", RejectReason::none, noTag},
                    Checked{"555=1|600=A|539=1|524=x|", RejectReason::requiredTagMissing, 525},
                    Checked{"555=1|600=A|539=2|524=x|525=1|", RejectReason::wrongGroupCount, 539},
                    Checked{"555=2|600=A|539=1|524=x|525=1|", RejectReason::wrongGroupCount, 555},
                    Checked{"555=1|600=A|539=1|524=x|525=a|", RejectReason::wrongFormat, 525},
                    Checked{"555=1|600=A|539=1|524=x|525=1|525=2|", RejectReason::repeatedTag, 525},
                    Checked{"555=1|600=A|525=1|", RejectReason::tagNotOfType, 525},
                    Checked{"555=1|600=A|999=1|", RejectReason::invalidTag, 999}));

TEST(MessageRules, DoNotTouchAdministrativeMessagesThatTheDictionaryLacks) {
    CompiledDictionary const dictionary = compileDictionary(orders, "orders");
    ValidationSettings settings;
    settings.useDictionary = true;
    EXPECT_FALSE(MessageRules(dictionary, settings).check(onTheWire("8=FIX.4.4|35=0|999=x|")));
}

} // namespace
