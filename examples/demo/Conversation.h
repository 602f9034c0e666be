/// The demo's listener: prints what happens on a connection as people read it, and keeps what the
/// counterparty reported about orders.
#ifndef ZANENGINE_EXAMPLES_DEMO_CONVERSATION_H
#define ZANENGINE_EXAMPLES_DEMO_CONVERSATION_H

#include "MessageLines.h"

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

/// Called on the engine's thread; the other operations wait for it on the thread of the demo.
class Conversation : public IZANEventListener {
public:
    void processEvent(counted_ptr<ZANEvent> event) override;
    void processStateEvent(counted_ptr<ZANConnectionStateEvent> event) override;

    /// Prints a line of explanation.
    void explain(std::string const& text);

    /// The first execution report on this order with this status (tag 39). Throws
    /// `std::runtime_error` when there is none within five seconds.
    MessageFields waitForReport(std::string const& order, char status);

    /// All execution reports on this order so far.
    std::vector<MessageFields> reportsOn(std::string const& order);

    /// Waits until the state of the connection has these flags. Throws like `waitForReport`.
    void waitForState(long flags);

    /// Waits until a message of this type came in. Throws like `waitForReport`.
    void waitForMessage(std::string const& type);

    /// How many messages of this type went out, and how many came in.
    int sent(std::string const& type);
    int received(std::string const& type);

private:
    void waitFor(std::string const& what, std::function<bool()> const& isThere);
    int count(std::string const& key);

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<MessageFields> reports_;
    std::map<std::string, int> counts_; // by direction and type: ">D"
    long flags_ = 0;
};

#endif
