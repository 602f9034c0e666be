/// How much memory of its own this process needs at most while this object lives.
#ifndef ZANENGINE_TESTS_FAULTS_PEAKMEMORY_H
#define ZANENGINE_TESTS_FAULTS_PEAKMEMORY_H

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <string>
#include <thread>

/// Files that are mapped do not count: the system may take their pages back at any time.
class PeakMemory {
public:
    PeakMemory() : before_(now()), highest_(before_), thread_([this] { watch(); }) {}
    PeakMemory(PeakMemory const&) = delete;
    PeakMemory& operator=(PeakMemory const&) = delete;
    ~PeakMemory() {
        isEnding_ = true;
        thread_.join();
    }

    /// Beyond what it was at the start.
    long growthInMegabytes() const { return (highest_ - before_) / 1024; }

    /// False where a sanitizer keeps memory that was given back.
    static constexpr bool canTell() {
#ifdef ZAN_TEST_SANITIZED
        return false;
#else
        return true;
#endif
    }

private:
    static long now() {
        std::ifstream status("/proc/self/status");
        for (std::string word; status >> word;) {
            if (word == "RssAnon:") {
                long kilobytes = 0;
                status >> kilobytes;
                return kilobytes;
            }
        }
        return 0;
    }

    void watch() {
        while (!isEnding_) {
            highest_ = std::max(highest_.load(), now());
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }

    long const before_;
    std::atomic<long> highest_;
    std::atomic<bool> isEnding_{false};
    std::thread thread_;
};

#endif
