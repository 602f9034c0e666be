#include "server/log/LogWriter.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace zan::server {

LogWriter::LogWriter(WriteConnection& connection) : connection_(connection) {
    Database& database = connection_.database();
    Statement newest(database, "SELECT " + std::string(rowColumns) +
                                   " FROM messages ORDER BY id DESC LIMIT 1");
    if (newest.step()) {
        LogRow const row = readRow(database, newest);
        open_.numbers = row.after;
        open_.lastId = row.entry.id;
        open_.lastMillis = row.entry.millis;
    }
    open_.numberingFirst = static_cast<long>(connection_.meta("numbering_first"));
    open_.numbering = {connection_.meta("numbering_began"), connection_.meta("reset_asked") != 0};
    committed_ = open_;
    numbers_ = open_.numbers;
    lastId_ = open_.lastId;
    numberingFirst_ = open_.numberingFirst;
}

void LogWriter::setNumbers(FixNumbers numbers) {
    FixNumbers const before = open_.numbers;
    if (numbers.nextOut == before.nextOut && numbers.nextIn == before.nextIn) {
        return;
    }
    // Numbers out that were used already come again: what they were used for does not count as sent
    // any more, or one number would stand for two messages.
    if (numbers.nextOut < before.nextOut) {
        startNumbers();
    }
    open_.numbers = numbers;
    numbers_ = numbers;
    if (isRowOpen_) {
        rows_.back().after = numbers;
    } else {
        areNumbersLoose_ = true;
    }
}

void LogWriter::reset() {
    resetAt(nowMillis());
}

void LogWriter::resetAt(long long millis) {
    startNumbers();
    open_.numbers = FixNumbers();
    open_.numbering.began = std::max(std::min(millis, nowMillis()), open_.lastMillis);
    numbers_ = open_.numbers;
    areNumbersLoose_ = true;
}

void LogWriter::startNumbers() {
    isRowOpen_ = false;
    open_.numberingFirst = open_.lastId + 1;
}

long LogWriter::append(FixEntry entry) {
    return add(std::move(entry), nowMillis());
}

long LogWriter::appendKept(FixEntry entry) {
    long long const millis = std::min(entry.millis, nowMillis());
    return add(std::move(entry), millis);
}

long LogWriter::add(FixEntry&& entry, long long millis) {
    entry.id = ++open_.lastId;
    entry.millis = open_.lastMillis = std::max(millis, open_.lastMillis);
    rows_.push_back({std::move(entry), open_.numbers, {}, false});
    isRowOpen_ = true;
    areNumbersLoose_ = false;
    return open_.lastId;
}

std::vector<FixEntry> LogWriter::commit(std::function<void(WriteConnection&)> const& extra) {
    if (areNumbersLoose_ || (rows_.empty() && isNewNumbering())) {
        addNoteOnNumbers();
    }
    std::vector<FixEntry> entries;
    if (rows_.empty()) {
        return entries;
    }
    try {
        entries.reserve(rows_.size());
        auto const began = std::chrono::steady_clock::now();
        write(extra);
        times_.succeeded(std::chrono::steady_clock::now() - began);
    } catch (...) {
        times_.failed();
        rollBack();
        throw;
    }
    for (LogRow& row : rows_) {
        entries.push_back(std::move(row.entry));
    }
    committed_ = open_;
    lastCommit_.store(nowMillis(), std::memory_order_relaxed);
    numberingFirst_.store(committed_.numberingFirst, std::memory_order_release);
    lastId_.store(committed_.lastId, std::memory_order_release);
    rollBack();
    return entries;
}

void LogWriter::rollBack() {
    rows_.clear();
    isRowOpen_ = false;
    areNumbersLoose_ = false;
    open_ = committed_;
    numbers_ = committed_.numbers;
}

void LogWriter::addNoteOnNumbers() {
    FixEntry note;
    note.stream = FixStream::adminOut;
    note.origin = FixOrigin::remark;
    note.note = "The next number out is " + std::to_string(open_.numbers.nextOut) +
                ", the next number in is " + std::to_string(open_.numbers.nextIn) + ".";
    append(std::move(note));
}

void LogWriter::write(std::function<void(WriteConnection&)> const& extra) {
    if (rows_.size() == 1 && !isNewNumbering() && !extra) {
        connection_.insertAlone(rows_.front(), clock_.text(rows_.front().entry.millis));
        return;
    }
    connection_.transact(
        [&](WriteConnection& connection) {
            for (LogRow const& row : rows_) {
                connection.rows().insert(row, clock_.text(row.entry.millis));
            }
            if (isNewNumbering()) {
                connection.setMeta("numbering_first", open_.numberingFirst);
                connection.setMeta("numbering_began", open_.numbering.began);
                connection.setMeta("reset_asked", open_.numbering.asksForReset ? 1 : 0);
            }
            if (extra) {
                extra(connection);
            }
        },
        open_.lastId);
}

bool LogWriter::isNewNumbering() const {
    return open_.numberingFirst != committed_.numberingFirst ||
           open_.numbering.began != committed_.numbering.began ||
           open_.numbering.asksForReset != committed_.numbering.asksForReset;
}

} // namespace zan::server
