/// Lets the senders of many threads share one transaction.
///
/// Whoever comes first sends for all who wait by then; the others find their answer when it is
/// done. A thread that is alone sends at once.
///
/// Threads: any.
#ifndef ZANENGINE_SERVER_ENGINE_SENDQUEUE_H
#define ZANENGINE_SERVER_ENGINE_SENDQUEUE_H

#include "server/sessions/FixSession.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <vector>

namespace zan::server {

class SendQueue {
public:
    using Clock = std::chrono::steady_clock;

    /// Sends all of the messages or none, and gives the id of each.
    /// Gives up with `peerTooSlow` or `busy` when it has to wait beyond the deadline.
    using Send = std::function<FixSendResult(std::vector<FixOutgoing> const&,
                                             std::vector<long>& ids, Clock::time_point deadline)>;

    explicit SendQueue(Send send);

    /// The messages stay together and in their order; `ids` gets theirs where they were sent.
    /// `busy` when others were sending until the deadline.
    FixSendResult send(std::vector<FixOutgoing> messages, std::vector<long>& ids,
                       Clock::time_point deadline);

    /// How many threads wait for another one to send for them.
    std::size_t waiting() const;

private:
    struct Waiting {
        std::vector<FixOutgoing> messages;
        Clock::time_point deadline;
        FixSendResult result = FixSendResult::notLoggedOn;
        std::vector<long> ids;
        bool isDone = false;
    };

    void sendForAll(std::unique_lock<std::mutex>& lock);
    void sendFor(std::vector<Waiting*> const& senders);

    Send const send_;
    mutable std::mutex mutex_;
    std::condition_variable done_;
    std::vector<Waiting*> waiting_;
    bool isSending_ = false;
};

} // namespace zan::server

#endif
