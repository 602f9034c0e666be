/// What waits to be delivered to the listeners of one connection, and the thread that delivers it.
///
/// Threads: any, but for `start` and `stop`, which belong to the owner.
#ifndef ZANENGINE_SERVER_ENGINE_DELIVERYQUEUE_H
#define ZANENGINE_SERVER_ENGINE_DELIVERYQUEUE_H

#include "server/engine/LinkState.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <variant>
#include <vector>

namespace zan::server {

/// A message as it was on the wire.
struct WireMessage {
    std::string text;
    bool isAdmin;
    /// Its number within the connection, given by the queue.
    long id = 0;
    double millis = 0;
};

using Delivery = std::variant<WireMessage, LinkState>;

class DeliveryQueue {
public:
    /// How many entries wait at most before the sources are asked to hold back.
    static constexpr std::size_t capacity = 4096;

    /// `deliver` gets every entry in order, on the queue's thread; it must not throw. `roomAgain`
    /// is called there when entries were taken out of a full queue.
    DeliveryQueue(std::function<void(Delivery const&)> deliver, std::function<void()> roomAgain);
    ~DeliveryQueue();
    DeliveryQueue(DeliveryQueue const&) = delete;
    DeliveryQueue& operator=(DeliveryQueue const&) = delete;

    void start();

    /// Delivers what waits, then ends the thread.
    void stop();

    /// Never blocks, and takes an entry also beyond the capacity: it stands under the lock of a
    /// session. Sources look at `hasRoom` and hold back. Returns the message's number.
    long push(std::string const& text, bool isAdmin);
    void push(LinkState const& state);

    bool hasRoom() const;

    /// False when there was no room until the time was over.
    bool waitForRoom(std::chrono::milliseconds patience);

    /// Whether the caller runs inside `deliver`.
    bool isDelivering() const;

private:
    void run();

    std::function<void(Delivery const&)> const deliver_;
    std::function<void()> const roomAgain_;
    mutable std::mutex mutex_;
    std::condition_variable filled_;
    std::condition_variable emptied_;
    std::vector<Delivery> waiting_;
    long lastId_ = 0;
    bool isStopping_ = false;
    std::thread thread_;
    std::atomic<std::thread::id> deliveringThread_;
};

} // namespace zan::server

#endif
