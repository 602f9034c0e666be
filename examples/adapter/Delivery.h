/// Delivers events one by one on a thread of its own, in the order in which they were given.
#ifndef ECHO_ADAPTER_DELIVERY_H
#define ECHO_ADAPTER_DELIVERY_H

#include "events/ZANEvent.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

/// Threads: `post` may be called from any thread; `start` and `stop` belong to one.
class Delivery {
public:
    using Receiver = std::function<void(counted_ptr<ZANEvent>)>;

    explicit Delivery(Receiver receiver);
    Delivery(Delivery const&) = delete;
    Delivery& operator=(Delivery const&) = delete;
    ~Delivery();

    void start();

    /// Delivers what is waiting, then ends the thread.
    void stop();

    /// Takes the event over: the caller keeps no reference to it or to anything that it shares,
    /// because counts are plain and the thread of this object lets go of them.
    void post(counted_ptr<ZANEvent>&& event);

private:
    void run();
    bool takeNext(counted_ptr<ZANEvent>& event);
    void deliver(counted_ptr<ZANEvent>&& event);

    Receiver receiver_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<counted_ptr<ZANEvent>> waiting_;
    bool stopping_ = false;
    std::thread thread_;
};

#endif
