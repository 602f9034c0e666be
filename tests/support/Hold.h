#ifndef ZANENGINE_TESTS_SUPPORT_HOLD_H
#define ZANENGINE_TESTS_SUPPORT_HOLD_H

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <thread>

/// Holds listeners up until it is released. They may still ask when the test is over.
class Hold {
public:
    /// What a listener is to do with each event.
    std::function<void()> wait() const {
        return [isHeld = isHeld_] {
            while (*isHeld) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        };
    }

    void release() { *isHeld_ = false; }

private:
    std::shared_ptr<std::atomic<bool>> isHeld_ = std::make_shared<std::atomic<bool>>(true);
};

#endif
