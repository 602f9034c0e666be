/// What waits to be delivered to the listeners of one connection, and the thread that delivers it.
///
/// Threads: any, but for `start` and `stop`, which belong to the owner.
#ifndef ZANENGINE_SERVER_ENGINE_DELIVERYQUEUE_H
#define ZANENGINE_SERVER_ENGINE_DELIVERYQUEUE_H

#include "server/engine/LinkState.h"
#include "server/sessions/FixSessionStore.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <variant>
#include <vector>

namespace zan::server {

/// Something to be done on the delivery thread, between two events.
struct Task {
    std::function<void(long lastId)> run;
    /// The newest message that comes before it in the queue, or came before it.
    long lastId = 0;
};

using Delivery = std::variant<FixEntry, LinkState, Task>;

class DeliveryQueue {
public:
    /// How many entries wait at most before the sources are asked to hold back, and how many bytes,
    /// the one that is being delivered included. One entry is taken however large it is.
    static constexpr std::size_t capacity = 4096;
    static constexpr std::size_t byteCapacity = std::size_t{16} << 20;

    /// `deliver` gets every entry in order, on the queue's thread; it must not throw. `roomAgain`
    /// is called there when entries were taken out of a full queue. `lastId` is the newest message
    /// of before.
    DeliveryQueue(std::function<void(Delivery const&)> deliver, std::function<void()> roomAgain,
                  long lastId);
    ~DeliveryQueue();
    DeliveryQueue(DeliveryQueue const&) = delete;
    DeliveryQueue& operator=(DeliveryQueue const&) = delete;

    /// The thread holds `owner`, which has this queue, until it ends. When nothing will be
    /// delivered any more it takes the listeners, lets go of them, and only then drops the tasks
    /// that were not done. A thread that was left behind lets go of `owner` before: when its
    /// listeners end, nothing of the owner is left.
    void start(std::shared_ptr<void> owner, std::function<std::shared_ptr<void>()> takeListeners);

    /// Delivers what waits, then ends the thread. What is not delivered when `patience` is over is
    /// dropped; then it returns false while a listener still runs, and the thread ends after it.
    bool stop(std::chrono::milliseconds patience);

    /// Never blocks, and takes entries also beyond the capacity: it stands under the lock of a
    /// session. Sources look at `hasRoom` and hold back. Entries are moved out of the vector.
    void push(std::vector<FixEntry>& entries);
    void push(LinkState const& state);

    /// The task is dropped without being run when the queue stops before.
    void push(std::function<void(long lastId)> task);

    bool hasRoom() const;

    /// How many entries wait, the one that is being delivered included.
    std::size_t size() const;

    /// False when there was no room until the time was over.
    bool waitForRoom(std::chrono::milliseconds patience);

    /// Whether the caller runs on the queue's thread.
    bool isDelivering() const;

    /// Whether the patience with the listeners is over: a long delivery then ends early.
    bool isDropping() const { return isDropping_; }

    /// How long the delivery that is under way has taken; zero when there is none.
    std::chrono::milliseconds timeOfDelivery() const;

private:
    using Clock = std::chrono::steady_clock;

    /// What goes last, in the reverse of this order.
    struct Leftovers {
        std::vector<Delivery> undone;
        std::shared_ptr<void> listeners;
    };

    Leftovers run(std::function<std::shared_ptr<void>()> const& takeListeners);
    void lookOut() const;
    bool take(std::vector<Delivery>& batch);
    void deliverAll(std::vector<Delivery>& batch);
    template <class Item>
    void add(Item&& item);
    bool isRoomy() const;
    void tellRoom();

    std::function<void(Delivery const&)> const deliver_;
    std::function<void()> const roomAgain_;
    mutable std::mutex mutex_;
    std::condition_variable filled_;
    std::condition_variable emptied_;
    std::condition_variable finished_;
    std::vector<Delivery> waiting_;
    std::atomic<bool> isFilled_{false}; // something waits: for looking without the lock
    long lastId_;
    bool isStopping_ = false;
    bool isFinished_ = false;
    bool isLeftBehind_ = false;
    std::atomic<bool> isDropping_{false};
    std::thread thread_;
    std::atomic<std::thread::id> deliveringThread_;
    std::atomic<std::size_t> undelivered_{0}; // of those that the thread has taken
    std::atomic<std::size_t> bytes_{0};       // of those that wait and of those
    std::atomic<bool> wasFull_{false};        // the sources hold back
    std::atomic<Clock::duration> began_{Clock::duration::zero()};
};

} // namespace zan::server

#endif
