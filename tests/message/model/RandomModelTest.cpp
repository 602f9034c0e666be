// Random operations on random groups, plain and derived, against a reference of standard maps.
#include "FailingHeap.h"
#include "RecordingObjects.h"
#include "Seeds.h"
#include "World.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

namespace {

constexpr int operationsOfASeed = 150;

class RandomRun {
public:
    explicit RandomRun(unsigned seed) : chance_(seed) {}

    /// One operation, once or until it gets through. Empty, or what was wrong.
    std::string step() {
        auto const operation = randomOperation(chance_, real_, expected_);
        std::string fault;
        switch (chance_.below(3)) {
        case 0:
            fault = withFailingCalls(operation);
            break;
        case 1:
            fault = withoutMemory(operation);
            break;
        default:
            fault = undisturbed(operation);
        }
        return fault.empty() ? "" : operation.name + ": " + fault;
    }

private:
    struct Outcome {
        std::string answer;
        bool hasThrown = false;
    };

    Outcome onReal(Operation const& operation, std::size_t failing = Calls::never) {
        auto& target = operation.target(real_);
        Outcome outcome;
        realCalls().start(failing);
        try {
            outcome.answer = operation.onReal(target, real_);
        } catch (CallFailed const&) {
            outcome.hasThrown = true;
        }
        realCalls().stop();
        return outcome;
    }

    Outcome onReference(Operation const& operation, ReferenceSide& side,
                        std::size_t failing = Calls::never) {
        reference::Model model(expectedCalls_);
        Outcome outcome;
        expectedCalls_.start(failing);
        try {
            outcome.answer = operation.onReference(model, operation.target(side), side);
        } catch (CallFailed const&) {
            outcome.hasThrown = true;
        }
        expectedCalls_.stop();
        return outcome;
    }

    std::string compared(Outcome const& real, Outcome const& expected) {
        if (real.hasThrown != expected.hasThrown || realCalls().all() != expectedCalls_.all()) {
            return "calls\n" + realCalls().text() + "\ninstead of\n" + expectedCalls_.text();
        }
        if (real.answer != expected.answer) {
            return "answer " + real.answer + " instead of " + expected.answer;
        }
        return difference(real_, expected_);
    }

    std::string undisturbed(Operation const& operation) {
        auto const real = onReal(operation);
        return compared(real, onReference(operation, expected_));
    }

    // The same call fails on both sides, each call once.
    std::string withFailingCalls(Operation const& operation) {
        for (std::size_t failing = 0;; failing += failing < 30 ? 1 : 40) {
            auto const real = onReal(operation, failing);
            auto const expected = onReference(operation, expected_, failing);
            auto const fault = compared(real, expected);
            if (!fault.empty() || !real.hasThrown) {
                return fault.empty() ? "" : "call " + std::to_string(failing) + ": " + fault;
            }
        }
    }

    std::string withoutMemory(Operation const& operation) {
        for (std::size_t allowed = 0;; allowed += allowed < 30 ? 1 : 40) {
            auto const before = cloneOf(expected_);
            if (!failsWithout(operation, allowed)) {
                auto const expected = onReference(operation, expected_);
                return compared({answer_, false}, expected);
            }
            auto const fault = afterRefusal(operation, before);
            if (!fault.empty()) {
                return "allocation " + std::to_string(allowed) + ": " + fault;
            }
        }
    }

    bool failsWithout(Operation const& operation, std::size_t allowed) {
        auto& target = operation.target(real_);
        realCalls().start();
        failing_heap::refuseAfter(allowed);
        bool hasThrown = false;
        try {
            answer_ = operation.onReal(target, real_);
        } catch (std::bad_alloc const&) {
            hasThrown = true;
        }
        bool const isRefused = failing_heap::stop();
        realCalls().stop();
        // The pools can do without some of what they are refused.
        EXPECT_TRUE(isRefused || !hasThrown) << operation.name;
        return hasThrown;
    }

    // The group is as it was; a derived one that was being assigned, or filled by several
    // operations, holds what its operations have stored so far.
    std::string afterRefusal(Operation const& operation, ReferenceSide const& before) {
        auto fault = difference(real_, before);
        if (fault.empty()) {
            return "";
        }
        bool const isAssigned =
            operation.name.rfind("assign", 0) == 0 && operation.target(before).id != 0;
        if (!isAssigned && operation.name.rfind("set 300", 0) != 0 &&
            operation.name.rfind("set 7", 0) != 0) {
            return "state after std::bad_alloc: " + fault;
        }
        if (!isAssigned) {
            return partlyFilled(operation);
        }
        std::size_t const calls = realCalls().all().size();
        for (std::size_t failing = calls > 2 ? calls - 2 : 0; failing <= calls; ++failing) {
            ReferenceSide side = cloneOf(before);
            onReference(operation, side, failing);
            fault = difference(real_, side);
            if (fault.empty()) {
                expected_ = side;
                return "";
            }
        }
        return "no step of the assignment has this state: " + fault;
    }

    // Done again to its end on both sides, it must have lost nothing.
    std::string partlyFilled(Operation const& operation) {
        onReal(operation);
        onReference(operation, expected_);
        return difference(real_, expected_);
    }

    Chance chance_;
    RealSide real_;
    ReferenceSide expected_;
    Calls expectedCalls_;
    std::string answer_;
};

TEST(FieldGroupModel, BehavesLikeItsReference) {
    auto const [first, rounds] = seeds();
    for (unsigned round = 0; round < rounds; ++round) {
        unsigned const seed = first + round;
        {
            RandomRun run(seed);
            for (int i = 0; i < operationsOfASeed; ++i) {
                auto const fault = run.step();
                ASSERT_EQ("", fault) << "seed " << seed << ", operation " << i;
            }
        }
        ASSERT_EQ(0, RecordingField::live) << "seed " << seed;
        ASSERT_EQ(0, RecordingGroup::live) << "seed " << seed;
    }
}

} // namespace
