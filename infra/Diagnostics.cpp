#include "infra/Diagnostics.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <utility>

namespace {

constexpr int silent = static_cast<int>(DiagnosticLevel::Error) + 1;

// What is at least as serious is told.
std::atomic<int> lowestTold{silent};

struct Receiver {
    DiagnosticSink sink;
    DiagnosticLevel lowest;
};

struct Installed {
    std::mutex mutex;
    std::shared_ptr<Receiver const> receiver;
};

// Never destroyed: threads of adapters may have something to tell while the program ends.
Installed& installed() {
    static auto& only = *new Installed;
    return only;
}

} // namespace

char const* levelName(DiagnosticLevel level) {
    switch (level) {
    case DiagnosticLevel::Debug:
        return "DEBUG";
    case DiagnosticLevel::Info:
        return "INFO";
    case DiagnosticLevel::Warning:
        return "WARNING";
    case DiagnosticLevel::Error:
        break;
    }
    return "ERROR";
}

// The sink of before is destroyed without the lock: its destructor is code of others.
void setDiagnosticSink(DiagnosticSink sink, DiagnosticLevel lowest) {
    std::shared_ptr<Receiver const> receiver;
    int told = silent;
    if (sink) {
        receiver = std::make_shared<Receiver const>(Receiver{std::move(sink), lowest});
        told = static_cast<int>(lowest);
    }
    std::lock_guard const lock(installed().mutex);
    installed().receiver.swap(receiver);
    lowestTold.store(told, std::memory_order_relaxed);
}

bool isDiagnosing(DiagnosticLevel level) {
    return static_cast<int>(level) >= lowestTold.load(std::memory_order_relaxed);
}

void diagnose(DiagnosticLevel level, std::string const& category, std::string const& text) {
    if (!isDiagnosing(level)) {
        return;
    }
    std::shared_ptr<Receiver const> receiver;
    {
        std::lock_guard const lock(installed().mutex);
        receiver = installed().receiver;
    }
    try {
        if (receiver && level >= receiver->lowest) {
            receiver->sink(level, category, text);
        }
    } catch (...) {
        // Whoever tells something has work to do, whatever becomes of the telling.
        return;
    }
}
