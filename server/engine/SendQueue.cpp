#include "server/engine/SendQueue.h"

#include <cstddef>
#include <utility>

namespace zan::server {

SendQueue::SendQueue(Send send) : send_(std::move(send)) {}

FixSendResult SendQueue::send(std::vector<FixOutgoing> messages, std::vector<long>& ids) {
    Waiting mine;
    mine.messages = std::move(messages);
    std::unique_lock lock(mutex_);
    waiting_.push_back(&mine);
    while (!mine.isDone) {
        if (isSending_) {
            done_.wait(lock);
            continue;
        }
        isSending_ = true;
        std::vector<Waiting*> const senders = std::exchange(waiting_, {});
        lock.unlock();
        sendFor(senders);
        lock.lock();
        isSending_ = false;
        for (Waiting* sender : senders) {
            sender->isDone = true;
        }
        done_.notify_all();
    }
    ids = std::move(mine.ids);
    return mine.result;
}

std::size_t SendQueue::waiting() const {
    std::lock_guard const lock(mutex_);
    return waiting_.size();
}

void SendQueue::sendFor(std::vector<Waiting*> const& senders) {
    if (senders.size() == 1) {
        senders.front()->result = send_(senders.front()->messages, senders.front()->ids);
        return;
    }
    std::vector<FixOutgoing> all;
    for (Waiting* sender : senders) {
        all.insert(all.end(), sender->messages.begin(), sender->messages.end());
    }
    std::vector<long> ids;
    FixSendResult const result = send_(all, ids);
    // What the storage refuses for all together may still work for some.
    if (result == FixSendResult::refused) {
        for (Waiting* sender : senders) {
            sender->result = send_(sender->messages, sender->ids);
        }
        return;
    }
    auto next = ids.cbegin();
    for (Waiting* sender : senders) {
        sender->result = result;
        if (result == FixSendResult::sent) {
            sender->ids.assign(next, next + static_cast<std::ptrdiff_t>(sender->messages.size()));
            next += static_cast<std::ptrdiff_t>(sender->messages.size());
        }
    }
}

} // namespace zan::server
