#include "server/counterparty/Counterparty.h"

#include "server/sessions/SessionPair.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <filesystem>
#include <optional>

namespace {

using namespace zan::server;
using namespace std::chrono_literals;

/// What a counterparty prints, one line each with SOH as `|`.
class Printed {
public:
    void add(char direction, std::string text) {
        for (char& each : text)
            if (each == '\x01')
                each = '|';
        std::lock_guard const lock(mutex_);
        lines_.push_back(std::string(1, direction) + " " + text);
        changed_.notify_all();
    }
    bool waitFor(std::string const& part) const {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, 10s, [&] { return countLines(part) > 0; });
    }
    std::size_t count(std::string const& part) const {
        std::lock_guard const lock(mutex_);
        return countLines(part);
    }

private:
    std::size_t countLines(std::string const& part) const {
        return static_cast<std::size_t>(
            std::count_if(lines_.begin(), lines_.end(), [&](std::string const& line) {
                return line.find(part) != std::string::npos;
            }));
    }

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<std::string> lines_;
};

struct Client {
    explicit Client(int port)
        : session(FixSession::initiator(settingsFor("CLIENT", "COUNTERPARTY", port), events)) {
        session->start({});
    }
    FixSendResult send(std::string const& type, FixFields const& body) {
        return sendOne(*session, type, body, 1s);
    }
    SessionRecorder events;
    std::unique_ptr<FixSession> session;
};

TEST(Counterparty, FillsAnOrderOverItsSession) {
    Counterparty const counterparty{CounterpartySettings()};
    Client client(counterparty.port());
    ASSERT_TRUE(client.events.waitFor("on"));
    client.send("D", {{11, "A"}, {55, "IBM"}, {54, "1"}, {38, "100"}, {40, "2"}, {44, "12"}});
    ASSERT_TRUE(client.events.waitFor("|35=8|", 3));
    auto const reports = client.events.linesWith("|35=8|");
    EXPECT_NE(reports[0].find("|39=0|"), std::string::npos);
    EXPECT_NE(reports[1].find("|39=1|"), std::string::npos);
    EXPECT_NE(reports[2].find("|39=2|"), std::string::npos);
}

TEST(Counterparty, PrintsEachMessageOnce) {
    Printed printed;
    Counterparty const counterparty(
        CounterpartySettings(),
        [&](char direction, std::string const& text) { printed.add(direction, text); });
    Client client(counterparty.port());
    ASSERT_TRUE(client.events.waitFor("on"));
    client.send("D", {{11, "A"}, {55, "IBM"}, {54, "1"}, {38, "100"}, {40, "1"}});
    ASSERT_TRUE(client.events.waitFor("|35=8|", 3));
    ASSERT_TRUE(printed.waitFor("|39=2|"));
    EXPECT_EQ(printed.count("|35=D|"), 1u);
    EXPECT_EQ(printed.count("|39=0|"), 1u);
    EXPECT_EQ(printed.count("|39=1|"), 1u);
    EXPECT_EQ(printed.count("|39=2|"), 1u);
    EXPECT_EQ(printed.count("|35=A|"), 2u);
}

TEST(Counterparty, LogsItsClientOutWithAReason) {
    Counterparty counterparty{CounterpartySettings()};
    Client client(counterparty.port());
    ASSERT_TRUE(client.events.waitFor("on"));
    counterparty.logOut("the desk closes");
    EXPECT_TRUE(client.events.waitFor("|58=the desk closes|"));
    EXPECT_TRUE(client.events.waitFor("down"));
}

TEST(Counterparty, TakesItsClientAgain) {
    Counterparty const counterparty{CounterpartySettings()};
    Client client(counterparty.port());
    ASSERT_TRUE(client.events.waitFor("on"));
    client.session->requestLogout("");
    ASSERT_TRUE(client.events.waitFor("down"));
    client.session->start({});
    EXPECT_TRUE(client.events.waitFor("on", 2));
}

TEST(Counterparty, GoesOnWithWhatIsInItsStore) {
    std::filesystem::path const folder =
        std::filesystem::temp_directory_path() / ("zan_counterparty_" + std::to_string(getpid()));
    Printed printed;
    CounterpartySettings settings;
    settings.store = (folder / "store").string();
    std::optional<Counterparty> counterparty(std::in_place, settings);
    settings.port = counterparty->port();
    Client client(settings.port);
    ASSERT_TRUE(client.events.waitFor("on"));
    client.send("D", {{11, "A"}, {55, "IBM"}, {54, "1"}, {38, "1"}, {40, "1"}});
    ASSERT_TRUE(client.events.waitFor("|39=2|"));
    counterparty.reset();
    ASSERT_TRUE(client.events.waitFor("down"));
    counterparty.emplace(
        settings, [&](char direction, std::string const& text) { printed.add(direction, text); });
    ASSERT_TRUE(client.events.waitFor("on", 2)) << client.events.all();
    client.send("2", {{7, "1"}, {16, "0"}});
    // What the client has taken already it drops.
    EXPECT_TRUE(printed.waitFor("|35=8|34=3|43=Y|"));
    EXPECT_TRUE(client.events.linesWith("|141=Y|").empty());
    client.send("D", {{11, "B"}, {55, "IBM"}, {54, "1"}, {38, "1"}, {40, "1"}});
    EXPECT_TRUE(printed.waitFor("|37=O-2|11=B|17=E-3|"));
    EXPECT_TRUE(printed.waitFor("|37=O-2|11=B|17=E-4|"));
    counterparty.reset();
    std::filesystem::remove_all(folder);
}

TEST(Counterparty, NamesThePortThatIsTaken) {
    Counterparty const first{CounterpartySettings()};
    CounterpartySettings settings;
    settings.port = first.port();
    settings.sender = "OTHER";
    EXPECT_THROW(Counterparty{settings}, std::runtime_error);
}

} // namespace
