/// What an engine has to tell the application's diagnostic sink, and the thread that tells it.
///
/// Much of what is worth telling happens under the locks of a session, where code of others must
/// not be called: it waits here.
///
/// Threads: any, also under any lock.
#ifndef ZANENGINE_SERVER_ENGINE_DIAGNOSTICQUEUE_H
#define ZANENGINE_SERVER_ENGINE_DIAGNOSTICQUEUE_H

#include "infra/Diagnostics.h"

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace zan::server {

class DiagnosticQueue {
public:
    /// What comes while so much waits is dropped, and how much that was is told afterwards.
    static constexpr std::size_t capacity = 1000;

    DiagnosticQueue();

    /// Tells what waits first.
    ~DiagnosticQueue();
    DiagnosticQueue(DiagnosticQueue const&) = delete;
    DiagnosticQueue& operator=(DiagnosticQueue const&) = delete;

    /// `text` is called for the text when somebody wants to hear it. Secrets in it are masked, and
    /// control characters shown as blanks.
    template <class Text>
    void tell(DiagnosticLevel level, char const* category, Text const& text) {
        if (isDiagnosing(level)) {
            push({level, category, text()});
        }
    }

private:
    struct Entry {
        DiagnosticLevel level;
        char const* category;
        std::string text;
    };

    void push(Entry&& entry);
    void run();
    static void tell(Entry const& entry);

    std::mutex mutex_;
    std::condition_variable filled_;
    std::vector<Entry> waiting_;
    std::size_t dropped_ = 0;
    bool isEnding_ = false;
    std::thread thread_;
};

} // namespace zan::server

#endif
