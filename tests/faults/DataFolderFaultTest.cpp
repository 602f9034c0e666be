#include "faults/FaultFixture.h"
#include "faults/SmallDisk.h"

#include "adapter/IZANEngineAdapterFactory.h"
#include "adapter/IZANEngineConfigProvider.h"
#include "infra/DynamicMethod.h"
#include "infra/WrongConfigurationException.h"

#include <unistd.h>

namespace {

class DataFolderFaultTest : public FaultTest {
protected:
    /// Sends while there is no trouble, for two seconds at most.
    std::string failureOfSending() {
        return failureOf<ZANPersistentStorageException>([this] {
            auto const deadline = Clock::now() + std::chrono::seconds(2);
            while (Clock::now() < deadline) {
                send();
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        });
    }
};

class Properties : public IZANEngineConfigProvider {
public:
    explicit Properties(std::string file) : file_(std::move(file)) {}
    std::string getProperty(std::string const& name,
                            std::string const& defaultValue) const override {
        return name == "engine.config" ? file_ : defaultValue;
    }

private:
    std::string const file_;
};

/// Another engine in this process, past the facade.
counted_ptr<IZANEngineAdapter> anotherEngine(std::string const& file) {
    using Create = counted_ptr<IZANEngineAdapterFactory> (*)();
    void* const function =
        getDynamicMethod("embeddedengineadapter", "create_embedded_engineadapterfactory", true);
    counted_ptr<IZANEngineAdapterFactory> const factory = reinterpret_cast<Create>(function)();
    return factory->createAdapter(counted_ptr<IZANEngineConfigProvider>(new Properties(file)));
}

std::string thisProcess() {
    char host[256] = {};
    gethostname(host, sizeof host - 1);
    return "process " + std::to_string(getpid()) + " on " + host;
}

TEST_F(DataFolderFaultTest, IsRefusedToASecondProcessAndTheFirstGoesOn) {
    startAndConnect({"--no-reports"});
    send(10);
    ChildProcess other(TEST_ENGINE_STARTER, {"embedded:" + folder_ + "/sessions.cfg"});
    EXPECT_NE(other.waitForLine("").find("is in use by " + thisProcess()), std::string::npos);
    send(10);
    expectAcknowledgedEverywhere();
}

TEST_F(DataFolderFaultTest, IsRefusedToASecondEngineInTheProcessAndTheFirstGoesOn) {
    startAndConnect({"--no-reports"});
    send(10);
    auto const second = anotherEngine(folder_ + "/sessions.cfg");
    std::string const refusal =
        failureOf<WrongConfigurationException>([&] { second->initialize(); });
    EXPECT_EQ(refusal, "data folder " + dataFolder() + ": is in use by " + thisProcess() +
                           "; one engine owns a data folder at a time");
    send(10);
    expectAcknowledgedEverywhere();
}

TEST_F(DataFolderFaultTest, IsRefusedWhenItCannotBeWrittenAndTakenWhenItCan) {
    startAcceptor({"--no-reports"});
    startEngine();
    engine().connect(me, "C");
    ZANEngineProxy::uninitialize();
    std::string const data = folder_ + "/small";
    SmallDisk const disk(data, 4);
    if (!disk.isMounted()) {
        GTEST_SKIP() << "only root may mount a disk that cannot be written";
    }
    disk.setReadOnly(true);
    std::string const url = "embedded:" + folder_ + "/sessions.cfg?data=" + data;
    std::string const refusal =
        failureOf<WrongConfigurationException>([&] { ZANEngineProxy::initialize(Url(url)); });
    EXPECT_EQ(refusal.find("data folder " + data + ": cannot be written ("), 0u) << refusal;
    disk.setReadOnly(false);
    ZANEngineProxy::initialize(Url(url));
    EXPECT_TRUE(ZANEngineProxy::isInitialized());
    ZANEngineProxy::uninitialize();
}

TEST_F(DataFolderFaultTest, IsMissedWhenItIsMovedAwayAndTheWorkGoesOnWhenItIsBack) {
    startAndConnect({"--no-reports"});
    send(10);
    std::string const away = folder_ + "/away";
    std::filesystem::rename(dataFolder(), away);
    std::string const failure = failureOfSending();
    EXPECT_NE(failure.find(logFile()), std::string::npos) << failure;
    EXPECT_TRUE(hasStorageError());
    std::filesystem::rename(away, dataFolder());
    EXPECT_TRUE(eventually([this] {
        try {
            send();
            return true;
        } catch (std::exception const&) {
            return false;
        }
    }));
    EXPECT_FALSE(hasStorageError());
    expectAcknowledgedEverywhere();
}

TEST_F(DataFolderFaultTest, IsNotMissedAnyMoreWhenItIsBackEvenWithoutAMessage) {
    startAndConnect({"--no-reports"});
    std::string const away = folder_ + "/away";
    std::filesystem::rename(dataFolder(), away);
    failureOfSending();
    engine().disconnect(me, "C", "");
    EXPECT_TRUE(hasStorageError());
    std::filesystem::rename(away, dataFolder());
    EXPECT_TRUE(eventually([] { return !hasStorageError(); }));
    EXPECT_EQ(ordersInLog().size(), acknowledged_.size());
}

TEST_F(DataFolderFaultTest, IsMissedWhenItIsDeleted) {
    startAndConnect({"--no-reports"});
    send(10);
    std::filesystem::remove_all(dataFolder());
    std::string const failure = failureOfSending();
    EXPECT_NE(failure.find(logFile()), std::string::npos) << failure;
    EXPECT_TRUE(hasStorageError());
    EXPECT_NE(lastError(), "");
    std::size_t const before = acknowledged_.size();
    EXPECT_THROW(send(), ZANPersistentStorageException);
    ASSERT_TRUE(eventually([&] { return ordersAtCounterparty().size() == before; }));
}

TEST_F(DataFolderFaultTest, TellsThatAWriteAheadFileIsLostAndGoesOnWithANewOne) {
    startAndConnect({"--no-reports"});
    send(10);
    std::filesystem::remove(logFile() + "-wal");
    std::string const failure = failureOfSending();
    EXPECT_NE(failure.find(logFile() + "-wal: the file was moved away or deleted"),
              std::string::npos)
        << failure;
    EXPECT_TRUE(hasStorageError());
    EXPECT_NE(lastError().find(logFile() + "-wal"), std::string::npos) << lastError();
    EXPECT_TRUE(eventually([] { return !hasStorageError(); }));
    send(10);
    expectAcknowledgedEverywhere();
}

// With nothing to store.
TEST_F(DataFolderFaultTest, TellsThatALogIsGoneWhenNothingIsSent) {
    startAndConnect({"--no-reports"});
    send(1);
    std::filesystem::remove(logFile());
    EXPECT_TRUE(eventually(hasStorageError));
    EXPECT_NE(lastError().find(logFile() + ": the file was moved away or deleted"),
              std::string::npos)
        << lastError();
}

TEST_F(DataFolderFaultTest, TellsAtTheStartWhatALogHasLost) {
    startAndConnect({"--no-reports"});
    send(10);
    std::string const copy = folder_ + "/copy";
    std::filesystem::copy(dataFolder(), copy);
    ZANEngineProxy::uninitialize();
    std::filesystem::resize_file(copy + "/C.log-wal", 5'000);
    std::string const failure = failureOf<ZANPersistentStorageException>([&] {
        ZANEngineProxy::initialize(Url("embedded:" + folder_ + "/sessions.cfg?data=" + copy));
    });
    EXPECT_NE(failure.find(copy + "/C.log-wal: can be taken up to byte"), std::string::npos)
        << failure;
    EXPECT_FALSE(ZANEngineProxy::isInitialized());
}

} // namespace
