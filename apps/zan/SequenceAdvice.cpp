#include "apps/zan/SequenceAdvice.h"

#include <cstddef>
#include <optional>
#include <regex>

namespace zan::cli {

namespace {

// Longer texts are no refusal of this kind, and the search takes its time.
constexpr std::size_t longestRefusal = 1000;

struct Mismatch {
    std::string expected;
    std::string received;

    bool isTooLow() const {
        return received.size() != expected.size() ? received.size() < expected.size()
                                                  : received < expected;
    }
};

std::optional<Mismatch> mismatchIn(std::string const& refusal) {
    static std::regex const numbers(
        R"(expect(?:ing|ed)?\D{0,20}(\d{1,10})\D{1,20}?(?:receiv(?:ing|ed)|got|was)\D{0,20}(\d{1,10}))",
        std::regex::icase);
    std::smatch found;
    if (refusal.size() > longestRefusal || !std::regex_search(refusal, found, numbers)) {
        return std::nullopt;
    }
    return Mismatch{found[1], found[2]};
}

std::string commandFor(std::string const& connection, std::string const& option) {
    std::string quoted = "'";
    for (char const c : connection) {
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return "zan connect " + quoted + "' " + option;
}

} // namespace

std::string sequenceAdvice(std::string const& refusal, Refuser refuser,
                           std::string const& connection) {
    std::optional<Mismatch> const mismatch = mismatchIn(refusal);
    if (!mismatch) {
        return {};
    }
    std::string const where = mismatch->isTooLow() ? "behind" : "ahead";
    std::string const reset = "; or agree on a reset, then " + commandFor(connection, "--reset");
    if (refuser == Refuser::Counterparty) {
        return "our numbers are " + where + " of what the counterparty has: " +
               commandFor(connection, "--next-out " + mismatch->expected) + reset;
    }
    return "the counterparty's numbers are " + where +
           " of what we have: ask whether it has begun " + "anew; if so, " +
           commandFor(connection, "--next-in " + mismatch->received) + reset;
}

} // namespace zan::cli
