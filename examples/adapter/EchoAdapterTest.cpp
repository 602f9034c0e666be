// The echo adapter as applications meet it: loaded by URL and driven through the facade alone.
#include "engine/ZANEngineProxy.h"
#include "errors/ZANConnectionUnknownException.h"
#include "errors/ZANInvalidMessageException.h"
#include "errors/ZANNotConnectedException.h"
#include "events/ZANEngineDefs.h"

#include <chrono>
#include <condition_variable>
#include <gtest/gtest.h>
#include <mutex>
#include <stdexcept>
#include <vector>

namespace {

UserTicket const ticket("tester", "");

/// Keeps what a test wants to know of each event: the events themselves end on the thread that
/// delivered them.
class EchoListener : public IZANEventListener {
public:
    struct Echo {
        long id;
        std::string text;
    };

    void processEvent(counted_ptr<ZANEvent> event) override {
        counted_ptr<ZANFieldGroup> const body = event->getMessage()->getFieldGroup();
        Echo echo{event->getMessage()->getConnectionMessageId(), {}};
        if (body->isFieldPresent(58)) {
            echo.text = body->getField(58)->getValue().asString();
        }
        {
            std::lock_guard<std::mutex> const lock(mutex_);
            echoes_.push_back(echo);
        }
        changed_.notify_all();
        if (echo.text == "fail") {
            throw std::runtime_error("asked to fail");
        }
    }

    std::vector<Echo> waitFor(std::size_t count) {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait_for(lock, std::chrono::seconds(10), [&] { return echoes_.size() >= count; });
        return echoes_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Echo> echoes_;
};

class EchoAdapter : public ::testing::Test {
protected:
    EchoAdapter() : listener_(new EchoListener), handle_(listener_) {
        ZANEngineProxy::initialize(Url("echo:local?connections=A,B"));
        proxy().subscribe(ticket, handle_, "A", ZANEngineDefs::APP_EVENT_TYPE);
    }
    ~EchoAdapter() override { ZANEngineProxy::uninitialize(); }

    static ZANEngineProxy& proxy() { return ZANEngineProxy::getInstance(); }
    std::vector<EchoListener::Echo> waitForEchoes(std::size_t count) {
        return listener_->waitFor(count);
    }

private:
    EchoListener* listener_;
    counted_ptr<IZANEventListener> handle_;
};

TEST_F(EchoAdapter, NamesTheConnectionsOfItsUrl) {
    std::vector<std::string> names;
    proxy().getConnectionNameList(ticket, names);
    EXPECT_EQ(names, (std::vector<std::string>{"A", "B"}));
}

TEST_F(EchoAdapter, TellsTheStateOfAConnection) {
    EXPECT_TRUE(proxy().getConnectionState(ticket, "A")->hasDisconnected());
    proxy().connect(ticket, "A");
    EXPECT_TRUE(proxy().getConnectionState(ticket, "A")->isSessionActive());
    proxy().disconnect(ticket, "A", "done");
    EXPECT_FALSE(proxy().isConnected(ticket, "A"));
}

TEST_F(EchoAdapter, SendsMessagesBackInOrderWithTheirIds) {
    proxy().connect(ticket, "A");
    long const first = proxy().sendMessage(ticket, "A", "35=B|58=one|");
    long const second = proxy().sendMessage(ticket, "A", "35=B|58=two|");
    auto const echoes = waitForEchoes(2);
    ASSERT_EQ(echoes.size(), 2u);
    EXPECT_EQ(echoes[0].text, "one");
    EXPECT_EQ(echoes[0].id, first);
    EXPECT_EQ(echoes[1].text, "two");
    EXPECT_EQ(echoes[1].id, second);
}

TEST_F(EchoAdapter, LeavesTheSentMessageToTheCaller) {
    proxy().connect(ticket, "A");
    counted_ptr<ZANFieldGroup> const body(new ZANFieldGroup(std::string("B")));
    body->setFieldValue(58, "before");
    counted_ptr<ZANMessage> const message(new ZANMessage(body));
    proxy().sendMessage(ticket, "A", message);
    body->setFieldValue(58, "after");
    EXPECT_FALSE(body->isFieldPresent(16580));
    auto const echoes = waitForEchoes(1);
    ASSERT_EQ(echoes.size(), 1u);
    EXPECT_EQ(echoes[0].text, "before");
}

TEST_F(EchoAdapter, GoesOnAfterAListenerFailed) {
    proxy().connect(ticket, "A");
    proxy().sendMessage(ticket, "A", "35=B|58=fail");
    proxy().sendMessage(ticket, "A", "35=B|58=still here");
    auto const echoes = waitForEchoes(2);
    ASSERT_EQ(echoes.size(), 2u);
    EXPECT_EQ(echoes[1].text, "still here");
}

TEST_F(EchoAdapter, RefusesAConnectionThatItDoesNotHave) {
    EXPECT_THROW(proxy().connect(ticket, "C"), ZANConnectionUnknownException);
}

TEST_F(EchoAdapter, RefusesToSendWhileNotConnected) {
    EXPECT_THROW(proxy().sendMessage(ticket, "A", "35=B"), ZANNotConnectedException);
}

TEST_F(EchoAdapter, RefusesTextThatIsNoMessage) {
    proxy().connect(ticket, "A");
    for (char const* const text :
         {"", "35", "35=", "=B", "0=B", "x=B", "35=B||58=x", "58=no type"}) {
        EXPECT_THROW(proxy().sendMessage(ticket, "A", text), ZANInvalidMessageException) << text;
    }
    EXPECT_THROW(proxy().sendMessage(ticket, "A", counted_ptr<ZANMessage>()),
                 ZANInvalidMessageException);
}

TEST_F(EchoAdapter, NamesTheOperationThatItDoesNotOffer) {
    try {
        proxy().getConnectionProperties(ticket, "A");
        FAIL() << "nothing was thrown";
    } catch (ZANEngineException const& failure) {
        EXPECT_EQ(failure.getMessage(), "getConnectionProperties: this engine does not offer it");
    }
}

} // namespace
