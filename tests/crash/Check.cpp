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
        bool const isNew = (row.stream == adminOut || row.stream == appOut) && row.note.empty() &&
                           !isRepetition(row.text);
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
        } else if (isRepetition(message) && !repeated.contains(message)) {
            report_.fault("repeated orders on the wire that are not in the log", message);
        } else if (!isRepetition(message) && row->second->text != message) {
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
            if (row == byId_.end() || row->second->stream != event.stream) {
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

void Check::atTheEnd() {
    afterKill();
    countOrders();
    countReports();
    countEvents();
    checkSession();
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
        if (!taken.contains(order)) {
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
    for (std::string const& message : evidence_.journal.sent) {
        ++report_.reports;
        auto const row = reports_.find(fieldOf(message, 17));
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
        bool const isForListeners = row.note.empty() && !row.text.empty();
        report_.events += isForListeners ? 1 : 0;
        report_.consumed += isForListeners && consumed.contains(row.id) ? 1 : 0;
        if (isForListeners && !consumed.contains(row.id)) {
            report_.fault("entries that the listener never got",
                          std::to_string(row.id) + ": " + row.text);
        }
    }
}

void Check::checkSession() {
    for (std::size_t i = 0; i < evidence_.journal.logons.size(); ++i) {
        std::string const& logon = evidence_.journal.logons[i];
        if (fieldOf(logon, 141) == "Y" || (i > 0 && numberOf(logon) == 1)) {
            report_.fault("sessions that began anew", logon);
        }
    }
    for (std::string const& event : evidence_.journal.events) {
        if (event.find("too low") != std::string::npos) {
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
