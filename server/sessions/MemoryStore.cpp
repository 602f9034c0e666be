#include "server/sessions/MemoryStore.h"

#include <algorithm>
#include <chrono>

namespace zan {
namespace server {

namespace {

long long nowMillis() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

bool isFirstSending(FixEntry const& entry) {
    return entry.origin == FixOrigin::wire && entry.stream != FixStream::adminIn &&
           entry.stream != FixStream::appIn;
}

} // namespace

std::size_t const MemoryStore::mostSent;

MemoryStore::MemoryStore() {
    committed_.numbering.began = nowMillis();
    open_ = committed_;
    shownNumbers_ = open_.numbers;
}

MemoryStore::~MemoryStore() = default;

void MemoryStore::unlock() {
    rollBack();
    turn_.unlock();
}

void MemoryStore::setNumbers(FixNumbers numbers) {
    open_.numbers = numbers;
    shownNumbers_ = numbers;
}

void MemoryStore::reset() {
    wasReset_ = true;
    firstOfNumbering_ = entries_.size();
    open_.numbering.began = nowMillis();
    setNumbers(FixNumbers());
}

long MemoryStore::append(FixEntry entry) {
    entry.id = ++open_.lastId;
    open_.lastMillis = std::max(open_.lastMillis, nowMillis());
    entry.millis = open_.lastMillis;
    entries_.push_back(std::move(entry));
    return open_.lastId;
}

std::vector<FixEntry> MemoryStore::sent(int first, int last) {
    std::vector<FixEntry> found;
    auto const isAsked = [first, last](FixEntry const& entry) {
        return entry.seq >= first && entry.seq <= last;
    };
    if (!wasReset_)
        std::copy_if(sent_.begin(), sent_.end(), std::back_inserter(found), isAsked);
    std::copy_if(entries_.begin() + static_cast<std::ptrdiff_t>(firstOfNumbering_), entries_.end(),
                 std::back_inserter(found), [isAsked](FixEntry const& entry) {
                     return isFirstSending(entry) && isAsked(entry);
                 });
    return found;
}

std::vector<FixEntry> MemoryStore::commit() {
    if (wasReset_)
        sent_.clear();
    std::copy_if(entries_.begin() + static_cast<std::ptrdiff_t>(firstOfNumbering_), entries_.end(),
                 std::back_inserter(sent_), isFirstSending);
    while (sent_.size() > mostSent)
        sent_.pop_front();
    committed_ = open_;
    std::vector<FixEntry> entries;
    entries.swap(entries_);
    rollBack();
    return entries;
}

void MemoryStore::rollBack() {
    open_ = committed_;
    shownNumbers_ = open_.numbers;
    entries_.clear();
    firstOfNumbering_ = 0;
    wasReset_ = false;
}

} // namespace server
} // namespace zan
