#include "server/engine/SendQueue.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace zan::server {

SendQueue::SendQueue(Send send) : send_(std::move(send)) {}

FixSendResult SendQueue::send(std::vector<FixOutgoing> messages, std::vector<long>& ids,
                              Clock::time_point deadline) {
    Waiting mine;
    mine.messages = std::move(messages);
    mine.deadline = deadline;
    std::unique_lock lock(mutex_);
    waiting_.push_back(&mine);
    while (!mine.isDone) {
        if (!isSending_) {
            sendForAll(lock);
        } else if (Clock::now() < deadline) {
            done_.wait_until(lock, deadline);
        } else if (std::erase(waiting_, &mine) > 0) {
            return FixSendResult::busy;
        } else {
            // Another thread sends it right now, and does not wait beyond this deadline either.
            done_.wait(lock);
        }
    }
    ids = std::move(mine.ids);
    return mine.result;
}

// Nobody waits longer than he wants to: what could not be sent until the first deadline of all is
// tried again for those who have time.
void SendQueue::sendForAll(std::unique_lock<std::mutex>& lock) {
    isSending_ = true;
    std::vector<Waiting*> const senders = std::exchange(waiting_, {});
    lock.unlock();
    sendFor(senders);
    lock.lock();
    isSending_ = false;
    auto const now = Clock::now();
    std::vector<Waiting*> again;
    for (Waiting* sender : senders) {
        bool const wasTooLate =
            sender->result == FixSendResult::busy || sender->result == FixSendResult::peerTooSlow;
        sender->isDone = !wasTooLate || sender->deadline <= now || senders.size() == 1;
        if (!sender->isDone) {
            again.push_back(sender);
        }
    }
    waiting_.insert(waiting_.begin(), again.begin(), again.end());
    done_.notify_all();
}

std::size_t SendQueue::waiting() const {
    std::lock_guard const lock(mutex_);
    return waiting_.size();
}

void SendQueue::sendFor(std::vector<Waiting*> const& senders) {
    if (senders.size() == 1) {
        Waiting& only = *senders.front();
        only.result = send_(only.messages, only.ids, only.deadline);
        return;
    }
    std::vector<FixOutgoing> all;
    auto deadline = Clock::time_point::max();
    for (Waiting* sender : senders) {
        deadline = std::min(deadline, sender->deadline);
        all.insert(all.end(), sender->messages.begin(), sender->messages.end());
    }
    std::vector<long> ids;
    FixSendResult const result = send_(all, ids, deadline);
    // What the storage refuses for all together may still work for some.
    if (result == FixSendResult::refused) {
        for (Waiting* sender : senders) {
            sender->result = send_(sender->messages, sender->ids, sender->deadline);
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
