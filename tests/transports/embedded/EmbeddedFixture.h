/// What the tests of the embedded engine share: a folder, a counterparty in another process, the
/// facade.
#ifndef ZANENGINE_TESTS_TRANSPORTS_EMBEDDED_EMBEDDEDFIXTURE_H
#define ZANENGINE_TESTS_TRANSPORTS_EMBEDDED_EMBEDDEDFIXTURE_H

#include "conformance/EventRecorder.h"
#include "engine/ZANEngineProxy.h"
#include "events/ZANEngineDefs.h"
#include "infra/Url.h"
#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using zan::conformance::EventRecorder;
using zan::conformance::SeenEvent;

/// The text of the exception of class `Failure` that `call` throws.
template <class Failure, class Call>
std::string failureOf(Call call) {
    try {
        call();
    } catch (Failure const& e) {
        return e.getMessage();
    } catch (std::exception const& e) {
        return std::string("another exception: ") + e.what();
    }
    return "no exception";
}

class EmbeddedTest : public testing::Test {
protected:
    using Clock = std::chrono::steady_clock;

    void SetUp() override {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "zan-embedded-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
    }

    void TearDown() override {
        ZANEngineProxy::uninitialize();
        acceptor_.reset();
        std::filesystem::remove_all(folder_);
    }

    /// Starts the counterparty; a second time on the same port, with the numbers it had.
    void startAcceptor(std::vector<std::string> arguments = {}) {
        std::string const store = folder_ + "/theirs";
        std::filesystem::create_directories(store);
        arguments.insert(arguments.end(), {"--store", store});
        if (port_ != 0) {
            arguments.insert(arguments.end(), {"--port", std::to_string(port_)});
        }
        acceptor_.emplace(TEST_ACCEPTOR, arguments);
        std::string const line = acceptor_->waitForLine("listening on");
        ASSERT_FALSE(line.empty()) << "the counterparty does not start";
        port_ = std::stoi(line.substr(line.rfind(':') + 1));
    }

    /// Starts the engine with a connection `C` to the counterparty.
    void startEngine(std::string const& more = "") {
        ZANEngineProxy::initialize(Url("embedded:" + writeSessionFile(sessionText(more))));
    }

    std::string sessionText(std::string const& more = "") const {
        return "[SESSION]\nConnectionName=C\nConnectionType=initiator\nBeginString=FIX.4.4\n"
               "SenderCompID=US\nTargetCompID=THEM\nStartTime=00:00:00\nEndTime=00:00:00\n"
               "HeartBtInt=10\nReconnectInterval=1\nLogonTimeout=3\nSocketNodelay=Y\n"
               "SocketConnectHost=127.0.0.1\nSocketConnectPort=" +
               std::to_string(port_) + "\n" + more;
    }

    std::string writeSessionFile(std::string const& text) const {
        std::string const path = folder_ + "/sessions.cfg";
        std::ofstream(path) << text;
        return path;
    }

    void startAndConnect(std::vector<std::string> const& arguments = {}) {
        startAcceptor(arguments);
        startEngine();
        engine().connect(me, "C");
    }

    static ZANEngineProxy& engine() { return ZANEngineProxy::getInstance(); }

    /// A recorder of all kinds of events of connection `C`, straight from the engine.
    EventRecorder& record(std::function<void()> onEvent = nullptr) {
        auto* const recorder = new EventRecorder;
        recorder->onEvent(std::move(onEvent));
        recorders_.push_back(counted_ptr<IZANEventListener>(recorder));
        engine().subscribeDirect(me, "C", true, true, true, recorders_.back());
        return *recorder;
    }

    static bool isConnected() { return engine().isConnected(me, "C"); }

    /// True as soon as `test` is, within ten seconds.
    static bool eventually(std::function<bool()> const& test) {
        auto const deadline = Clock::now() + std::chrono::seconds(10);
        while (!test()) {
            if (Clock::now() > deadline) {
                return false;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return true;
    }

    static std::string order(std::string const& id) {
        return "35=D|11=" + id + "|55=IBM|54=1|38=100|40=2|44=10|60=20261121-09:30:00";
    }

    using Messages = std::vector<counted_ptr<ZANMessage>>;
    using Table = std::vector<std::vector<std::string>>;

    static std::string fieldOf(counted_ptr<ZANMessage> const& message, int tag) {
        auto const field = message->getFieldGroup()->getField(tag);
        return field ? field->getValue().asString() : std::string();
    }

    /// The values of a tag in all of these messages: `a b c`.
    static std::string fieldsOf(Messages const& messages, int tag) {
        std::string text;
        for (counted_ptr<ZANMessage> const& message : messages) {
            text += (text.empty() ? "" : " ") + fieldOf(message, tag);
        }
        return text;
    }

    static counted_ptr<ZANMessage> orderOf(std::string const& id) {
        counted_ptr<ZANFieldGroup> const fields(new ZANFieldGroup);
        fields->setFieldValue(35, "D");
        fields->setFieldValue(11, id);
        fields->setFieldValue(55, "IBM");
        fields->setFieldValue(54, "1");
        fields->setFieldValue(38, 100L);
        fields->setFieldValue(40, "2");
        fields->setFieldValue(44, 10.5);
        fields->setFieldValue(60, "20261121-09:30:00");
        return counted_ptr<ZANMessage>(new ZANMessage(fields));
    }

    /// What the log holds, newest first or oldest first, by an expression.
    static Messages query(std::string const& where, std::string const& orderBy = "",
                          bool newestFirst = false, long stream = -1) {
        Messages messages;
        engine().retrieveMessagesByQuery(me, "C", messages, stream, where, orderBy, newestFirst);
        return messages;
    }

    static Table table(std::string const& columns, std::string const& where = "",
                       long stream = -1) {
        Table rows;
        engine().retrieveMessageLogData(me, "C", stream, columns, where, "id", rows);
        return rows;
    }

    static bool isReport(SeenEvent const& event) { return event.isType("8"); }

    static inline UserTicket const me{"tester", ""};
    std::string folder_;
    int port_ = 0;
    std::optional<ChildProcess> acceptor_;
    std::vector<counted_ptr<IZANEventListener>> recorders_;
};

#endif
