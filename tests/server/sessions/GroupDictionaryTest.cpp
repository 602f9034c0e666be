#include "server/sessions/GroupDictionary.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using zan::server::GroupDictionary;
using zan::server::GroupRule;
using zan::server::loadGroups;
using zan::server::parseGroups;

char const* const text = R"(<fix type="FIX" major="4" minor="4">
 <header>
  <field name="BeginString" required="Y"/>
  <group name="NoHops" required="N"><field name="HopCompID" required="N"/></group>
 </header>
 <trailer><field name="CheckSum" required="Y"/></trailer>
 <messages>
  <message name="Order" msgtype="D" msgcat="app">
   <field name="ClOrdID" required="Y"/>
   <component name="Parties" required="N"/>
  </message>
  <message name="News" msgtype="B" msgcat="app"><field name="ClOrdID" required="N"/></message>
 </messages>
 <components>
  <component name="Parties">
   <group name="NoPartyIDs" required="N">
    <field name="PartyID" required="N"/>
    <field name="PartyIDSource" required="N"/>
    <group name="NoPartySubIDs" required="N">
     <field name="PartySubIDType" required="N"/>
     <field name="PartySubID" required="N"/>
    </group>
   </group>
  </component>
 </components>
 <fields>
  <field number="8" name="BeginString" type="STRING"/>
  <field number="10" name="CheckSum" type="STRING"/>
  <field number="11" name="ClOrdID" type="STRING"/>
  <field number="447" name="PartyIDSource" type="CHAR"/>
  <field number="448" name="PartyID" type="STRING"/>
  <field number="453" name="NoPartyIDs" type="NUMINGROUP"/>
  <field number="523" name="PartySubID" type="STRING"/>
  <field number="627" name="NoHops" type="NUMINGROUP"/>
  <field number="628" name="HopCompID" type="STRING"/>
  <field number="802" name="NoPartySubIDs" type="NUMINGROUP"/>
  <field number="803" name="PartySubIDType" type="INT"/>
 </fields>
</fix>)";

TEST(GroupDictionary, TellsTheVersion) {
    EXPECT_EQ(parseGroups(text, "test").beginString, "FIX.4.4");
}

TEST(GroupDictionary, KnowsTheMembersOfAGroupInTheirOrder) {
    GroupDictionary const dictionary = parseGroups(text, "test");
    ASSERT_EQ(dictionary.messages.at("D").count(453), 1u);
    GroupRule const& parties = dictionary.messages.at("D").at(453);
    EXPECT_EQ(parties.delimiter, 448);
    EXPECT_EQ(parties.members, (std::vector<int>{448, 447, 802}));
}

TEST(GroupDictionary, KnowsAGroupInsideAGroup) {
    GroupDictionary const dictionary = parseGroups(text, "test");
    GroupRule const& inner = dictionary.messages.at("D").at(453).nested.at(802);
    EXPECT_EQ(inner.delimiter, 803);
    EXPECT_EQ(inner.members, (std::vector<int>{803, 523}));
}

TEST(GroupDictionary, KnowsTheGroupsOfTheHeader) {
    EXPECT_EQ(parseGroups(text, "test").header.at(627).delimiter, 628);
}

TEST(GroupDictionary, GivesAMessageWithoutGroupsNone) {
    EXPECT_TRUE(parseGroups(text, "test").messages.at("B").empty());
}

std::string failureOf(void (*action)()) {
    try {
        action();
    } catch (std::runtime_error const& error) {
        return error.what();
    }
    return "no failure";
}

TEST(GroupDictionary, NamesAFileThatIsNotThere) {
    std::string const failure = failureOf([] { loadGroups("/nowhere/at/all.xml"); });
    EXPECT_NE(failure.find("/nowhere/at/all.xml"), std::string::npos) << failure;
}

TEST(GroupDictionary, NamesATextThatIsNoDictionary) {
    for (char const* bad : {"", "no xml", "<fix", "<other/>"}) {
        EXPECT_THROW(parseGroups(bad, "broken.xml"), std::runtime_error) << bad;
    }
    std::string const failure = failureOf([] { parseGroups("<fix", "broken.xml"); });
    EXPECT_NE(failure.find("broken.xml"), std::string::npos) << failure;
}

TEST(GroupDictionary, NamesAFieldThatIsUsedButNotDefined) {
    std::string broken = text;
    std::string const field = R"(<field number="803" name="PartySubIDType" type="INT"/>)";
    broken.erase(broken.find(field), field.size());
    try {
        parseGroups(broken, "test");
        FAIL() << "read without the field";
    } catch (std::runtime_error const& error) {
        EXPECT_NE(std::string(error.what()).find("PartySubIDType"), std::string::npos)
            << error.what();
    }
}

} // namespace
