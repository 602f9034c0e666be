#include "server/wire/CompiledDictionary.h"

#include "server/dictionaries/Dictionaries.h"
#include "server/wire/SharedDictionary.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace zan::server;

char const* const sampleXml = R"(<fix type="FIX" major="4" minor="4">
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

CompiledGroup const& groupIn(CompiledDictionary const& dictionary, PlacedTags const& tags,
                             int count) {
    PlacedTag const* const placed = tags.find(count);
    return dictionary.group(placed ? *placed : PlacedTag());
}

TEST(CompiledDictionary, TellsTheVersion) {
    EXPECT_EQ(compileDictionary(sampleXml, "test").beginString(), "FIX.4.4");
}

TEST(CompiledDictionary, KnowsTheMembersOfAGroupInTheirOrder) {
    CompiledDictionary const dictionary = compileDictionary(sampleXml, "test");
    CompiledGroup const& parties = groupIn(dictionary, dictionary.groupsOf("D").counts, 453);
    EXPECT_EQ(parties.delimiter, 448);
    EXPECT_EQ(parties.members.find(448)->position, 0);
    EXPECT_EQ(parties.members.find(447)->position, 1);
    EXPECT_EQ(parties.members.find(802)->position, 2);
    EXPECT_EQ(parties.members.find(523), nullptr);
}

TEST(CompiledDictionary, KnowsAGroupInsideAGroup) {
    CompiledDictionary const dictionary = compileDictionary(sampleXml, "test");
    CompiledGroup const& parties = groupIn(dictionary, dictionary.groupsOf("D").counts, 453);
    CompiledGroup const& inner = groupIn(dictionary, parties.members, 802);
    EXPECT_EQ(inner.delimiter, 803);
    EXPECT_EQ(inner.members.find(523)->position, 1);
}

TEST(CompiledDictionary, TellsTheMembersOfAllGroupsOfAType) {
    CompiledDictionary const dictionary = compileDictionary(sampleXml, "test");
    for (int const tag : {448, 447, 802, 803, 523, 628}) {
        EXPECT_NE(dictionary.groupsOf("D").members.find(tag), nullptr) << tag;
    }
    EXPECT_EQ(dictionary.groupsOf("D").members.find(11), nullptr);
}

TEST(CompiledDictionary, KnowsTheGroupsOfTheHeaderInEveryType) {
    CompiledDictionary const dictionary = compileDictionary(sampleXml, "test");
    for (char const* const type : {"D", "B", "unknown"}) {
        EXPECT_EQ(groupIn(dictionary, dictionary.groupsOf(type).counts, 627).delimiter, 628);
    }
}

TEST(CompiledDictionary, TellsWhatIsRequired) {
    CompiledDictionary const dictionary = compileDictionary(sampleXml, "test");
    EXPECT_EQ(dictionary.find("D")->required, std::vector<int>{11});
    EXPECT_TRUE(dictionary.find("B")->required.empty());
    EXPECT_EQ(dictionary.header().required, std::vector<int>{8});
    EXPECT_EQ(dictionary.find("E"), nullptr);
}

TEST(CompiledDictionary, PutsTagsOfItsOwnIntoHeaderAndTrailer) {
    std::string own = sampleXml;
    own.replace(own.find("<field name=\"CheckSum\""), 0, R"(<field name="Seal" required="N"/>)");
    own.replace(own.find("<field name=\"BeginString\""), 0, R"(<field name="Desk" required="N"/>)");
    own.replace(own.find("</fields>"), 0,
                R"(<field number="20001" name="Desk"/><field number="20002" name="Seal"/>)");
    CompiledDictionary const dictionary = compileDictionary(own, "test");
    EXPECT_EQ(dictionary.placeOf(20001), TagPlace::header);
    EXPECT_EQ(dictionary.placeOf(20002), TagPlace::trailer);
    EXPECT_EQ(dictionary.placeOf(11), TagPlace::body);
    EXPECT_EQ(dictionary.placeOf(1156), TagPlace::header);
    EXPECT_EQ(compileDictionary(sampleXml, "test").placeOf(20001), TagPlace::body);
}

TEST(CompiledDictionary, TakesTheSessionsOwnMessagesFromTheTransport) {
    std::string app = sampleXml;
    app.replace(app.find("major=\"4\""), 9, "major=\"5\"");
    CompiledDictionary const dictionary =
        compileDictionary(app, "app", transportDictionary(), "transport");
    EXPECT_EQ(dictionary.beginString(), "FIXT.1.1");
    EXPECT_NE(dictionary.find("A")->fields.find(1137), nullptr);
    EXPECT_EQ(groupIn(dictionary, dictionary.groupsOf("D").counts, 453).delimiter, 448);
    EXPECT_NE(dictionary.header().fields.find(1128), nullptr);
}

std::string failureOf(std::string const& xml) {
    try {
        compileDictionary(xml, "broken.xml");
    } catch (BadDictionary const& error) {
        return error.what();
    }
    return "no failure";
}

TEST(CompiledDictionary, NamesAFileThatIsNotThere) {
    EXPECT_THROW(readDictionaryFile("/nowhere/at/all.xml"), BadDictionary);
}

TEST(CompiledDictionary, NamesATextThatIsNoDictionary) {
    for (char const* bad : {"", "no xml", "<fix", "<other/>", "<fix/>", "<fix><fields/></fix>"}) {
        EXPECT_NE(failureOf(bad).find("broken.xml"), std::string::npos) << bad;
    }
}

TEST(CompiledDictionary, NamesTheLineOfAFieldThatIsUsedButNotDefined) {
    std::string broken = sampleXml;
    std::string const field = R"(<field number="803" name="PartySubIDType" type="INT"/>)";
    broken.erase(broken.find(field), field.size());
    EXPECT_EQ(failureOf(broken), "cannot read the data dictionary broken.xml:20: PartySubIDType: "
                                 "is used, but no field in <fields> has this name");
}

std::string dictionaryWith(std::string const& components) {
    return "<fix type='FIX' major='4' minor='4'><header/><trailer/><messages>"
           "<message name='M' msgtype='D' msgcat='app'><component name='C0' required='N'/>"
           "</message></messages><components>" +
           components +
           "</components><fields><field number='1' name='F' type='STRING'/>"
           "<field number='2' name='N' type='NUMINGROUP'/></fields></fix>";
}

std::string component(int number, std::string const& inside) {
    return "<component name='C" + std::to_string(number) + "'>" + inside + "</component>";
}

std::string use(int number) {
    return "<component name='C" + std::to_string(number) + "' required='N'/>";
}

TEST(CompiledDictionary, RefusesAComponentInsideItself) {
    EXPECT_NE(failureOf(dictionaryWith(component(0, use(0)))).find("component C0: is used inside"),
              std::string::npos);
    EXPECT_NE(failureOf(dictionaryWith(component(0, use(1)) + component(1, use(0))))
                  .find("component C0: is used inside itself"),
              std::string::npos);
    EXPECT_NE(failureOf(dictionaryWith(component(0, "<group name='N' required='N'><field name='F' "
                                                    "required='N'/>" +
                                                        use(0) + "</group>")))
                  .find("is used inside itself"),
              std::string::npos);
}

// Written out, these would be two to the power of twenty fields.
TEST(CompiledDictionary, CompilesAComponentOnceHoweverOftenItIsUsed) {
    std::string components;
    for (int i = 0; i < 20; ++i) {
        components += component(i, use(i + 1) + use(i + 1));
    }
    CompiledDictionary const dictionary = compileDictionary(
        dictionaryWith(components + component(20, "<field name='F' required='N'/>")), "test");
    EXPECT_NE(dictionary.find("D")->fields.find(1), nullptr);
}

std::string chain(int length, bool innermostFirst) {
    std::string components;
    for (int i = 0; i < length; ++i) {
        int const number = innermostFirst ? length - 1 - i : i;
        std::string const inside = number + 1 < length ? use(number + 1) : "";
        components += component(number, "<group name='N' required='N'><field name='F' "
                                        "required='N'/>" +
                                            inside + "</group>");
    }
    return dictionaryWith(components);
}

TEST(CompiledDictionary, RefusesGroupsThatAreNestedTooDeep) {
    EXPECT_EQ(failureOf(chain(10, false)), "no failure");
    EXPECT_NE(failureOf(chain(1000, false)).find("may be nested 24 deep"), std::string::npos);
    EXPECT_NE(failureOf(chain(1000, true)).find("may be nested 24 deep"), std::string::npos);
}

TEST(CompiledDictionary, RefusesALongChainThatIsReadFromItsInnerEnd) {
    std::string messages;
    for (int i = 99; i >= 0; --i) {
        messages += "<message name='M' msgtype='T" + std::to_string(i) + "' msgcat='app'>" +
                    use(i) + "</message>";
    }
    std::string xml = chain(100, true);
    xml.insert(xml.find("<message "), messages);
    EXPECT_NE(failureOf(xml).find("may be nested 24 deep"), std::string::npos);
}

TEST(CompiledDictionary, RefusesWhatIsTooLarge) {
    EXPECT_NE(failureOf(std::string(DictionaryLimits::bytes + 1, ' ')).find("are the limit"),
              std::string::npos);
    std::string many = dictionaryWith(component(0, ""));
    std::string fields;
    for (std::size_t i = 0; i < 3000; ++i) {
        fields += "<field name='G" + std::to_string(i) + "' required='N'/>";
    }
    std::string messages;
    for (int i = 0; i < 3000; ++i) {
        messages += "<message name='M' msgtype='U" + std::to_string(i) + "' msgcat='app'>" +
                    use(0) + "</message>";
    }
    std::string xml = dictionaryWith(component(0, fields));
    xml.insert(xml.find("<message "), messages);
    for (std::size_t i = 0; i < 3000; ++i) {
        xml.insert(xml.find("</fields>"), "<field number='" + std::to_string(i + 3) + "' name='G" +
                                              std::to_string(i) + "'/>");
    }
    EXPECT_NE(failureOf(xml).find("tags together, which is the limit"), std::string::npos)
        << failureOf(xml);
}

TEST(CompiledDictionary, ReadsNoEntityBombs) {
    EXPECT_NE(failureOf("<!DOCTYPE fix [<!ENTITY a 'aaaaaaaaaa'><!ENTITY b '&a;&a;&a;&a;&a;&a;'>"
                        "<!ENTITY c '&b;&b;&b;&b;&b;&b;&b;'><!ENTITY d '&c;&c;&c;&c;&c;&c;&c;'>"
                        "]><fix type='&d;'><fields/></fix>"),
              "no failure");
}

TEST(SharedDictionary, IsCompiledOnceForTheSameText) {
    DictionaryText const first{sampleXml, "one.xml"};
    DictionaryText const second{sampleXml, "two.xml"};
    auto const one = sharedDictionary(first, nullptr);
    EXPECT_EQ(sharedDictionary(second, nullptr), one);
    DictionaryText const transport{std::string(transportDictionary()), "FIXT.1.1"};
    EXPECT_NE(sharedDictionary(second, &transport), one);
    EXPECT_NE(sharedDictionary({std::string(sampleXml) + " ", "one.xml"}, nullptr), one);
}

} // namespace
