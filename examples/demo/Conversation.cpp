#include "Conversation.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <stdexcept>

void Conversation::processEvent(counted_ptr<ZANEvent> event) {
    ZANMessage const& message = *event->getMessage();
    MessageFields const fields = fieldsOf(*message.getFieldGroup());
    std::string const type = valueOf(fields, 35);
    bool const goesOut = isOut(fields);
    std::lock_guard const lock(mutex_);
    std::cout << lineOf(message) << std::flush;
    ++counts_[(goesOut ? ">" : "<") + type];
    if (!goesOut && type == ZAN::MSGTYPE_EXECUTION_REPORT) {
        reports_.push_back(fields);
    }
    changed_.notify_all();
}

void Conversation::processStateEvent(counted_ptr<ZANConnectionStateEvent> event) {
    auto const state = event->getConnectionState();
    std::lock_guard const lock(mutex_);
    std::cout << lineOf(event->getConnectionName(), *state) << std::flush;
    flags_ = state->getState();
    changed_.notify_all();
}

void Conversation::explain(std::string const& text) {
    std::lock_guard const lock(mutex_);
    std::cout << '\n' << text << std::endl;
}

MessageFields Conversation::waitForReport(std::string const& order, char status) {
    MessageFields report;
    waitFor("execution report on " + order + " with status " + status, [&] {
        auto const found = std::ranges::find_if(reports_, [&](MessageFields const& fields) {
            return valueOf(fields, 11) == order && valueOf(fields, 39) == std::string(1, status);
        });
        report = found == reports_.end() ? MessageFields() : *found;
        return !report.empty();
    });
    return report;
}

std::vector<MessageFields> Conversation::reportsOn(std::string const& order) {
    std::vector<MessageFields> reports;
    std::lock_guard const lock(mutex_);
    std::ranges::copy_if(reports_, std::back_inserter(reports),
                         [&](MessageFields const& fields) { return valueOf(fields, 11) == order; });
    return reports;
}

void Conversation::waitForState(long flags) {
    waitFor("such a state of the connection", [&] { return (flags_ & flags) == flags; });
}

void Conversation::waitForMessage(std::string const& type) {
    waitFor("message of type " + type, [&] { return counts_["<" + type] > 0; });
}

void Conversation::waitFor(std::string const& what, std::function<bool()> const& isThere) {
    std::unique_lock lock(mutex_);
    if (!changed_.wait_for(lock, std::chrono::seconds(5), isThere)) {
        throw std::runtime_error("there was no " + what + " within five seconds");
    }
}

int Conversation::sent(std::string const& type) {
    return count(">" + type);
}

int Conversation::received(std::string const& type) {
    return count("<" + type);
}

int Conversation::count(std::string const& key) {
    std::lock_guard const lock(mutex_);
    return counts_[key];
}
