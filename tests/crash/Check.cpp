#include "crash/Check.h"

#include "crash/OrderText.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <set>

namespace crash {

namespace {

constexpr int adminOut = 1;
constexpr int appIn = 2;
constexpr int appOut = 3;
constexpr int resent = 4;

bool isRepetition(std::string const& message) {
    return fieldOf(message, 43) == "Y";
}

char const* const postType = "B";

// A note tells of it, or a Logon that asks for it.
bool isResetOfNumbers(LogRow const& row) {
    return row.note.find("reset to 1") != std::string::npos ||
           (row.stream == adminOut && row.type == "A" && row.seq == 1 && row.id > 1);
}

// Of an order, by the application.
bool isSentAgain(std::string const& message) {
    return fieldOf(message, 97) == "Y" && !isRepetition(message);
}

bool isForListeners(LogRow const& row) {
    return !row.text.empty() && (row.note.empty() || row.type == postType);
}

bool isWhole(std::string const& message, std::string const& order) {
    return bodyOf(message) == bodyOf(orderFields(order));
}

std::string batchOf(std::string const& order) {
    std::size_t const dash = order.rfind('-');
    return order.substr(0, dash + 1) + std::to_string(std::stoi(order.substr(dash + 1)) / 5 * 5);
}

bool isOfBatch(std::string const& order) {
    return order.find("-3-") != std::string::npos;
}

} // namespace

Check::Check(Evidence const& evidence, Report& report) : evidence_(evidence), report_(report) {
    indexLog();
}

void Check::indexLog() {
    for (LogRow const& row : evidence_.log) {
        byId_[row.id] = &row;
        bool const isOrder = row.stream == appOut && row.type == "D";
        bool const isReport = row.stream == appIn && row.type == "8";
        std::string const name = fieldOf(row.text, isOrder ? 11 : 17);
        if (isOrder && !orders_.emplace(name, &row).second) {
            report_.fault("orders twice in the log", row.text);
        }
        if (row.type == postType && !posts_.emplace(fieldOf(row.text, 148), &row).second) {
            report_.fault("posts twice in the log", row.text);
        }
        if (isResetOfNumbers(row)) {
            numberingFirst_ = row.id;
        }
        if (isReport && !reports_.emplace(name, &row).second) {
            report_.fault("reports twice in the log", row.text);
        }
    }
}

void Check::afterKill() {
    for (Acknowledged const& run : evidence_.acknowledged) {
        for (auto const& one : run.ones) {
            checkOrder(one.order, one.id);
        }
        for (auto const& batch : run.batches) {
            for (std::string const& order : batch) {
                checkOrder(order, 0);
            }
        }
    }
    checkNumbers();
    checkBatches();
    checkPosts();
    checkWire();
    checkListeners();
}

void Check::checkOrder(std::string const& order, long id) {
    auto const row = orders_.find(order);
    if (row == orders_.end()) {
        report_.fault("acknowledged orders that are not in the log", order);
    } else if (id != 0 && row->second->id != id) {
        report_.fault("orders under another id than acknowledged",
                      order + " has " + std::to_string(row->second->id) + ", not " +
                          std::to_string(id));
    }
}

// Without a gap, and each number once, whatever ended the process.
void Check::checkNumbers() {
    int expected = 1;
    for (LogRow const& row : evidence_.log) {
        bool const isOut = row.stream == adminOut || row.stream == appOut || row.stream == resent;
        bool const isNew = isOut && row.note.empty() && !isRepetition(row.text);
        expected = isResetOfNumbers(row) ? 1 : expected;
        if (isNew && row.seq != expected) {
            report_.fault("numbers out of step in the log", std::to_string(row.seq) + " where " +
                                                                std::to_string(expected) +
                                                                " is expected: " + row.text);
        }
        if (isNew) {
            expected = row.seq + 1;
        }
    }
}

void Check::checkBatches() {
    std::map<std::string, int> sizes;
    for (auto const& [order, row] : orders_) {
        if (isOfBatch(order)) {
            ++sizes[batchOf(order)];
        }
    }
    for (auto const& [batch, size] : sizes) {
        if (size != 5) {
            report_.fault("batches that are not whole in the log",
                          batch + " has " + std::to_string(size));
        }
    }
}

// What came over the link is in the log, byte for byte.
void Check::checkWire() {
    std::set<std::string> repeated;
    for (LogRow const& row : evidence_.log) {
        if (row.stream == resent) {
            repeated.insert(row.text);
        }
    }
    for (std::string const& message : evidence_.journal.raw) {
        auto const row = orders_.find(fieldOf(message, 11));
        if (row == orders_.end()) {
            report_.fault("orders on the wire that are not in the log", message);
        } else if ((isRepetition(message) || isSentAgain(message)) && !repeated.contains(message)) {
            report_.fault("repeated orders on the wire that are not in the log", message);
        } else if (!isRepetition(message) && !isSentAgain(message) &&
                   row->second->text != message) {
            report_.fault("orders on the wire that the log has otherwise",
                          message + " where the log has " + row->second->text);
        }
    }
}

void Check::checkListeners() {
    std::array<long, 5> kept{};
    for (Consumed const& run : evidence_.consumed) {
        for (auto const& event : run.events) {
            auto const row = byId_.find(event.id);
            bool const isRemoved = row == byId_.end() && mayBeRemoved_.contains(event.id);
            if (!isRemoved && (row == byId_.end() || row->second->stream != event.stream)) {
                report_.fault("delivered entries that are not in the log",
                              std::to_string(event.id));
            }
            if (event.isAgain && event.id <= kept.at(static_cast<std::size_t>(event.stream))) {
                report_.fault("entries delivered again below a mark", std::to_string(event.id));
            }
        }
        checkOrderOfDelivery(run);
        for (auto const& mark : run.kept) {
            long& highest = kept.at(static_cast<std::size_t>(mark.stream));
            highest = std::max(highest, mark.id);
        }
    }
}

void Check::checkOrderOfDelivery(Consumed const& run) {
    long last = 0;
    for (auto const& event : run.events) {
        if (event.id <= last) {
            report_.fault("entries delivered out of order",
                          std::to_string(event.id) + " after " + std::to_string(last));
        }
        last = event.id;
    }
}

void Check::checkPosts() {
    for (Acknowledged const& run : evidence_.acknowledged) {
        for (auto const& post : run.posts) {
            checkPost(run, post, &post == &run.posts.back());
        }
    }
}

void Check::checkPost(Acknowledged const& run, Acknowledged::One const& post, bool isLast) {
    auto const row = posts_.find(post.order);
    if (isToBeRemoved(post.order)) {
        mayBeRemoved_.insert(post.id);
    }
    if (run.removed.contains(post.id)) {
        if (row != posts_.end()) {
            report_.fault("deleted entries that are in the log", post.order);
        }
    } else if (row == posts_.end()) {
        // The process may have ended before it could write the deletion down.
        if (!isLast || !isToBeRemoved(post.order)) {
            report_.fault("posts that are not in the log", post.order);
        }
    } else if (row->second->id != post.id || row->second->stream != appIn) {
        report_.fault("posts under another id than acknowledged", post.order);
    } else if (run.edited.contains(post.id) && row->second->note != "edited") {
        report_.fault("edits that are lost", post.order + " has the note " + row->second->note);
    }
}

void Check::atTheEnd() {
    afterKill();
    countOrders();
    countReports();
    countEvents();
    countDisturbances();
    checkSession();
}

void Check::countDisturbances() {
    for (Acknowledged const& run : evidence_.acknowledged) {
        report_.posts += static_cast<long>(run.posts.size());
        report_.edits += static_cast<long>(run.edited.size() + run.removed.size());
    }
    report_.resets += std::ranges::count_if(evidence_.journal.logons, [](std::string const& logon) {
        return fieldOf(logon, 141) == "Y";
    });
    report_.sentAgain += std::ranges::count_if(evidence_.journal.raw, isSentAgain);
    report_.logons += static_cast<long>(evidence_.journal.logons.size());
}

void Check::countOrders() {
    std::map<std::string, int> taken;
    for (std::string const& order : evidence_.journal.taken) {
        if (++taken[order] > 1) {
            report_.fault("orders twice at the counterparty", order);
        }
    }
    for (auto const& [order, row] : orders_) {
        ++report_.orders;
        if (!isWhole(row->text, order)) {
            report_.fault("orders with another content", row->text);
        }
        if (!taken.contains(order) && row->id > numberingFirst_) {
            report_.fault("orders in the log that the counterparty has not got", row->text);
        }
    }
    report_.ordersAtPeer += static_cast<long>(evidence_.journal.taken.size());
    report_.repeatedOnWire += std::ranges::count_if(evidence_.journal.raw, isRepetition);
    auto const count = [&](std::string const& order) {
        ++report_.acknowledged;
        report_.acknowledgedInLog += orders_.contains(order) ? 1 : 0;
        report_.acknowledgedAtPeer += taken.contains(order) ? 1 : 0;
    };
    for (Acknowledged const& run : evidence_.acknowledged) {
        for (auto const& one : run.ones) {
            count(one.order);
        }
        for (auto const& batch : run.batches) {
            std::ranges::for_each(batch, count);
        }
    }
    for (std::string const& message : evidence_.journal.raw) {
        if (!isWhole(message, fieldOf(message, 11))) {
            report_.fault("orders with another content at the counterparty", message);
        }
    }
}

void Check::countReports() {
    std::size_t index = 0;
    for (std::string const& message : evidence_.journal.sent) {
        ++report_.reports;
        bool const isForgotten = index++ < evidence_.journal.forgotten;
        auto const row = reports_.find(fieldOf(message, 17));
        if (row == reports_.end() && isForgotten) {
            continue;
        }
        if (row == reports_.end()) {
            report_.fault("reports that are not in the log", message);
        } else if (row->second->seq != numberOf(message) ||
                   bodyOf(row->second->text) != bodyOf(message)) {
            report_.fault("reports that the log has otherwise",
                          message + " where the log has " + row->second->text);
        } else {
            ++report_.reportsInLog;
        }
    }
    if (reports_.size() > evidence_.journal.sent.size()) {
        report_.fault("reports in the log that nobody has sent", std::to_string(reports_.size()));
    }
}

void Check::countEvents() {
    std::set<long> consumed;
    for (Consumed const& run : evidence_.consumed) {
        for (auto const& event : run.events) {
            report_.redelivered += consumed.insert(event.id).second ? 0 : 1;
        }
    }
    for (LogRow const& row : evidence_.log) {
        bool const isEvent = isForListeners(row);
        report_.events += isEvent ? 1 : 0;
        report_.consumed += isEvent && consumed.contains(row.id) ? 1 : 0;
        if (isEvent && !consumed.contains(row.id)) {
            report_.fault("entries that the listener never got",
                          std::to_string(row.id) + ": " + row.text);
        }
    }
}

// The Logon of a process that was killed, which the counterparty has read after that of the next
// one.
bool Check::isOfDeadLink(std::string const& complaint) const {
    std::string latest;
    for (std::string const& logon : evidence_.journal.logons) {
        std::string const time = fieldOf(logon, 52);
        std::string const end = "received " + fieldOf(logon, 34);
        if (time < latest && complaint.ends_with(end)) {
            return true;
        }
        latest = std::max(latest, time);
    }
    return false;
}

void Check::checkSession() {
    for (std::size_t i = 0; i < evidence_.journal.logons.size(); ++i) {
        std::string const& logon = evidence_.journal.logons[i];
        bool const isAnew = fieldOf(logon, 141) == "Y" || (i > 0 && numberOf(logon) == 1);
        if (isAnew && !evidence_.mayReset) {
            report_.fault("sessions that began anew", logon);
        }
    }
    for (std::string const& event : evidence_.journal.events) {
        if (event.find("too low") != std::string::npos && !isOfDeadLink(event)) {
            report_.fault("complaints of the counterparty", event);
        }
    }
    for (LogRow const& row : evidence_.log) {
        if (row.note.find("too low") != std::string::npos) {
            report_.fault("messages that were refused", row.note + ": " + row.text);
        }
    }
}

} // namespace crash
