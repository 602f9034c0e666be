// Sessions that QuickFIX has kept go on here.
#include "apps/zan/LogImport.h"
#include "apps/zan/QuickFixFiles.h"
#include "apps/zan/ZanFixture.h"
#include "infra/Time.h"
#include "infra/WrongConfigurationException.h"

#include <algorithm>

namespace {

using namespace zan::cli;
using namespace zan::server;

class Import : public ZanTest {
protected:
    void useQuickFix(std::vector<std::string> arguments) {
        useCounterparty();
        std::string const file = folder_ + "/sessions.cfg";
        std::ofstream(file, std::ios::app) << "UseDataDictionary=N\nFileStorePath=" + folder_ +
                                                  "/quickfix\nFileLogPath=" + folder_ +
                                                  "/quickfix\n";
        std::string command = std::string("'") + PLAIN_INITIATOR + "' '" + file + "'";
        for (std::string const& each : arguments) {
            command += " " + each;
        }
        ASSERT_EQ(std::system(command.c_str()), 0);
    }

    RunResult import(std::vector<std::string> more = {}) const {
        more.insert(more.begin(), {"--json", "import", "C"});
        return zan(more);
    }

    std::string storeFolder() const { return folder_ + "/quickfix"; }
    std::string logFile() const { return storeFolder() + "/FIX.4.4-US-THEM.messages.current.log"; }
};

TEST_F(Import, LetsASessionGoOnWithItsNumbers) {
    ASSERT_NO_FATAL_FAILURE(useQuickFix({"one", "two"}));
    RunResult const run = import({"--store", storeFolder(), "--log", logFile()});
    ASSERT_EQ(run.code, 0) << run.errors;
    // Logon, two orders and Logout went out; Logon, six reports and Logout came in.
    EXPECT_EQ(run.output,
              "{\"name\":\"C\",\"entries\":12,\"leftOut\":0,\"nextOut\":5,\"nextIn\":9}\n");
    RunResult const sent = zan({"send", "C", order("three"), "--wait", "20", "--answers", "3",
                                "--columns", "seq,ClOrdID,OrdStatus"});
    EXPECT_EQ(sent.output, "seq    ClOrdID  OrdStatus\n"
                           "    6  three\n"
                           "   10  three    0\n"
                           "   11  three    1\n"
                           "   12  three    2\n")
        << sent.errors;
    for (std::string const& line : counterparty_->lines()) {
        EXPECT_EQ(line.find("|35=2|"), std::string::npos) << line;
        EXPECT_EQ(line.find("|141=Y|"), std::string::npos) << line;
    }
}

TEST_F(Import, KeepsTimesAndChains) {
    ASSERT_NO_FATAL_FAILURE(useQuickFix({"one"}));
    ASSERT_EQ(import({"--store", storeFolder(), "--log", logFile()}).code, 0);
    for (auto const& row : objects(zan({"--json", "log", "--columns", "52"}).output)) {
        auto const stored = infra::Time::fromString(row["time"].get<std::string>()).getMillis();
        EXPECT_NEAR(static_cast<double>(stored),
                    static_cast<double>(millisOf(row["52"].get<std::string>())), 2000);
    }
    EXPECT_EQ(objects(zan({"--json", "chain", "C", "one"}).output).size(), 4U);
}

TEST_F(Import, TakesTheStoreAloneOrTheLogAlone) {
    ASSERT_NO_FATAL_FAILURE(useQuickFix({"one"}));
    EXPECT_EQ(import({"--store", storeFolder() + "/FIX.4.4-US-THEM"}).output,
              "{\"name\":\"C\",\"entries\":3,\"leftOut\":0,\"nextOut\":4,\"nextIn\":6}\n");
    environment_["ZAN_URL"] += "?data=" + folder_ + "/other";
    EXPECT_EQ(import({"--log", logFile()}).output,
              "{\"name\":\"C\",\"entries\":8,\"leftOut\":0,\"nextOut\":4,\"nextIn\":6}\n");
}

TEST_F(Import, RefusesALogThatHoldsMessages) {
    ASSERT_NO_FATAL_FAILURE(useQuickFix({"one"}));
    ASSERT_EQ(import({"--store", storeFolder()}).code, 0);
    RunResult const again = import({"--store", storeFolder()});
    EXPECT_EQ(again.code, 3);
    EXPECT_NE(again.errors.find("C.log: the log holds messages already"), std::string::npos)
        << again.errors;
    EXPECT_EQ(objects(zan({"--json", "log"}).output).size(), 3U);
}

TEST_F(Import, LeavesNothingBehindWhenItFails) {
    ASSERT_NO_FATAL_FAILURE(useQuickFix({"one"}));
    std::ofstream(logFile()) << "20261121-09:30:00.000 : 8=FIX.4.4\x01"
                                "34=1\x01"
                                "49=US\x01"
                                "56=THEM\x01\n";
    write("quickfix/FIX.4.4-US-THEM.header", "1,0,999999 ");
    EXPECT_EQ(import({"--store", storeFolder(), "--log", logFile()}).code, 3);
    std::string const nonsense = write("nonsense.log", "nothing\n");
    RunResult const run = import({"--log", nonsense});
    EXPECT_EQ(run.code, 3);
    EXPECT_NE(run.errors.find(nonsense + ":1: no entry of a message log"), std::string::npos)
        << run.errors;
    for (auto const& file : std::filesystem::directory_iterator(folder_ + "/sessions.cfg.data")) {
        EXPECT_EQ(file.path().filename(), "lock");
    }
}

TEST_F(Import, TellsWhatItNeeds) {
    useCounterparty();
    EXPECT_EQ(import().code, 2);
    EXPECT_EQ(zan({"--url", "embedded:demo", "import", "C", "--log", "x"}).code, 3);
    EXPECT_EQ(zan({"import", "X", "--log", "x"}).code, 6);
    EXPECT_EQ(import({"--store", folder_ + "/none"}).code, 3);
}

// Messages of QuickFIX's, put into a log of ours.
class LogImportTest : public ZanTest {
protected:
    static constexpr long long start = 1'700'000'000'000;

    void SetUp() override {
        ZanTest::SetUp();
        log_.emplace(LogSettings{folder_ + "/C.log"});
    }

    static std::string text(std::string fields) {
        std::ranges::replace(fields, '|', '\x01');
        return "8=FIX.4.4\x01" + fields;
    }
    static std::string out(std::string const& type, int number, std::string const& more = "") {
        return text("35=" + type + "|34=" + std::to_string(number) + "|49=US|56=THEM|" + more);
    }
    static std::string in(std::string const& type, int number, std::string const& more = "") {
        return text("35=" + type + "|34=" + std::to_string(number) + "|49=THEM|56=US|" + more);
    }

    // One message a second.
    void add(std::vector<std::string> const& messages, std::optional<FileStore> store = {}) {
        LogImport import(*log_, "US", std::move(store));
        long long millis = start;
        for (std::string const& message : messages) {
            import.add({millis += 1000, message});
        }
        import.finish();
        leftOut_ = import.leftOut();
    }

    std::string numbers() const {
        return std::to_string(log_->numbers().nextOut) + " " +
               std::to_string(log_->numbers().nextIn);
    }

    // The numbers of what would be sent again.
    std::string sent() {
        std::lock_guard const lock(*log_);
        std::string all;
        for (FixEntry const& entry : log_->sent(1, 0)) {
            all += std::to_string(entry.seq) + " ";
        }
        return all;
    }

    std::optional<MessageLog> log_;
    long leftOut_ = 0;
};

TEST_F(LogImportTest, CountsBothSides) {
    add({out("A", 1), in("A", 1), out("D", 2), in("8", 2), in("8", 3)});
    EXPECT_EQ(numbers(), "3 4");
    EXPECT_EQ(sent(), "1 2 ");
}

TEST_F(LogImportTest, BeginsAgainWithANewNumbering) {
    add({out("A", 1), in("A", 1), out("D", 2), out("A", 1, "141=Y|"), in("A", 1, "141=Y|"),
         out("D", 2), out("D", 3)});
    EXPECT_EQ(numbers(), "4 2");
    EXPECT_EQ(sent(), "1 2 3 ");
}

TEST_F(LogImportTest, GoesOnInTheMiddleOfASession) {
    add({out("D", 70), in("8", 90), in("8", 91)});
    EXPECT_EQ(numbers(), "71 92");
}

TEST_F(LogImportTest, WaitsForWhatDidNotComeYet) {
    add({in("A", 1), in("8", 3)});
    EXPECT_EQ(numbers(), "1 2");
}

TEST_F(LogImportTest, ClosesAGapWithWhatComesAgain) {
    add({in("A", 1), in("8", 3), in("8", 2, "43=Y|"), in("8", 3, "43=Y|"), in("8", 4)});
    EXPECT_EQ(numbers(), "1 5");
    EXPECT_EQ(leftOut_, 1);
}

TEST_F(LogImportTest, FollowsAGapFill) {
    add({in("A", 1), in("4", 2, "43=Y|123=Y|36=7|"), in("8", 7)});
    EXPECT_EQ(numbers(), "1 8");
}

TEST_F(LogImportTest, KeepsWhatWasSentAgainApart) {
    add({out("A", 1), out("D", 2), out("D", 2, "43=Y|")});
    EXPECT_EQ(numbers(), "3 1");
    EXPECT_EQ(sent(), "1 2 ");
    EXPECT_EQ(log_->ids(4, false).size(), 1U);
}

TEST_F(LogImportTest, LeavesOutWhatIsOfNobody) {
    add({text("35=D|34=1|49=X|56=Y|"), text("35=D|49=US|56=THEM|")});
    EXPECT_EQ(leftOut_, 2);
    EXPECT_EQ(log_->lastId(), 0);
}

TEST_F(LogImportTest, TakesTheStoreForWhatCountsAsSent) {
    FileStore store;
    store.nextOut = 5;
    store.nextIn = 9;
    store.began = start + 2500;
    for (int number = 1; number < 5; ++number) {
        store.sent[number] = out(number == 1 ? "A" : "D", number, "58=store|");
    }
    // Two messages of the numbering before it; then the log lacks the number 3.
    add({out("A", 1), out("D", 2), out("A", 1), in("A", 1), out("D", 2), out("D", 4)}, store);
    EXPECT_EQ(numbers(), "5 9");
    EXPECT_EQ(sent(), "1 2 3 4 ");
    EXPECT_EQ(log_->lastId(), 7);
}

TEST_F(LogImportTest, TakesMoreThanOneTransaction) {
    FileStore store;
    constexpr int count = 12'000;
    for (int number = 1; number <= count; ++number) {
        store.sent[number] = out("D", number);
    }
    store.nextOut = count + 1;
    add({}, store);
    EXPECT_EQ(numbers(), "12001 1");
    EXPECT_EQ(log_->lastId(), count);
}

TEST(QuickFixTimes, AreReadWithAnyFraction) {
    EXPECT_EQ(millisOf("20231114-22:13:20"), 1'700'000'000'000);
    EXPECT_EQ(millisOf("20231114-22:13:20.5"), 1'700'000'000'500);
    EXPECT_EQ(millisOf("20231114-22:13:20.123456789"), 1'700'000'000'123);
    EXPECT_EQ(millisOf("8=FIX.4.4"), -1);
    EXPECT_EQ(millisOf(""), -1);
}

} // namespace
