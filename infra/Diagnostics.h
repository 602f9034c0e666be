/// What the library and its adapters tell an operator, for the application's own log.
///
/// Nothing is told before an application asks for it. Until then it costs next to nothing: whoever
/// has something to tell asks `isDiagnosing` before the text is made.
///
/// Threads: any.
#ifndef ZANENGINE_INFRA_DIAGNOSTICS_H
#define ZANENGINE_INFRA_DIAGNOSTICS_H

#include "infra/Export.h"

#include <functional>
#include <string>

/// How serious something is, the least first.
enum class DiagnosticLevel {
    Debug,   ///< for those who look for a fault
    Info,    ///< the usual course of things: a start, a logon
    Warning, ///< something that an operator may have to look at: a link that was lost
    Error    ///< something that an operator has to look at: messages cannot be stored
};

/// `DEBUG`, `INFO`, `WARNING` or `ERROR`.
ZAN_API char const* levelName(DiagnosticLevel level);

/// Gets what is told: what it is about, for example `session`, and one line of text for people.
/// Neither has secrets or control characters where the embedded engine tells it; of another
/// adapter's texts ask its makers.
///
/// Called on any thread, by several at the same time, and never under a lock of the library's or of
/// the embedded engine's. It should return soon: what is told later waits for it. It may call the
/// engine, but neither start nor stop it. What it throws is dropped.
using DiagnosticSink = std::function<void(DiagnosticLevel level, std::string const& category,
                                          std::string const& text)>;

/// From now on this sink gets what is at least as serious as `lowest`; an empty one ends the
/// telling. Threads that are telling something right now may still be in the sink of before when
/// this returns; it is destroyed when the last of them has left it.
ZAN_API void setDiagnosticSink(DiagnosticSink sink, DiagnosticLevel lowest = DiagnosticLevel::Info);

/// Whether there is a sink for what is this serious.
ZAN_API bool isDiagnosing(DiagnosticLevel level);

/// Tells the sink, before it returns; to be called without a lock. Nothing happens when there is no
/// sink for this level. Throws nothing.
ZAN_API void diagnose(DiagnosticLevel level, std::string const& category, std::string const& text);

#endif
