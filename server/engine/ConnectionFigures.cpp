// What a connection tells operators about itself.
#include "server/engine/Connection.h"

#include <algorithm>

namespace zan::server {

namespace {

using namespace std::chrono_literals;

// A listener that takes longer than this is worth a line for the operator.
constexpr std::chrono::milliseconds longDelivery = 10s;

} // namespace

ConnectionFigures Connection::figures() const {
    ConnectionFigures figures;
    figures.name = name();
    figures.state = watch_.state();
    figures.numbers = log_.numbers();
    figures.traffic = traffic_.figures();
    figures.marks = markFigures();
    figures.deliveryQueue = queue_.size();
    figures.delivery = queue_.timeOfDelivery();
    figures.waitingSenders = sendQueue_.waiting();
    figures.unsentBytes = session_->unsentBytes();
    figures.commits = log_.commitFigures();
    figures.sizes = log_.sizes();
    return figures;
}

std::vector<MarkFigures> Connection::markFigures() const {
    std::vector<MarkFigures> marks;
    for (LogMark& mark : log_.marks()) {
        long const lag = std::max(newestDelivered(mark.stream) - mark.id, 0L);
        marks.push_back({std::move(mark), lag});
    }
    return marks;
}

// What came before the start is looked up in the log, once, when nothing came since.
long Connection::newestDelivered(FixStream stream) const {
    if (long const counted = traffic_.newestDelivered(stream); counted > 0) {
        return counted;
    }
    std::lock_guard const lock(newestMutex_);
    std::optional<long>& newest = newestOfBefore_[static_cast<std::size_t>(stream)];
    if (!newest) {
        newest = log_.newestDelivered(stream);
    }
    return *newest;
}

std::vector<std::string> Connection::ailments() const {
    std::vector<std::string> ailments;
    LinkState const state = watch_.state();
    if (state.has(FLAG_DB_ERROR)) {
        ailments.push_back(described("the message log fails: " + state.lastError));
    }
    if (state.has(FLAG_UNAVAILABLE)) {
        ailments.push_back(described("the counterparty does not read"));
    }
    if (isListenerStuck()) {
        ailments.push_back(described("a listener has not returned for more than " +
                                     std::to_string(longDelivery / 1s) + " s"));
    }
    subscribers_.visitStreams([&](GuaranteedStream const& stream) {
        if (auto const failure = stream.failure()) {
            ailments.push_back(described(
                "the guaranteed listener \"" + stream.name() + "\" has failed " +
                std::to_string(failure->times) + (failure->times == 1 ? " time" : " times") +
                " on message " + std::to_string(failure->id) + ": " + failure->reason));
        }
    });
    return ailments;
}

bool Connection::isListenerStuck() const {
    return queue_.timeOfDelivery() > longDelivery;
}

void Connection::maintain() {
    log_.maintain();
    if (std::string const found = log_.takeFinding(); !found.empty()) {
        trouble(FixTrouble::storage, found);
    }
    if (log_.worksAgain()) {
        watch_.stored();
    }
    maintainStreams();
    bool const isStuck = isListenerStuck();
    if (isStuck && !isStuckReported_) {
        diary_.listenerTrouble("a listener has not returned for " +
                               std::to_string(longDelivery / 1s) +
                               " s; the connection waits for it");
    }
    isStuckReported_ = isStuck;
}

} // namespace zan::server
