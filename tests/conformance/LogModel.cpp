#include "conformance/LogModel.h"

#include "conformance/FixText.h"

#include <algorithm>
#include <set>
#include <stdexcept>

namespace zan::conformance {

namespace {

LogRow rowOf(std::vector<std::string> const& cells) {
    return {std::stoi(cells.at(0)),
            cells.at(1),
            std::stoi(cells.at(2)),
            cells.at(3),
            std::stoi(cells.at(4)),
            cells.at(5),
            cells.at(6),
            cells.at(7),
            cells.at(8)};
}

// A client order id and an order id may be spelled alike and are not the same.
std::vector<std::string> keysOf(LogRow const& row) {
    std::vector<std::string> keys;
    for (int const tag : {11, 41, 37}) {
        std::string const value = row.tag(tag).value_or("");
        if (!value.empty() && (tag != 37 || value != "NONE")) {
            keys.push_back((tag == 37 ? "O" : "C") + value);
        }
    }
    return keys;
}

std::string replaced(std::string text, std::string const& from, std::string const& to) {
    std::size_t const at = text.find(from);
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

// A replacement of every third order, and two symbols.
std::string textOf(Trial& trial, std::string const& id, std::string const& before, int number) {
    std::string text = trial.order(id);
    if (number % 3 == 2) {
        text = replaced(text, "35=D", "35=G") + "|41=" + before;
    }
    return number % 2 == 0 ? text : replaced(text, "55=IBM", "55=MSFT");
}

} // namespace

std::optional<std::string> LogRow::tag(int number) const {
    std::string const begin = std::to_string(number) + "=";
    for (std::string const& field : splitFields(text, '\x01')) {
        if (field.starts_with(begin)) {
            return field.substr(begin.size());
        }
    }
    return std::nullopt;
}

LogModel LogModel::filled(Trial& trial) {
    trial.connect();
    EventRecorder& recorder = trial.listen();
    std::string before;
    long last = 0;
    for (int i = 0; i < 30; ++i) {
        std::string const id = trial.newId();
        last = ZANEngineProxy::getInstance().sendMessage(Trial::me, trial.name(),
                                                         textOf(trial, id, before, i));
        before = id;
    }
    EXPECT_TRUE(trial.waitForOrder(recorder, before, last));
    trial.disconnect();
    return LogModel(trial);
}

LogModel::LogModel(Trial& trial) {
    Table table;
    Trial::engine().retrieveMessageLogData(Trial::me, trial.name(), -1,
                                           "id,time,stream,type,seq,sender,target,text,note", "",
                                           "id", table);
    for (std::size_t i = 1; i < table.size(); ++i) {
        LogRow const row = rowOf(table[i]);
        if (!row.text.empty()) {
            messages_.push_back(row);
        }
    }
}

LogRow const& LogModel::row(int id) const {
    auto const found = std::ranges::find(messages_, id, &LogRow::id);
    if (found == messages_.end()) {
        throw std::out_of_range("the table has no row " + std::to_string(id));
    }
    return *found;
}

Ids LogModel::answer(Question const& question) const {
    Ids ids;
    for (LogRow const& row : messages_) {
        if ((question.stream < 0 || row.stream == question.stream) && question.holds(row)) {
            ids.push_back(row.id);
        }
    }
    if (question.newestFirst) {
        std::ranges::reverse(ids);
    }
    return ids;
}

Ids LogModel::chain(Ids const& ids, std::vector<std::string> const& clientOrderIds) const {
    std::set<std::string> known;
    for (std::string const& each : clientOrderIds) {
        known.insert("C" + each);
    }
    std::set<int> found(ids.begin(), ids.end());
    for (std::size_t before = 0; before != found.size() + known.size();) {
        before = found.size() + known.size();
        for (LogRow const& row : messages_) {
            auto const keys = keysOf(row);
            if (found.contains(row.id) ||
                std::ranges::any_of(keys, [&](auto const& key) { return known.contains(key); })) {
                found.insert(row.id);
                known.insert(keys.begin(), keys.end());
            }
        }
    }
    return {found.begin(), found.end()};
}

Ids idsOf(Messages const& messages) {
    Ids ids;
    for (counted_ptr<ZANMessage> const& each : messages) {
        ids.push_back(each->getConnectionMessageId());
    }
    return ids;
}

} // namespace zan::conformance
