/// Lets the senders of many threads share one transaction.
///
/// Whoever comes first sends for all who wait by then; the others find their answer when it is
/// done. A thread that is alone sends at once.
///
/// Threads: any.
#ifndef ZANENGINE_SERVER_ENGINE_SENDQUEUE_H
#define ZANENGINE_SERVER_ENGINE_SENDQUEUE_H

#include "server/sessions/FixSession.h"

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <vector>

namespace zan::server {

class SendQueue {
public:
    /// Sends all of the messages or none, and gives the id of each.
    using Send =
        std::function<FixSendResult(std::vector<FixOutgoing> const&, std::vector<long>& ids)>;

    explicit SendQueue(Send send);

    /// The messages stay together and in their order; `ids` gets theirs where they were sent.
    FixSendResult send(std::vector<FixOutgoing> messages, std::vector<long>& ids);

    /// How many threads wait for another one to send for them.
    std::size_t waiting() const;

private:
    struct Waiting {
        std::vector<FixOutgoing> messages;
        FixSendResult result = FixSendResult::notLoggedOn;
        std::vector<long> ids;
        bool isDone = false;
    };

    void sendFor(std::vector<Waiting*> const& senders);

    Send const send_;
    mutable std::mutex mutex_;
    std::condition_variable done_;
    std::vector<Waiting*> waiting_;
    bool isSending_ = false;
};

} // namespace zan::server

#endif
