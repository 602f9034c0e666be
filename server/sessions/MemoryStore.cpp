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
std::size_t const MemoryStore::mostSentBytes;

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

std::vector<FixEntry> MemoryStore::sent(int first, int last, std::size_t mostBytes) {
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
    std::size_t bytes = 0;
    auto const end = std::find_if(found.begin(), found.end(), [&](FixEntry const& entry) {
        bytes += entry.text.size();
        return bytes >= mostBytes;
    });
    if (end != found.end())
        found.erase(end + 1, found.end());
    return found;
}

std::vector<FixEntry> MemoryStore::commit() {
    if (wasReset_) {
        sent_.clear();
        sentBytes_ = 0;
    }
    for (std::size_t i = firstOfNumbering_; i < entries_.size(); ++i)
        keep(entries_[i]);
    committed_ = open_;
    std::vector<FixEntry> entries;
    entries.swap(entries_);
    rollBack();
    return entries;
}

void MemoryStore::keep(FixEntry const& entry) {
    if (!isFirstSending(entry))
        return;
    sent_.push_back(entry);
    sentBytes_ += entry.text.size();
    while (sent_.size() > mostSent || sentBytes_ > mostSentBytes) {
        sentBytes_ -= sent_.front().text.size();
        sent_.pop_front();
    }
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
