/// The counterparty in a process of its own, and the folder that a measurement works in.
#ifndef ZANENGINE_BENCHMARKS_ENGINE_COUNTERPARTYPROCESS_H
#define ZANENGINE_BENCHMARKS_ENGINE_COUNTERPARTYPROCESS_H

#include "tests/support/ChildProcess.h"

#include <string>

namespace bench {

/// A fresh folder that is gone with this object.
class WorkFolder {
public:
    explicit WorkFolder(std::string const& parent);
    ~WorkFolder();
    WorkFolder(WorkFolder const&) = delete;
    WorkFolder& operator=(WorkFolder const&) = delete;

    std::string const& path() const { return path_; }

private:
    std::string path_;
};

class CounterpartyProcess {
public:
    /// `other` is the SenderCompID of whoever will log on.
    explicit CounterpartyProcess(std::string const& other, bool reports = false);

    int port() const { return port_; }

    /// Waits until the last order of a run has come, and throws std::runtime_error when any of the
    /// `count` orders that were sent so far did not.
    void waitForLast(std::string const& clientOrderId, long count);

private:
    ChildProcess process_;
    int port_ = 0;
};

} // namespace bench

#endif
