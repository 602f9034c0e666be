#include "EmbeddedFixture.h"

#include "adapter/IZANEngineAdapterFactory.h"
#include "adapter/IZANEngineConfigProvider.h"
#include "infra/DynamicMethod.h"
#include "infra/WrongConfigurationException.h"

#include <unistd.h>

namespace {

class ConfigurationTest : public EmbeddedTest {
protected:
    static std::string refusalOf(std::string const& url) {
        return failureOf<WrongConfigurationException>(
            [&] { ZANEngineProxy::initialize(Url(url)); });
    }
};

TEST_F(ConfigurationTest, IsRefusedWithFileLineKeyAndWhatWouldBeRight) {
    port_ = 5001;
    struct Fault {
        std::string text;
        char const* error;
    };
    std::string const good = sessionText(); // fourteen lines
    for (Fault const& fault : {
             Fault{"", ":0: no [SESSION]: a file needs one for each connection"},
             Fault{good + "Colour=red\n",
                   ":15: Colour: nobody knows this key; the keys of QuickFIX, ConnectionName, "
                   "Durability and LogonTimeout would be right"},
             Fault{good + "SocketConnectHots1=x\n",
                   ":15: SocketConnectHots1: nobody knows this key; SocketConnectHost would be "
                   "right"},
             Fault{good + "Durability=maybe\n",
                   ":15: Durability=maybe: normal or full would be right"},
             Fault{good + "ResetOnLogon=perhaps\n",
                   ":15: ResetOnLogon=perhaps: Y or N would be right"},
             Fault{"[SESSION]\nConnectionType=acceptor\n",
                   ":2: ConnectionType=acceptor: only initiator is offered here: this engine "
                   "accepts no connections"},
             Fault{"[SESSION]\nConnectionType=initiator\n",
                   ":1: BeginString: is missing, here and in [DEFAULT]; BeginString=FIX.4.4 could "
                   "stand here"},
             Fault{good + "DataDictionary=" + folder_ + "/none.xml\n", ":15: DataDictionary="},
             Fault{good + good,
                   ":15: SenderCompID: the session \"FIX.4.4:US->THEM\" belongs to the [SESSION] "
                   "on line 1 already; another company id or a SessionQualifier would be right"},
             Fault{good + good + "SessionQualifier=2\n",
                   ":15: ConnectionName: the name \"C\" belongs to the [SESSION] on line 1 "
                   "already; a ConnectionName of its own would be right"},
         }) {
        std::string const file = writeSessionFile(fault.text);
        EXPECT_EQ(refusalOf("embedded:" + file).find(file + fault.error), 0u)
            << refusalOf("embedded:" + file);
        EXPECT_FALSE(ZANEngineProxy::isInitialized());
    }
}

TEST_F(ConfigurationTest, NeedsAFile) {
    EXPECT_EQ(refusalOf("embedded:" + folder_ + "/none.cfg"),
              folder_ + "/none.cfg: cannot be read (No such file or directory); the path of a "
                        "session file would be right here");
    EXPECT_EQ(refusalOf("embedded://host/file.cfg"),
              "embedded://host/file.cfg: names no session file; embedded:<file>?data=<folder> or "
              "embedded:demo would be right");
}

TEST_F(ConfigurationTest, NeedsADictionaryThatIsOne) {
    port_ = 5001;
    std::string const dictionary = folder_ + "/bad.xml";
    std::ofstream(dictionary) << "no dictionary at all";
    std::string const file = writeSessionFile(sessionText("DataDictionary=" + dictionary + "\n"));
    std::string const refusal = refusalOf("embedded:" + file);
    EXPECT_EQ(refusal.find("connection C: "), 0u) << refusal;
    EXPECT_NE(refusal.find(dictionary), std::string::npos) << refusal;
}

TEST_F(ConfigurationTest, FindsAFileInTheWorkingFolder) {
    startAcceptor();
    writeSessionFile(sessionText());
    auto const before = std::filesystem::current_path();
    std::filesystem::current_path(folder_);
    ZANEngineProxy::initialize(Url("embedded:sessions.cfg"));
    std::filesystem::current_path(before);
    engine().connect(me, "C");
    EXPECT_TRUE(isConnected());
    EXPECT_TRUE(std::filesystem::exists(folder_ + "/sessions.cfg.data"));
}

TEST_F(ConfigurationTest, PutsItsDataWhereItIsTold) {
    startAcceptor();
    std::string const file = writeSessionFile(sessionText("FileStorePath=/nowhere\n"));
    ZANEngineProxy::initialize(Url("embedded:" + file + "?data=" + folder_ + "/deep/data"));
    engine().connect(me, "C");
    EXPECT_TRUE(std::filesystem::exists(folder_ + "/deep/data/lock"));
    EXPECT_FALSE(std::filesystem::exists(file + ".data"));
}

TEST_F(ConfigurationTest, NeedsAFolderThatItCanWrite) {
    port_ = 5001;
    std::string const file = writeSessionFile(sessionText());
    std::string const refusal = refusalOf("embedded:" + file + "?data=" + file + "/data");
    EXPECT_EQ(refusal.find("data folder " + file + "/data: cannot be made ("), 0u) << refusal;
}

TEST_F(ConfigurationTest, GivesADataFolderToOneEngineAtATime) {
    startAcceptor();
    startEngine();
    std::string const file = folder_ + "/sessions.cfg";
    // The facade has one engine in a process, so the other one is in a child.
    ChildProcess other(TEST_ENGINE_STARTER, {"embedded:" + file});
    std::string const refusal = other.waitForLine("");
    char host[256] = {};
    gethostname(host, sizeof host - 1);
    EXPECT_EQ(refusal, "data folder " + file + ".data: is in use by process " +
                           std::to_string(getpid()) + " on " + host +
                           "; one engine owns a data folder at a time");
}

TEST_F(ConfigurationTest, RefusesAParameterThatNobodyKnows) {
    port_ = 5001;
    std::string const file = writeSessionFile(sessionText());
    EXPECT_EQ(refusalOf("embedded:" + file + "?dta=secret"),
              "embedded:" + file + ": nobody knows the parameter \"dta\"; data would be right");
    EXPECT_EQ(refusalOf("embedded:demo?data=x&Metrics=0"),
              "embedded:demo: nobody knows the parameter \"Metrics\"; metrics would be right");
    EXPECT_EQ(refusalOf("embedded:" + file + "?colour=red"),
              "embedded:" + file +
                  ": nobody knows the parameter \"colour\"; client, connect, create, data or "
                  "metrics would "
                  "be right");
    EXPECT_FALSE(std::filesystem::exists(file + ".data"));
}

TEST_F(ConfigurationTest, MakesNoDataFolderWhereNoneIsWanted) {
    port_ = 5001;
    std::string const file = writeSessionFile(sessionText());
    EXPECT_EQ(refusalOf("embedded:" + file + "?create=maybe"),
              "engine.create=maybe: yes or no would be right");
    ZANEngineProxy::initialize(Url("embedded:" + file + "?create=no"));
    EXPECT_TRUE(engine().getMessageIds(me, "C", -1, false).empty());
    ZANEngineProxy::uninitialize();
    EXPECT_FALSE(std::filesystem::exists(file + ".data"));
}

TEST_F(ConfigurationTest, UsesADataFolderThatIsThere) {
    startAcceptor();
    std::string const file = writeSessionFile(sessionText());
    ZANEngineProxy::initialize(Url("embedded:" + file));
    engine().postInternalMessage(me, "C", "35=B|148=kept|33=1|58=x");
    ZANEngineProxy::uninitialize();
    ZANEngineProxy::initialize(Url("embedded:" + file + "?create=no"));
    EXPECT_EQ(engine().getMessageIds(me, "C", -1, false).size(), 1U);
}

class Properties : public IZANEngineConfigProvider {
public:
    explicit Properties(std::map<std::string, std::string> values) : values_(std::move(values)) {}
    std::string getProperty(std::string const& name,
                            std::string const& defaultValue) const override {
        auto const found = values_.find(name);
        return found == values_.end() ? defaultValue : found->second;
    }

private:
    std::map<std::string, std::string> values_;
};

counted_ptr<IZANEngineAdapterFactory> factory() {
    using Create = counted_ptr<IZANEngineAdapterFactory> (*)();
    void* const function =
        getDynamicMethod("embeddedengineadapter", "create_embedded_engineadapterfactory", true);
    return reinterpret_cast<Create>(function)();
}

void initializeWith(std::map<std::string, std::string> values) {
    ZANEngineProxy::initialize(
        counted_ptr<IZANEngineConfigProvider>(new Properties(std::move(values))), factory());
}

TEST_F(ConfigurationTest, MayComeFromAProvider) {
    startAcceptor();
    std::string const file = writeSessionFile(sessionText());
    initializeWith({{"engine.config", file}, {"engine.data", folder_ + "/here"}});
    engine().connect(me, "C");
    EXPECT_TRUE(isConnected());
    EXPECT_TRUE(std::filesystem::exists(folder_ + "/here/lock"));
}

TEST_F(ConfigurationTest, OfAProviderNeedsTheSessionFile) {
    EXPECT_EQ(failureOf<WrongConfigurationException>([] { initializeWith({}); }),
              "engine.config: is missing; the path of a session file, or demo, would be right");
}

} // namespace
