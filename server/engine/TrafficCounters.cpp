#include "server/engine/TrafficCounters.h"

#include "server/engine/StoredMessage.h"
#include "server/wire/FieldText.h"

namespace zan::server {

namespace {

void addOne(std::atomic<std::uint64_t>& counter) {
    counter.fetch_add(1, std::memory_order_relaxed);
}

} // namespace

void TrafficCounters::count(std::vector<FixEntry> const& entries) {
    for (FixEntry const& entry : entries) {
        count(entry);
    }
}

void TrafficCounters::count(FixEntry const& entry) {
    if (isDelivered(entry.origin)) {
        newest_[static_cast<std::size_t>(entry.stream)].store(entry.id, std::memory_order_relaxed);
    }
    switch (entry.origin) {
    case FixOrigin::wire:
    case FixOrigin::again:
        countOnWire(entry);
        break;
    case FixOrigin::internal:
        addOne(posted_);
        break;
    case FixOrigin::remark:
        if (!entry.text.empty()) {
            addOne(refused_);
        }
        break;
    case FixOrigin::inserted:
        break;
    }
}

void TrafficCounters::countOnWire(FixEntry const& entry) {
    bool const isIn = entry.stream == FixStream::adminIn || entry.stream == FixStream::appIn;
    (isIn ? in_ : out_).count(valueOf(entry.text, messageTypeTag));
    if (entry.stream == FixStream::resent) {
        addOne(entry.origin == FixOrigin::again ? resentOnRequest_ : resentByApplication_);
    }
}

TrafficFigures TrafficCounters::figures() const {
    TrafficFigures figures;
    figures.in = in_.counts();
    figures.out = out_.counts();
    figures.resentOnRequest = resentOnRequest_.load(std::memory_order_relaxed);
    figures.resentByApplication = resentByApplication_.load(std::memory_order_relaxed);
    figures.refused = refused_.load(std::memory_order_relaxed);
    figures.posted = posted_.load(std::memory_order_relaxed);
    figures.listenerFailures = listenerFailures_.load(std::memory_order_relaxed);
    return figures;
}

long TrafficCounters::newestDelivered(FixStream stream) const {
    return newest_[static_cast<std::size_t>(stream)].load(std::memory_order_relaxed);
}

} // namespace zan::server
