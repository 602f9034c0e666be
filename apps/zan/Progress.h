/// How far a long piece of work has come, on standard error when that is a terminal.
///
/// Threads: one at a time.
#ifndef ZANENGINE_APPS_ZAN_PROGRESS_H
#define ZANENGINE_APPS_ZAN_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <string>

namespace zan::cli {

class Progress {
public:
    /// Of `total` steps; `done` says what was done with them. Short work shows nothing.
    Progress(std::string done, std::size_t total);

    /// Takes the line away.
    ~Progress();
    Progress(Progress const&) = delete;
    Progress& operator=(Progress const&) = delete;

    void step(std::size_t steps = 1);

private:
    std::string const done_;
    std::size_t const total_;
    bool const isShown_;
    std::chrono::steady_clock::time_point next_;
    std::size_t steps_ = 0;
    bool hasLine_ = false;
};

} // namespace zan::cli

#endif
