#include "server/engine/DiagnosticQueue.h"

#include "server/engine/EngineErrors.h"
#include "server/wire/Secrets.h"

#include <utility>

namespace zan::server {

DiagnosticQueue::DiagnosticQueue() : thread_([this] { run(); }) {}

DiagnosticQueue::~DiagnosticQueue() {
    {
        std::lock_guard const lock(mutex_);
        isEnding_ = true;
    }
    filled_.notify_one();
    thread_.join();
}

void DiagnosticQueue::push(Entry&& entry) {
    {
        std::lock_guard const lock(mutex_);
        if (waiting_.size() >= capacity) {
            ++dropped_;
            return;
        }
        waiting_.push_back(std::move(entry));
    }
    filled_.notify_one();
}

void DiagnosticQueue::run() {
    std::vector<Entry> batch;
    std::unique_lock lock(mutex_);
    do {
        filled_.wait(lock, [this] { return !waiting_.empty() || isEnding_; });
        batch.swap(waiting_);
        std::size_t const dropped = std::exchange(dropped_, 0);
        lock.unlock();
        for (Entry const& entry : batch) {
            tell(entry);
        }
        if (dropped > 0) {
            tell(
                {DiagnosticLevel::Warning, "engine",
                 std::to_string(dropped) + " texts like these were dropped: the sink is too slow"});
        }
        batch.clear();
        lock.lock();
    } while (!waiting_.empty() || !isEnding_);
}

void DiagnosticQueue::tell(Entry const& entry) {
    diagnose(entry.level, entry.category, onOneLine(maskSecrets(entry.text)));
}

} // namespace zan::server
