#ifndef ZANENGINE_TESTS_SUPPORT_RECORDINGLISTENER_H
#define ZANENGINE_TESTS_SUPPORT_RECORDINGLISTENER_H

#include "adapter/IZANEventListener.h"

#include <functional>
#include <mutex>
#include <vector>

/// A listener that keeps every event it gets. Events may come from several threads; what was kept
/// is read when they are done.
class RecordingListener : public IZANEventListener {
public:
    /// Runs inside `processEvent`, after the event was kept, without a lock; it may throw.
    std::function<void(counted_ptr<ZANEvent> const&)> onEvent;

    std::vector<counted_ptr<ZANEvent>> events;
    std::vector<counted_ptr<ZANConnectionStateEvent>> stateEvents;

    void processEvent(counted_ptr<ZANEvent> event) override {
        {
            std::lock_guard<std::mutex> const lock(mutex_);
            events.push_back(event);
        }
        if (onEvent) {
            onEvent(event);
        }
    }

    void processStateEvent(counted_ptr<ZANConnectionStateEvent> event) override {
        std::lock_guard<std::mutex> const lock(mutex_);
        stateEvents.push_back(event);
    }

private:
    std::mutex mutex_;
};

inline counted_ptr<IZANEventListener> recordingListener() {
    return counted_ptr<IZANEventListener>(new RecordingListener);
}

#endif
