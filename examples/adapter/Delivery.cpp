#include "Delivery.h"

#include <exception>
#include <iostream>
#include <utility>

Delivery::Delivery(Receiver receiver) : receiver_(std::move(receiver)) {}

Delivery::~Delivery() {
    stop();
}

void Delivery::start() {
    stopping_ = false;
    thread_ = std::thread([this] { run(); });
}

void Delivery::stop() {
    if (!thread_.joinable()) {
        return;
    }
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        stopping_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

void Delivery::post(counted_ptr<ZANEvent>&& event) {
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        waiting_.push_back(std::move(event));
    }
    changed_.notify_all();
}

void Delivery::run() {
    counted_ptr<ZANEvent> event;
    while (takeNext(event)) {
        deliver(std::move(event));
    }
}

bool Delivery::takeNext(counted_ptr<ZANEvent>& event) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return stopping_ || !waiting_.empty(); });
    if (waiting_.empty()) {
        return false;
    }
    event = std::move(waiting_.front());
    waiting_.pop_front();
    return true;
}

// A listener's exception ends the delivery of this one event. It must not end the thread.
void Delivery::deliver(counted_ptr<ZANEvent>&& event) {
    try {
        receiver_(std::move(event));
    } catch (std::exception const& failure) {
        std::cout << "A listener failed: " << failure.what() << std::endl;
    } catch (...) {
        std::cout << "A listener failed with an exception of no known class." << std::endl;
    }
}
