#include "faults/FaultFixture.h"
#include "faults/SmallDisk.h"
#include "guaranteed/ZANGMLAdapter.h"
#include "guaranteed/ZANGuaranteedEngineMessageListener.h"

#include <atomic>
#include <set>

namespace {

class FullDiskTest : public FaultTest {
protected:
    void SetUp() override {
        FaultTest::SetUp();
        disk_.emplace(dataFolder(), 24);
        if (!disk_->isMounted()) {
            GTEST_SKIP() << "only root may mount a small disk";
        }
    }

    void TearDown() override {
        ZANEngineProxy::uninitialize();
        disk_.reset();
        FaultTest::TearDown();
    }

    /// Starts a counterparty that sends reports on its own, one a millisecond, and keeps a journal.
    void startReporting() {
        std::string const store = folder_ + "/theirs";
        std::filesystem::create_directories(store);
        acceptor_.emplace(CRASH_COUNTERPARTY,
                          std::vector<std::string>{"--store", store, "--journal",
                                                   folder_ + "/journal", "--report-every", "1000"});
        std::string const line = acceptor_->waitForLine("listening on");
        port_ = std::stoi(line.substr(line.rfind(':') + 1));
    }

    std::optional<SmallDisk> disk_;
};

TEST_F(FullDiskTest, RefusesAnOrderAndTellsWhy) {
    startAndConnect({"--no-reports"});
    send(10);
    disk_->fill();
    std::string const failure = sendUntilRefused();
    EXPECT_NE(failure.find("connection C: "), std::string::npos) << failure;
    EXPECT_NE(failure.find(logFile()), std::string::npos) << failure;
    EXPECT_NE(failure.find("full"), std::string::npos) << failure;
    EXPECT_TRUE(hasStorageError());
    EXPECT_NE(lastError().find(logFile()), std::string::npos) << lastError();
    EXPECT_TRUE(isConnected());
}

TEST_F(FullDiskTest, SendsNothingThatIsNotStoredAndGoesOnWhenThereIsRoom) {
    startAndConnect({"--no-reports"});
    send(10);
    disk_->fill();
    sendUntilRefused();
    for (int i = 0; i < 3; ++i) {
        EXPECT_THROW(engine().sendMessage(me, "C", order("never")), ZANPersistentStorageException);
    }
    disk_->makeRoom();
    send(10);
    EXPECT_FALSE(hasStorageError());
    expectAcknowledgedEverywhere();
}

TEST_F(FullDiskTest, RefusesABatchAsAWhole) {
    startAndConnect({"--no-reports"});
    send(10);
    disk_->fill();
    sendUntilRefused();
    std::vector<counted_ptr<ZANMessage>> batch;
    for (int i = 0; i < 10; ++i) {
        counted_ptr<ZANFieldGroup> fields(new ZANFieldGroup(std::string("D")));
        fields->setFieldValue(11, "batch-" + std::to_string(i));
        batch.push_back(counted_ptr<ZANMessage>(new ZANMessage(fields)));
    }
    EXPECT_THROW(engine().sendMultipleMessages(me, "C", batch), ZANPersistentStorageException);
    disk_->makeRoom();
    send(1);
    expectAcknowledgedEverywhere();
}

TEST_F(FullDiskTest, LosesNothingOfManySendersAtOnce) {
    startAndConnect({"--no-reports"});
    std::atomic<bool> isFull{false};
    std::vector<std::thread> senders;
    std::vector<std::vector<std::string>> ids(4);
    for (int sender = 0; sender < 4; ++sender) {
        senders.emplace_back([&, sender] {
            for (int i = 0; !isFull; ++i) {
                std::string const id = std::to_string(sender) + "-" + std::to_string(i);
                try {
                    engine().sendMessage(me, "C", order(id));
                    ids[sender].push_back(id);
                } catch (ZANPersistentStorageException const&) {
                    isFull = true;
                }
            }
        });
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    disk_->fill();
    for (std::thread& sender : senders) {
        sender.join();
    }
    disk_->makeRoom();
    send(1);
    std::map<int, std::string> const sent = ordersInLog();
    std::set<std::string> stored;
    for (auto const& [number, id] : sent) {
        EXPECT_TRUE(stored.insert(id).second) << id;
    }
    for (std::vector<std::string> const& each : ids) {
        for (std::string const& id : each) {
            EXPECT_TRUE(stored.erase(id) == 1) << id << " was acknowledged and is not there";
        }
    }
    EXPECT_EQ(stored, std::set<std::string>{acknowledged_.back()});
    ASSERT_FALSE(acceptor_->waitForLine("|11=" + acknowledged_.back() + "|").empty());
    EXPECT_EQ(ordersAtCounterparty(), sent);
}

TEST_F(FullDiskTest, TakesWhatComesInWhenThereIsRoom) {
    startReporting();
    startEngine();
    EventRecorder& recorder = record();
    engine().connect(me, "C");
    ASSERT_TRUE(recorder.waitFor(isReport, 50));
    disk_->fill();
    ASSERT_TRUE(eventually(hasStorageError));
    EXPECT_NE(lastError().find(logFile()), std::string::npos) << lastError();
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    disk_->makeRoom();
    ASSERT_TRUE(eventually([] { return isConnected() && !hasStorageError(); }));
    acceptor_->sendSignal(SIGUSR1);
    ASSERT_EQ(acceptor_->waitForLine("quiet"), "quiet");
    ASSERT_TRUE(engine().pingConnection(me, "C", 10000));
    std::map<int, std::string> sent;
    for (std::string const& report : crash::readJournal(folder_ + "/journal").sent) {
        sent[crash::numberOf(report)] = crash::fieldOf(report, 17);
    }
    EXPECT_EQ(inLog(2, 17), sent);
    EXPECT_TRUE(recorder.waitFor(isReport, sent.size()));
}

TEST_F(FullDiskTest, StillLetsMessagesBeDeleted) {
    startAndConnect();
    EventRecorder& recorder = record();
    send(300);
    ASSERT_TRUE(recorder.waitFor(isReport, 300));
    engine().disconnect(me, "C", "");
    disk_->fill();
    EXPECT_THROW(
        {
            for (int i = 0; i < 50000; ++i) {
                engine().postInternalMessage(me, "C", order("internal"));
            }
        },
        ZANPersistentStorageException);
    EXPECT_EQ(engine().deleteMessageLogData(me, "C", 2, "tag(17) IS NOT NULL"), 300);
    std::vector<std::vector<std::string>> table;
    engine().retrieveMessageLogData(me, "C", 2, "id", "tag(17) IS NOT NULL", "", table);
    EXPECT_EQ(table.size(), 1u);
    disk_->makeRoom();
    engine().connect(me, "C");
    send(1);
    ASSERT_FALSE(acceptor_->waitForLine("|11=" + acknowledged_.back() + "|").empty());
    EXPECT_EQ(ordersInLog().size(), acknowledged_.size());
    EXPECT_EQ(ordersAtCounterparty(), ordersInLog());
}

TEST_F(FullDiskTest, RefusesALogonThatCannotBeStored) {
    startAndConnect({"--no-reports"});
    send(10);
    disk_->fill();
    sendUntilRefused();
    engine().disconnect(me, "C", "");
    std::string const failure =
        failureOf<ZANPersistentStorageException>([] { engine().connect(me, "C"); });
    EXPECT_NE(failure.find(logFile()), std::string::npos) << failure;
    disk_->makeRoom();
    engine().connect(me, "C");
    EXPECT_FALSE(hasStorageError());
    EXPECT_EQ(engine().getConnectionState(me, "C")->getLastError(), "");
}

TEST_F(FullDiskTest, StillLetsEverythingBeRead) {
    startAndConnect({"--no-reports"});
    send(10);
    disk_->fill();
    sendUntilRefused();
    EXPECT_EQ(ordersInLog().size(), acknowledged_.size());
    EXPECT_EQ(engine().getMessageIds(me, "C", 3, false).size(), acknowledged_.size());
}

TEST_F(FullDiskTest, KeepsMarksUntilThereIsRoom) {
    startAndConnect({"--no-reports"});
    counted_ptr<ZANGuaranteedEngineMessageListener> listener(
        new ZANGuaranteedEngineMessageListener(counted_ptr<IZANEventListener>(new EventRecorder)));
    engine().subscribeDirect(me, "C", true, true, false, listener);
    long const id = send();
    disk_->fill();
    sendUntilRefused();
    listener->setLastConsumedAppMessageToCounterPartyId("C", static_cast<int>(id));
    EXPECT_THROW(listener->getAdapter().flush(), ZANPersistentStorageException);
    disk_->makeRoom();
    listener->getAdapter().flush();
    ZANEngineProxy::uninitialize();
    startEngine();
    counted_ptr<ZANGuaranteedEngineMessageListener> next(
        new ZANGuaranteedEngineMessageListener(counted_ptr<IZANEventListener>(new EventRecorder)));
    engine().subscribeDirect(me, "C", true, true, false, next);
    EXPECT_EQ(next->getAdapter().getLastConsumedMessage(
                  "C", ZANGuaranteedEngineMessageListener::APP_MSG_TO_COUNTERPARTY),
              id);
}

TEST_F(FullDiskTest, LosesNothingWhenTheEngineEndsMeanwhile) {
    startAndConnect({"--no-reports"});
    send(10);
    disk_->fill();
    sendUntilRefused();
    ZANEngineProxy::uninitialize();
    disk_->makeRoom();
    startEngine();
    engine().connect(me, "C");
    std::map<int, std::string> const sent = ordersInLog();
    ASSERT_EQ(sent.size(), acknowledged_.size());
    EXPECT_EQ(sent.rbegin()->second, acknowledged_.back());
    send(1);
    ASSERT_FALSE(acceptor_->waitForLine("|11=" + acknowledged_.back() + "|").empty());
    EXPECT_EQ(ordersAtCounterparty(), ordersInLog());
}

} // namespace
