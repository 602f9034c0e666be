#include "benchmarks/engine/CounterpartyProcess.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace bench {

namespace {

// The longest that a counterparty may be busy with what was sent to it.
constexpr std::chrono::minutes patience(10);

std::vector<std::string> argumentsFor(std::string const& other, bool reports) {
    std::vector<std::string> arguments = {other};
    if (reports) {
        arguments.emplace_back("--reports");
    }
    return arguments;
}

} // namespace

WorkFolder::WorkFolder(std::string const& parent) : path_(parent + "/zan-bench-XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) {
        throw std::runtime_error("no folder can be made in " + parent);
    }
}

WorkFolder::~WorkFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

CounterpartyProcess::CounterpartyProcess(std::string const& other, bool reports)
    : process_(BENCH_COUNTERPARTY, argumentsFor(other, reports)) {
    std::string const line = process_.waitForLine("listening on");
    if (line.empty()) {
        throw std::runtime_error("the counterparty does not start");
    }
    port_ = std::stoi(line.substr(line.rfind(':') + 1));
}

void CounterpartyProcess::waitForLast(std::string const& clientOrderId, long count) {
    auto const deadline = std::chrono::steady_clock::now() + patience;
    std::string line;
    while (line.empty() && std::chrono::steady_clock::now() < deadline) {
        line = process_.waitForLine(clientOrderId);
    }
    std::string const expected = "received " + std::to_string(count) + " " + clientOrderId;
    if (line != expected) {
        throw std::runtime_error("\"" + expected + "\" is expected of the counterparty, not \"" +
                                 line + "\"");
    }
}

} // namespace bench
