#include "server/log/MessageLog.h"

#include "server/log/LogEdits.h"
#include "server/log/LogMaintenance.h"
#include "server/log/LogMarks.h"
#include "server/log/LogQueries.h"
#include "server/log/LogWriter.h"
#include "server/log/OrderIndex.h"
#include "server/log/SpaceReserve.h"
#include "server/log/WriteConnection.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <mutex>
#include <system_error>
#include <utility>

namespace zan::server {

class MessageLog::Impl {
public:
    explicit Impl(LogSettings const& settings)
        : file(settings.file), reserve(file + ".reserve"), writing(settings), writer(writing),
          readers(settings), queries(readers), marks(writing),
          orders(file + ".orders", writing.meta("identity"), writer.lastId()),
          edits(writing, readers, reserve),
          maintenance({writing, writer, readers, marks, orders, reserve}) {}

    // Listeners get what lies above their marks again, so a late mark does no harm.
    ~Impl() {
        try {
            marks.flush();
        } catch (LogFailure const&) {
            return;
        }
    }

    std::string const file;
    FairLock turn;
    SpaceReserve reserve;
    WriteConnection writing;
    LogWriter writer;
    ReadPool readers;
    LogQueries const queries;
    LogMarks marks;
    OrderIndex orders;
    LogEdits edits;
    LogMaintenance maintenance;
};

MessageLog::MessageLog(LogSettings const& settings) : impl_(std::make_unique<Impl>(settings)) {}

MessageLog::~MessageLog() = default;

bool MessageLog::lockUntil(FairLock::Clock::time_point deadline) {
    return impl_->turn.lockUntil(deadline);
}

void MessageLog::unlock() {
    impl_->writer.rollBack();
    impl_->turn.unlock();
}

FixNumbers MessageLog::numbers() const {
    return impl_->writer.numbers();
}

void MessageLog::setNumbers(FixNumbers numbers) {
    impl_->writer.setNumbers(numbers);
}

void MessageLog::reset() {
    impl_->writer.reset();
}

FixNumbering MessageLog::numbering() const {
    return impl_->writer.numbering();
}

void MessageLog::setNumbering(FixNumbering numbering) {
    impl_->writer.setNumbering(numbering);
}

long MessageLog::append(FixEntry entry) {
    return impl_->writer.append(std::move(entry));
}

std::vector<FixEntry> MessageLog::sent(int first, int last, std::size_t mostBytes) {
    std::vector<FixEntry> entries;
    std::size_t bytes = 0;
    auto const take = [&](LogRow const& row) {
        entries.push_back(row.entry);
        entries.back().text = row.wireText();
        bytes += entries.back().text.size();
        return bytes < mostBytes;
    };
    int const end = last > 0 ? last : std::numeric_limits<int>::max();
    long const from = impl_->writer.openNumberingFirst();
    ReadPool::Reader const reader(impl_->readers);
    // A session that stopped at a damaged row would never get past it: it fills the gap instead.
    LogReader(*reader).sent(from, first, end, LogReader::Damaged::LeftOut, take);
    for (LogRow const& row : impl_->writer.openRows()) {
        int const seq = row.entry.seq;
        if (bytes < mostBytes && row.entry.id >= from && isSent(row.entry) && seq >= first &&
            seq <= end) {
            take(row);
        }
    }
    return entries;
}

long MessageLog::appendKept(FixEntry entry) {
    return impl_->writer.appendKept(std::move(entry));
}

void MessageLog::resetAt(long long millis) {
    impl_->writer.resetAt(millis);
}

std::vector<FixEntry> MessageLog::commit() {
    return impl_->writer.commit();
}

void MessageLog::rollBack() {
    impl_->writer.rollBack();
}

void MessageLog::read(LogQuery const& query, Sink const& sink) const {
    impl_->queries.read(query, sink);
}

void MessageLog::readChain(std::vector<int> const& ids,
                           std::vector<std::string> const& clientOrderIds, bool newestFirst,
                           Sink const& sink) const {
    ReadPool::Reader const pooled(impl_->readers);
    std::vector<long> chain = impl_->orders.chain(*pooled, ids, clientOrderIds);
    if (newestFirst) {
        std::ranges::reverse(chain);
    }
    LogReader reader(*pooled);
    for (long const id : chain) {
        sink(std::move(reader.row(id)->entry));
    }
}

void MessageLog::readSent(int first, int last, std::string const& where, Sink const& sink) const {
    impl_->queries.readSent(first, last, where, sink);
}

std::vector<int> MessageLog::ids(int stream, bool newestFirst) const {
    return impl_->queries.ids(stream, newestFirst);
}

void MessageLog::readTable(int stream, std::string const& columns, std::string const& where,
                           std::string const& orderBy, LogTable& table) const {
    impl_->queries.readTable(stream, columns, where, orderBy, table);
}

long MessageLog::lastId() const {
    return impl_->writer.lastId();
}

long MessageLog::newestDelivered(FixStream stream) const {
    ReadPool::Reader const reader(impl_->readers);
    return LogReader(*reader).newestDelivered(stream);
}

long MessageLog::update(int stream, std::string const& assignments, std::string const& where,
                        std::string const& user) {
    return impl_->edits.update(stream, assignments, where, user);
}

long MessageLog::undo(int stream, std::string const& where, std::string const& user) {
    return impl_->edits.undo(stream, where, user);
}

long MessageLog::remove(int stream, std::string const& where, std::string const& user) {
    return impl_->edits.remove(stream, where, user);
}

long MessageLog::insert(std::vector<FixEntry> entries, std::string const& user) {
    EditTraces const traces(user, "insert");
    long count = 0;
    while (!entries.empty()) {
        std::lock_guard const turn(*this);
        count += LogEdits::insert(impl_->writer, entries, traces);
    }
    return count;
}

int MessageLog::mark(std::string const& subscriber, FixStream stream) const {
    return impl_->marks.mark(subscriber, stream);
}

void MessageLog::setMark(std::string const& subscriber, FixStream stream, int id) {
    impl_->marks.set(subscriber, stream, id);
}

void MessageLog::resetMarks(std::string const& subscriber) {
    impl_->marks.reset(subscriber);
}

std::vector<LogMark> MessageLog::marks() const {
    return impl_->marks.all();
}

void MessageLog::flushMarks() {
    impl_->marks.flush();
}

CommitFigures MessageLog::commitFigures() const {
    return impl_->writer.commitFigures();
}

// A file that is missing takes no space.
LogSizes MessageLog::sizes() const {
    auto const sizeOf = [this](char const* ending) {
        std::error_code missing;
        std::uintmax_t const size = std::filesystem::file_size(impl_->file + ending, missing);
        return missing ? 0 : size;
    };
    return {sizeOf("") + sizeOf("-wal"), sizeOf(".orders"), sizeOf(".reserve")};
}

void MessageLog::maintain() {
    impl_->maintenance.run();
}

std::string MessageLog::takeFinding() {
    return impl_->writing.takeFinding();
}

bool MessageLog::worksAgain() {
    return impl_->maintenance.worksAgain();
}

} // namespace zan::server
