#include "server/log/MessageLog.h"

#include "server/log/LogQueries.h"
#include "server/log/LogWriter.h"
#include "server/log/WriteConnection.h"

#include <limits>
#include <mutex>
#include <utility>

namespace zan::server {

class MessageLog::Impl {
public:
    explicit Impl(LogSettings const& settings)
        : writing(settings), writer(writing), readers(settings), queries(readers) {}

    std::mutex turn;
    WriteConnection writing;
    LogWriter writer;
    ReadPool readers;
    LogQueries const queries;
};

MessageLog::MessageLog(LogSettings const& settings) : impl_(std::make_unique<Impl>(settings)) {}

MessageLog::~MessageLog() = default;

void MessageLog::lock() {
    impl_->turn.lock();
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

long long MessageLog::numberingBegan() const {
    return impl_->writer.numberingBegan();
}

long MessageLog::append(FixEntry entry) {
    return impl_->writer.append(std::move(entry));
}

std::vector<FixEntry> MessageLog::sent(int first, int last) {
    std::vector<FixEntry> entries;
    auto const take = [&](LogRow const& row) {
        entries.push_back(row.entry);
        entries.back().text = row.wireText();
    };
    int const end = last > 0 ? last : std::numeric_limits<int>::max();
    long const from = impl_->writer.openNumberingFirst();
    ReadPool::Reader const reader(impl_->readers);
    LogReader(*reader).sent(from, first, end, take);
    for (LogRow const& row : impl_->writer.openRows()) {
        int const seq = row.entry.seq;
        if (row.entry.id >= from && isSent(row.entry) && seq >= first && seq <= end) {
            take(row);
        }
    }
    return entries;
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

void MessageLog::readChain(std::vector<int> const&, std::vector<std::string> const&, bool,
                           Sink const&) const {
    throw std::logic_error("not yet");
}

void MessageLog::readSent(int first, int last, std::string const& where, Sink const& sink) const {
    impl_->queries.readSent(first, last, where, sink);
}

std::vector<int> MessageLog::ids(int stream, bool newestFirst) const {
    return impl_->queries.ids(stream, newestFirst);
}

void MessageLog::readTable(int, std::string const&, std::string const&, std::string const&,
                           LogTable&) const {
    throw std::logic_error("not yet");
}

long MessageLog::lastId() const {
    return impl_->writer.lastId();
}

long MessageLog::update(int, std::string const&, std::string const&, std::string const&) {
    throw std::logic_error("not yet");
}

long MessageLog::remove(int, std::string const&, std::string const&) {
    throw std::logic_error("not yet");
}

long MessageLog::insert(std::vector<FixEntry>, std::string const&) {
    throw std::logic_error("not yet");
}

int MessageLog::mark(std::string const&, FixStream) const {
    return -1;
}

void MessageLog::setMark(std::string const&, FixStream, int) {}

void MessageLog::resetMarks(std::string const&) {}

void MessageLog::flushMarks() {}

void MessageLog::maintain() {}

} // namespace zan::server
