#include "Conversation.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace {

constexpr std::size_t lineWidth = 100;
constexpr std::size_t textColumn = 38;

struct Name {
    int tag;
    char const* name;
};

// What is shown of a message, in this order.
constexpr Name shownTags[] = {
    {58, "Text"},        {108, "HeartBtInt"}, {112, "TestReqID"}, {11, "ClOrdID"},
    {41, "OrigClOrdID"}, {37, "OrderID"},     {39, "OrdStatus"},  {54, "Side"},
    {38, "OrderQty"},    {55, "Symbol"},      {40, "OrdType"},    {44, "Price"},
    {32, "LastQty"},     {31, "LastPx"},      {14, "CumQty"},     {151, "LeavesQty"},
    {6, "AvgPx"},        {448, "PartyID"},    {452, "PartyRole"}};

struct Word {
    std::string_view key;
    std::string_view word;
};

constexpr Word messageTypes[] = {
    {"0", "Heartbeat"},       {"1", "TestRequest"},       {"2", "ResendRequest"},
    {"3", "Reject"},          {"4", "SequenceReset"},     {"5", "Logout"},
    {"8", "ExecutionReport"}, {"9", "OrderCancelReject"}, {"A", "Logon"},
    {"D", "NewOrderSingle"},  {"F", "OrderCancelRequest"}};

constexpr Word values[] = {{"54=1", "buy"},    {"54=2", "sell"},      {"40=1", "market"},
                           {"40=2", "limit"},  {"39=0", "new"},       {"39=1", "partially filled"},
                           {"39=2", "filled"}, {"39=4", "cancelled"}, {"39=8", "rejected"}};

template <std::size_t size>
std::string wordFor(Word const (&words)[size], std::string_view key, std::string const& otherwise) {
    auto const* const found = std::ranges::find(words, key, &Word::key);
    return found == std::end(words) ? otherwise : std::string(found->word);
}

std::string valueText(int tag, std::string const& value) {
    return wordFor(values, std::to_string(tag) + "=" + value, value);
}

std::string timeOfDay(double millis) {
    // YYYYMMDD-HH:MM:SS.sss
    return infra::Time(std::llround(millis)).toString().substr(9);
}

Conversation::Fields fieldsOf(ZANFieldGroup const& group) {
    Conversation::Fields fields;
    for (auto each = group.fieldIterator(); each->hasNext(); each->next()) {
        ZANField const& field = *std::as_const(*each).current();
        fields[field.getTag()] = field.getValue().asString();
    }
    return fields;
}

std::string valueOf(Conversation::Fields const& fields, int tag) {
    auto const found = fields.find(tag);
    return found == fields.end() ? std::string() : found->second;
}

// "ClOrdID demo-1", "Side buy" and so on, the repeating groups in brackets at the end.
std::vector<std::string> shownParts(ZANFieldGroup const& group) {
    std::vector<std::string> parts;
    Conversation::Fields const fields = fieldsOf(group);
    for (Name const& shown : shownTags) {
        std::string const value = valueOf(fields, shown.tag);
        if (!value.empty()) {
            parts.push_back(std::string(shown.name) + " " + valueText(shown.tag, value));
        }
    }
    for (auto each = group.groupIterator(); each->hasNext(); each->next()) {
        std::string instance;
        for (std::string const& part : shownParts(*std::as_const(*each).current())) {
            instance += (instance.empty() ? "" : ", ") + part;
        }
        parts.push_back("[" + instance + "]");
    }
    return parts;
}

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

// The parts behind a heading, on as many lines as they need.
std::string wrapped(std::string const& heading, std::vector<std::string> const& parts) {
    std::string text;
    std::string line = padded(heading, textColumn);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        std::string const part = parts[i] + (i + 1 < parts.size() ? ", " : "");
        if (line.size() + part.size() > lineWidth && line.size() > textColumn) {
            text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
            line = std::string(textColumn, ' ');
        }
        line += part;
    }
    return text + line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
}

std::string stateText(ZANConnectionState const& state) {
    if (state.isSessionActive()) {
        return "logged on, a heartbeat every " + std::to_string(state.getHeartbeats()) + " seconds";
    }
    if (state.isLinkActive()) {
        return state.isLoggedOut() ? "logged out"
                                   : "the link is up: " + state.getLocalAddress() + " to " +
                                         state.getRemoteAddress();
    }
    std::string const& error = state.getLastError();
    return "the link is closed" + (error.empty() ? "" : ": " + error);
}

} // namespace

void Conversation::processEvent(counted_ptr<ZANEvent> event) {
    ZANMessage const& message = *event->getMessage();
    Fields const fields = fieldsOf(*message.getFieldGroup());
    std::string const type = valueOf(fields, 35);
    // The engine's own company id stands first in what it sends.
    bool const isOut = valueOf(fields, 49) == "CLIENT";
    std::string const heading = timeOfDay(message.getTimeStamp()) + (isOut ? "  ->  " : "  <-  ") +
                                wordFor(messageTypes, type, "message type " + type);
    std::lock_guard const lock(mutex_);
    std::cout << wrapped(heading, shownParts(*message.getFieldGroup())) << std::flush;
    ++counts_[(isOut ? ">" : "<") + type];
    if (!isOut && type == ZAN::MSGTYPE_EXECUTION_REPORT) {
        reports_.push_back(fields);
    }
    changed_.notify_all();
}

void Conversation::processStateEvent(counted_ptr<ZANConnectionStateEvent> event) {
    auto const state = event->getConnectionState();
    std::lock_guard const lock(mutex_);
    std::cout << timeOfDay(state->getTimeLastStateChange()) << "  --  "
              << event->getConnectionName() << ": " << stateText(*state) << std::endl;
    flags_ = state->getState();
    changed_.notify_all();
}

void Conversation::explain(std::string const& text) {
    std::lock_guard const lock(mutex_);
    std::cout << '\n' << text << std::endl;
}

Conversation::Fields Conversation::waitForReport(std::string const& order, char status) {
    Fields report;
    waitFor("execution report on " + order + " with status " + status, [&] {
        auto const found = std::ranges::find_if(reports_, [&](Fields const& fields) {
            return valueOf(fields, 11) == order && valueOf(fields, 39) == std::string(1, status);
        });
        report = found == reports_.end() ? Fields() : *found;
        return !report.empty();
    });
    return report;
}

std::vector<Conversation::Fields> Conversation::reportsOn(std::string const& order) {
    std::vector<Fields> reports;
    std::lock_guard const lock(mutex_);
    std::ranges::copy_if(reports_, std::back_inserter(reports),
                         [&](Fields const& fields) { return valueOf(fields, 11) == order; });
    return reports;
}

void Conversation::waitForState(long flags) {
    waitFor("such a state of the connection", [&] { return (flags_ & flags) == flags; });
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
