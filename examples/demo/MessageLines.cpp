#include "MessageLines.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t lineWidth = 100;
constexpr std::size_t textColumn = 38;

struct Name {
    int tag;
    char const* name;
};

// What is shown of a message, in this order.
constexpr Name shownTags[] = {
    {97, "PossResend"}, {58, "Text"},        {108, "HeartBtInt"}, {112, "TestReqID"},
    {11, "ClOrdID"},    {41, "OrigClOrdID"}, {37, "OrderID"},     {39, "OrdStatus"},
    {54, "Side"},       {38, "OrderQty"},    {55, "Symbol"},      {40, "OrdType"},
    {44, "Price"},      {32, "LastQty"},     {31, "LastPx"},      {14, "CumQty"},
    {151, "LeavesQty"}, {6, "AvgPx"},        {448, "PartyID"},    {452, "PartyRole"}};

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

// "ClOrdID demo-1", "Side buy" and so on, the repeating groups in brackets at the end.
std::vector<std::string> shownParts(ZANFieldGroup const& group) {
    std::vector<std::string> parts;
    MessageFields const fields = fieldsOf(group);
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

MessageFields fieldsOf(ZANFieldGroup const& group) {
    MessageFields fields;
    for (auto each = group.fieldIterator(); each->hasNext(); each->next()) {
        ZANField const& field = *std::as_const(*each).current();
        fields[field.getTag()] = field.getValue().asString();
    }
    return fields;
}

std::string valueOf(MessageFields const& fields, int tag) {
    auto const found = fields.find(tag);
    return found == fields.end() ? std::string() : found->second;
}

bool isOut(MessageFields const& fields) {
    // The engine's own company id stands first in what it sends.
    return valueOf(fields, 49) == "CLIENT";
}

std::string lineOf(ZANMessage const& message) {
    MessageFields const fields = fieldsOf(*message.getFieldGroup());
    std::string const type = valueOf(fields, 35);
    std::string const heading = timeOfDay(message.getTimeStamp()) +
                                (isOut(fields) ? "  ->  " : "  <-  ") +
                                wordFor(messageTypes, type, "message type " + type);
    return wrapped(heading, shownParts(*message.getFieldGroup()));
}

std::string lineOf(std::string const& connection, ZANConnectionState const& state) {
    return timeOfDay(state.getTimeLastStateChange()) + "  --  " + connection + ": " +
           stateText(state) + "\n";
}

std::string linesOf(std::vector<std::vector<std::string>> const& table) {
    std::vector<std::size_t> widths;
    for (auto const& row : table) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], row[i].size());
        }
    }
    std::string text;
    for (auto const& row : table) {
        std::string line = " ";
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += " " + padded(row[i], widths[i] + 1);
        }
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}
