/// A listener that keeps what it gets as plain values, which any thread may look at.
#ifndef ZANENGINE_CONFORMANCE_EVENTRECORDER_H
#define ZANENGINE_CONFORMANCE_EVENTRECORDER_H

#include "adapter/IZANEventListener.h"
#include "message/ZANFieldGroup.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace zan::conformance {

/// What one event told.
struct SeenEvent {
    enum class Kind { Admin, App, State };
    Kind kind = Kind::State;
    std::string connection;
    int id = 0;
    double time = 0;
    std::map<int, std::string> fields;
    /// Fields by ascending tag, then groups: `55=IBM|453(448=A|)`, the groups only.
    std::string groups;
    long flags = 0;
    std::string lastError;

    std::string field(int tag) const {
        auto const found = fields.find(tag);
        return found == fields.end() ? std::string() : found->second;
    }
    bool isType(std::string const& type) const { return field(35) == type; }
};

class EventRecorder : public IZANEventListener {
public:
    using Test = std::function<bool(SeenEvent const&)>;

    /// Runs on the delivery thread, for each event from now on, before it is kept.
    void onEvent(std::function<void()> action) {
        std::lock_guard const lock(mutex_);
        action_ = std::move(action);
    }

    /// How long `waitFor` waits.
    std::chrono::milliseconds patience = std::chrono::seconds(30);

    void processEvent(counted_ptr<ZANEvent> event) override {
        SeenEvent seen;
        seen.kind = event->isAdmin() ? SeenEvent::Kind::Admin : SeenEvent::Kind::App;
        seen.connection = event->getConnectionName();
        auto const message = event->getMessage();
        seen.id = message->getConnectionMessageId();
        seen.time = message->getTimeStamp();
        ZANFieldGroup const& body = *message->getFieldGroup();
        for (auto fields = body.fieldIterator(); fields->hasNext(); fields->next()) {
            ZANField const& field = *std::as_const(*fields).current();
            seen.fields[field.getTag()] = field.getValue().asString();
        }
        seen.groups = groupsOf(body);
        keep(std::move(seen));
    }

    void processStateEvent(counted_ptr<ZANConnectionStateEvent> event) override {
        SeenEvent seen;
        seen.connection = event->getConnectionName();
        seen.flags = event->getConnectionState()->getState();
        seen.lastError = event->getConnectionState()->getLastError();
        keep(std::move(seen));
    }

    std::vector<SeenEvent> events() {
        std::lock_guard const lock(mutex_);
        return events_;
    }

    /// True when `count` events that pass the test have come, or come in time.
    bool waitFor(Test const& test, std::size_t count = 1) {
        std::unique_lock lock(mutex_);
        return arrived_.wait_for(lock, patience, [&] {
            std::size_t found = 0;
            for (SeenEvent const& event : events_) {
                found += test(event) ? 1 : 0;
            }
            return found >= count;
        });
    }

    /// The first event that passes; an empty one when none does.
    SeenEvent first(Test const& test) {
        for (SeenEvent const& event : events()) {
            if (test(event)) {
                return event;
            }
        }
        return {};
    }

private:
    static std::string groupsOf(ZANFieldGroup const& body) {
        std::string text;
        for (auto groups = body.groupIterator(); groups->hasNext(); groups->next()) {
            ZANFieldGroup const& instance = *std::as_const(*groups).current();
            text += std::to_string(instance.getGroupTag()) + "(";
            for (auto fields = instance.fieldIterator(); fields->hasNext(); fields->next()) {
                ZANField const& field = *std::as_const(*fields).current();
                text += std::to_string(field.getTag()) + "=" + field.getValue().asString() + "|";
            }
            text += groupsOf(instance) + ")";
        }
        return text;
    }

    std::function<void()> action() {
        std::lock_guard const lock(mutex_);
        return action_;
    }

    void keep(SeenEvent seen) {
        if (auto const act = action()) {
            act();
        }
        std::lock_guard const lock(mutex_);
        events_.push_back(std::move(seen));
        arrived_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable arrived_;
    std::vector<SeenEvent> events_;
    std::function<void()> action_;
};

} // namespace zan::conformance

#endif
