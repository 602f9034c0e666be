/// A listener that keeps what it gets as text.
#ifndef ZANENGINE_EXAMPLES_DEMO_REPORTCOLLECTOR_H
#define ZANENGINE_EXAMPLES_DEMO_REPORTCOLLECTOR_H

#include "MessageLines.h"

#include <mutex>
#include <string>

/// Called on the engine's thread, asked on any.
class ReportCollector : public IZANEventListener {
public:
    void processEvent(counted_ptr<ZANEvent> event) override {
        std::lock_guard const lock(mutex_);
        lines_ += lineOf(*event->getMessage());
        ++count_;
    }

    std::string lines() const {
        std::lock_guard const lock(mutex_);
        return lines_;
    }

    int count() const {
        std::lock_guard const lock(mutex_);
        return count_;
    }

private:
    mutable std::mutex mutex_;
    std::string lines_;
    int count_ = 0;
};

#endif
