#include "faults/FaultFixture.h"

#include "infra/WrongConfigurationException.h"

#include <iterator>

namespace {

class BrokenLogTest : public FaultTest {
protected:
    /// Stores orders, and stops the engine so that all of them are in the file itself.
    void storeOrders(int count) {
        startAndConnect({"--no-reports"});
        for (int i = 0; i < count; ++i) {
            ids_.push_back(send("|58=payload-of-" + std::to_string(i) + "-"));
        }
        ZANEngineProxy::uninitialize();
    }

    std::string fileBytes() const {
        std::ifstream file(logFile(), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// Writes over the file at this place, without making it anew.
    void overwrite(std::size_t offset, std::string const& bytes) const {
        std::fstream file(logFile(), std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(static_cast<std::streamoff>(offset));
        file << bytes;
    }

    void breakPayload(int index) const {
        std::string const bytes = fileBytes();
        std::size_t const at = bytes.find("payload-of-" + std::to_string(index) + "-");
        ASSERT_NE(at, std::string::npos);
        overwrite(at, "q");
    }

    /// What a retrieval of one stored order fails with.
    std::string failureOfRetrieving(long id) const {
        return failureOf<ZANPersistentStorageException>([&] { retrieved(id, id); });
    }

    std::vector<counted_ptr<ZANMessage>> retrieved(long first, long last) const {
        std::vector<counted_ptr<ZANMessage>> messages;
        engine().retrieveMessagesByIdRange(me, "C", messages, 3, first, last, "", false);
        return messages;
    }

    std::string refusalOfStart() const {
        return failureOf<WrongConfigurationException>(
            [this] { ZANEngineProxy::initialize(Url("embedded:" + folder_ + "/sessions.cfg")); });
    }

    /// Makes the counterparty forget orders from this number on, so that it asks for them again.
    void makeCounterpartyForget(int number) {
        acceptor_.reset();
        std::string const path = folder_ + "/theirs/FIX.4.4-THEM-US.seqnums";
        std::string numbers;
        std::getline(std::ifstream(path), numbers);
        std::string const expected = std::to_string(number);
        std::ofstream(path) << numbers.substr(0, numbers.find(':')) << ": "
                            << std::string(10 - expected.size(), '0') << expected;
        startAcceptor({"--no-reports"});
    }

    std::vector<long> ids_;
};

TEST_F(BrokenLogTest, TellsWhichMessageHasAFlippedByte) {
    storeOrders(20);
    breakPayload(7);
    startEngine();
    std::string const failure = failureOfRetrieving(ids_[7]);
    EXPECT_NE(failure.find(logFile()), std::string::npos) << failure;
    EXPECT_NE(failure.find(std::to_string(ids_[7])), std::string::npos) << failure;
    EXPECT_TRUE(hasStorageError());
    EXPECT_EQ(lastError(), failure.substr(failure.find(logFile())));
}

TEST_F(BrokenLogTest, StillGivesTheOtherMessages) {
    storeOrders(20);
    breakPayload(7);
    startEngine();
    EXPECT_EQ(retrieved(ids_[0], ids_[6]).size(), 7u);
    EXPECT_EQ(retrieved(ids_[8], ids_[19]).size(), 12u);
    EXPECT_THROW(retrieved(ids_[0], ids_[19]), ZANPersistentStorageException);
}

TEST_F(BrokenLogTest, StillSendsAndStores) {
    storeOrders(20);
    breakPayload(7);
    startEngine();
    engine().connect(me, "C");
    failureOfRetrieving(ids_[7]);
    long const id = send();
    EXPECT_FALSE(hasStorageError());
    EXPECT_EQ(retrieved(id, id).size(), 1u);
    EXPECT_FALSE(acceptor_->waitForLine("|11=" + acknowledged_.back() + "|").empty());
}

TEST_F(BrokenLogTest, FillsTheGapWhenTheCounterpartyAsksForABrokenMessage) {
    storeOrders(20);
    breakPayload(7);
    makeCounterpartyForget(2);
    startEngine();
    engine().connect(me, "C");
    send();
    ASSERT_FALSE(acceptor_->waitForLine("|11=" + acknowledged_.back() + "|").empty());
    ASSERT_TRUE(engine().pingConnection(me, "C", 5000));
    for (int i = 0; i < 20; ++i) {
        std::string const text = "payload-of-" + std::to_string(i) + "-|";
        bool isThere = false;
        for (std::string const& line : acceptor_->lines()) {
            isThere = isThere || line.find(text) != std::string::npos;
        }
        EXPECT_EQ(isThere, i != 7) << i;
    }
    EXPECT_FALSE(acceptor_->waitForLine("|36=").empty());
}

TEST_F(BrokenLogTest, SurvivesAnOverwrittenPageUntilItIsRestored) {
    storeOrders(400);
    std::string const good = fileBytes();
    std::size_t const pageSize =
        static_cast<unsigned char>(good[16]) * 256u + static_cast<unsigned char>(good[17]);
    ASSERT_GE(pageSize, 512u);
    std::size_t const page = good.find("payload-of-200-") / pageSize * pageSize;
    overwrite(page, std::string(pageSize, '\xa5'));
    startEngine();
    EXPECT_NE(failureOfRetrieving(ids_[200]).find(logFile()), std::string::npos);
    EXPECT_TRUE(hasStorageError());
    EXPECT_EQ(retrieved(ids_[0], ids_[100]).size(), 101u);
    engine().connect(me, "C");
    ids_.push_back(send());
    EXPECT_EQ(retrieved(ids_[400], ids_[400]).size(), 1u);
    EXPECT_FALSE(acceptor_->waitForLine("|11=" + acknowledged_.back() + "|").empty());
    ZANEngineProxy::uninitialize();
    overwrite(page, good.substr(page, pageSize));
    startEngine();
    EXPECT_EQ(retrieved(ids_[0], ids_[400]).size(), 401u);
    EXPECT_FALSE(hasStorageError());
}

TEST_F(BrokenLogTest, IsRefusedWhenItIsOfANewerVersion) {
    storeOrders(1);
    std::string const good = fileBytes();
    overwrite(60, std::string("\0\0\0\x63", 4)); // where SQLite keeps the user version
    std::string const refusal = refusalOfStart();
    EXPECT_EQ(refusal.find(logFile() + ": was written by a newer version"), 0u) << refusal;
    EXPECT_FALSE(ZANEngineProxy::isInitialized());
    overwrite(60, good.substr(60, 4));
    startEngine();
    EXPECT_EQ(retrieved(ids_[0], ids_[0]).size(), 1u);
}

TEST_F(BrokenLogTest, IsRefusedWhenItIsAFileOfAnotherKind) {
    startAcceptor();
    writeSessionFile(sessionText());
    std::filesystem::create_directories(dataFolder());
    std::string garbage;
    for (int i = 0; i < 1000; ++i) {
        garbage += "this is no log " + std::to_string(i * i) + "\n";
    }
    std::ofstream(logFile()) << garbage;
    std::string const refusal = refusalOfStart();
    EXPECT_EQ(refusal.find(logFile() + ": "), 0u) << refusal;
    EXPECT_NE(refusal.find("another data folder would be right"), std::string::npos) << refusal;
    EXPECT_EQ(fileBytes(), garbage);
    std::filesystem::remove(logFile());
    startEngine();
    engine().connect(me, "C");
    send();
}

} // namespace
