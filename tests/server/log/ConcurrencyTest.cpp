// Many threads at one log.
#include "server/log/LogFixture.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

namespace {

using namespace logtest;

using namespace std::chrono_literals;

class ManyThreads : public LogTest {
protected:
    ~ManyThreads() override { stop(); }

    void start(std::function<void()> const& work) {
        threads_.emplace_back([this, work] {
            while (!isDone_) {
                work();
            }
        });
    }

    void stop() {
        isDone_ = true;
        for (std::thread& thread : threads_) {
            thread.join();
        }
        threads_.clear();
    }

    std::atomic<bool> isDone_ = false;
    std::vector<std::thread> threads_;
};

TEST_F(ManyThreads, ReadWhatWasCommittedWhileOneCommits) {
    std::atomic<long> faults = 0;
    std::atomic<long> rounds = 0;
    for (int reader = 0; reader < 2; ++reader) {
        start([&] {
            long const before = log().lastId();
            long last = 0;
            log().read({}, [&](FixEntry&& found) {
                faults += found.id != last + 1 ? 1 : 0;
                last = found.id;
            });
            // Batches of three are seen whole.
            faults += last < before || last % 3 != 0 ? 1 : 0;
            ++rounds;
        });
    }
    while (rounds < 40 && log().lastId() < 30'000) {
        Turn const turn(log());
        for (int i = 0; i < 3; ++i) {
            FixNumbers const numbers = log().numbers();
            log().append(entry(FixStream::appOut, numbers.nextOut, "35=D|11=A|"));
            log().setNumbers({numbers.nextOut + 1, numbers.nextIn});
        }
        log().commit();
    }
    stop();
    EXPECT_EQ(faults, 0);
    EXPECT_GE(rounds, 1);
    EXPECT_EQ(log().numbers().nextOut, log().lastId() + 1);
}

TEST_F(ManyThreads, TakeTurns) {
    constexpr int perThread = 150;
    std::vector<std::thread> senders;
    for (int sender = 0; sender < 3; ++sender) {
        senders.emplace_back([&] {
            for (int i = 0; i < perThread; ++i) {
                send("11=A|");
            }
        });
    }
    for (std::thread& sender : senders) {
        sender.join();
    }
    EXPECT_EQ(log().lastId(), 3 * perThread);
    std::vector<int> const numbers = sentNumbers(1, 0);
    ASSERT_EQ(numbers.size(), 3u * perThread);
    for (std::size_t at = 0; at < numbers.size(); ++at) {
        EXPECT_EQ(numbers[at], static_cast<int>(at) + 1);
    }
}

TEST_F(ManyThreads, WorkSideBySide) {
    std::atomic<int> marked = 0;
    start([&] { log().maintain(); });
    start([&] {
        log().setMark("desk", FixStream::appIn, ++marked);
        log().flushMarks();
    });
    start([&] {
        log().update(2, "note = 'seen'", "id % 7 = 0", "ann");
        log().remove(3, "id % 11 = 0", "bob");
        log().insert({entry(FixStream::appIn, 0, "35=8|37=X|11=A|")}, "cid");
    });
    start([&] {
        int found = 0;
        log().readChain({}, {"A"}, true, [&](FixEntry&&) { ++found; });
        LogTable rows;
        log().readTable(-1, "audit", "user = 'ann'", "id DESC", rows);
        static_cast<void>(log().numbers());
    });
    auto const end = std::chrono::steady_clock::now() + 1500ms;
    int sent = 0;
    while (std::chrono::steady_clock::now() < end) {
        send(sent % 50 == 0 ? "11=A|" : "11=B" + std::to_string(sent) + "|");
        receive("37=X" + std::to_string(sent) + "|");
        ++sent;
    }
    stop();
    EXPECT_EQ(log().numbers(), (FixNumbers{sent + 1, sent + 1}));
    EXPECT_EQ(sentNumbers(1, 0).size(), static_cast<std::size_t>(sent));
    EXPECT_EQ(log().mark("desk", FixStream::appIn), marked);
}

} // namespace
