// Commands that work on one connection know what its own dictionary knows.
#include "apps/zan/ZanFixture.h"

namespace {

constexpr char const* ownMessage = "35=U1|11=one|58=x|9100=2|9101=a|9101=b";

class ConnectionDictionary : public ZanTest {
protected:
    void SetUp() override {
        ZanTest::SetUp();
        useCounterparty();
    }

    /// A dictionary with one message that has one group.
    std::string writeDictionary(std::string const& file, std::string const& message) const {
        return write(
            file,
            "<fix major='4' minor='4' type='FIX' servicepack='0'><header><field name='BeginString' "
            "required='Y'/></header><trailer><field name='CheckSum' required='Y'/></trailer>"
            "<messages><message name='" +
                message +
                "' msgtype='U1' msgcat='app'><group name='NoOwn' required='N'>"
                "<field name='OwnId' required='N'/></group></message></messages><components/>"
                "<fields><field number='8' name='BeginString' type='STRING'/>"
                "<field number='10' name='CheckSum' type='STRING'/>"
                "<field number='58' name='OwnText' type='STRING'/>"
                "<field number='9100' name='NoOwn' type='NUMINGROUP'/>"
                "<field number='9101' name='OwnId' type='STRING'/></fields></fix>");
    }

    void addToSession(std::string const& line) const {
        std::ofstream(folder_ + "/sessions.cfg", std::ios::app) << line << "\n";
    }

    void useOwnDictionary() const {
        addToSession("DataDictionary=" + writeDictionary("own.xml", "Own"));
    }

    std::string output(std::vector<std::string> const& arguments) const {
        RunResult const run = zan(arguments);
        EXPECT_EQ(run.code, 0) << run.errors;
        return run.output;
    }

    std::string typeInLog(std::vector<std::string> arguments = {}) const {
        arguments.insert(arguments.end(), {"log", "C", "-n", "1", "--decode"});
        std::string const shown = output(arguments);
        std::size_t const title = shown.find('\n') + 1;
        return shown.substr(title, shown.find(" (U1", title) - title);
    }
};

TEST_F(ConnectionDictionary, NamesTypesTagsAndGroups) {
    useOwnDictionary();
    std::string const posted = output({"post", "C", ownMessage, "--decode"});
    EXPECT_NE(posted.find("Own (U1, FIX.4.4)\n"), std::string::npos) << posted;
    EXPECT_NE(posted.find("  9100  NoOwn = 2\n  - 9101  OwnId = a\n"), std::string::npos) << posted;
    EXPECT_NE(posted.find("  58    OwnText = x\n"), std::string::npos) << posted;
    EXPECT_EQ(output({"log", "--decode"}), posted);
    EXPECT_EQ(output({"tail", "--no-follow", "--decode"}), posted);
}

TEST_F(ConnectionDictionary, NamesColumns) {
    useOwnDictionary();
    std::string const columns = "OwnId\na\n";
    EXPECT_EQ(output({"post", "C", ownMessage, "--columns", "OwnId"}), columns);
    EXPECT_EQ(output({"log", "--columns", "OwnId"}), columns);
    EXPECT_EQ(output({"chain", "C", "one", "--columns", "OwnId"}), columns);
    EXPECT_EQ(zan({"edit", "update", "C", "note = 'x'", "--where", "id = 1", "--yes"}).code, 0);
    EXPECT_EQ(output({"audit", "--columns", "OwnId"}), columns);
}

TEST_F(ConnectionDictionary, KnowsTheGroupsOfMessagesThatAreGiven) {
    useOwnDictionary();
    output({"post", "C", ownMessage, "--batch"});
    output({"edit", "insert", "C", std::string("49=US|56=THEM|") + ownMessage, "--yes"});
    std::string const shown = output({"log", "--decode"});
    EXPECT_NE(shown.find("  - 9101  OwnId = a\n  - 9101  OwnId = b\n"), std::string::npos) << shown;
    EXPECT_EQ(objects(output({"--json", "log"})).size(), 2U);
}

TEST_F(ConnectionDictionary, LeavesTheNamesThatItLacksToThoseBuiltIn) {
    useOwnDictionary();
    std::string const posted = output({"post", "C", order("one"), "--decode"});
    EXPECT_NE(posted.find("NewOrderSingle (D, FIX.4.4)\n"), std::string::npos) << posted;
    EXPECT_NE(posted.find("Side = 1 (Buy)\n"), std::string::npos) << posted;
}

TEST_F(ConnectionDictionary, GivesWayToThatOfTheCommandLine) {
    useOwnDictionary();
    output({"post", "C", ownMessage});
    std::string const other = writeDictionary("other.xml", "Other");
    EXPECT_EQ(typeInLog({"--dictionary", other}), "Other");
    EXPECT_EQ(typeInLog(), "Own");
}

TEST_F(ConnectionDictionary, IsThatOfTheApplicationWhereThereAreTwo) {
    useOwnDictionary();
    addToSession("AppDataDictionary=" + writeDictionary("application.xml", "OfApplication"));
    output({"post", "C", ownMessage});
    EXPECT_EQ(typeInLog(), "OfApplication");
}

} // namespace
