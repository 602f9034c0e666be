// Measures the engine with its message log against QuickFIX alone with its FileStore: both in one
// process on one machine, by turns, each with a counterparty of the same kind in another process.
#include "benchmarks/engine/Sections.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace bench;

char const* const usage = R"(zan-bench-engine [options] [section...]
  --quick          a little of everything, in seconds
  --records        one line a row, with tabs between the texts, for a program to read
  --folder FOLDER  where data folders are made, with some gigabytes of room (/var/tmp)
  --conditions     tell the versions that are measured, and nothing else
  --help           tell this
sections: rate roundtrip queries memory durable (all)
)";

struct Section {
    std::string name;
    Rows (*measure)(Plan const&);
};

std::vector<Section> const sections = {{"rate", measureOrderRate},
                                       {"roundtrip", measureRoundTrip},
                                       {"queries", measureQueries},
                                       {"memory", measureMemoryGrowth},
                                       {"durable", measureDurable}};

constexpr long thousand = 1000;
constexpr long million = thousand * thousand;

Plan const wholePlan = {"/var/tmp",     9,       50 * thousand, 20 * thousand, million,
                        100 * thousand, million, 10 * million,  2 * thousand,  16};
Plan const quickPlan = {"/var/tmp",    3,
                        4 * thousand,  2 * thousand,
                        20 * thousand, 10 * thousand,
                        20 * thousand, 60 * thousand,
                        200,           16};

struct Options {
    bool isQuick = false;
    bool asRecords = false;
    bool conditionsOnly = false;
    bool helpOnly = false;
    std::string folder = "/var/tmp";
    std::vector<Section> sections;
};

void choose(Options& options, std::string const& name) {
    auto const found = std::ranges::find(sections, name, &Section::name);
    if (found == sections.end()) {
        throw std::runtime_error("there is no option or section " + name + "\n" + usage);
    }
    options.sections.push_back(*found);
}

Options parse(std::vector<std::string> const& arguments) {
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i] == "--quick") {
            options.isQuick = true;
        } else if (arguments[i] == "--records") {
            options.asRecords = true;
        } else if (arguments[i] == "--conditions") {
            options.conditionsOnly = true;
        } else if (arguments[i] == "--help") {
            options.helpOnly = true;
        } else if (arguments[i] == "--folder" && i + 1 < arguments.size()) {
            options.folder = arguments[++i];
        } else {
            choose(options, arguments[i]);
        }
    }
    if (options.sections.empty()) {
        options.sections = sections;
    }
    return options;
}

std::string conditions(Plan const& plan) {
    return "SQLite " BENCH_SQLITE_VERSION ", QuickFIX " BENCH_QUICKFIX_VERSION
           "; durability normal where nothing else is told; medians of " +
           std::to_string(plan.repetitions) + " interleaved repetitions of " +
           amount(static_cast<double>(plan.orders), "orders") + " and of " +
           amount(static_cast<double>(plan.roundTrips), "round trips") + ".";
}

void run(Options const& options) {
    Plan plan = options.isQuick ? quickPlan : wholePlan;
    plan.folder = options.folder;
    if (options.helpOnly || options.conditionsOnly) {
        std::cout << (options.helpOnly ? usage : conditions(plan) + "\n");
        return;
    }
    Rows rows;
    for (Section const& section : options.sections) {
        for (Row const& row : measureApart([&] { return section.measure(plan); })) {
            rows.push_back(row);
        }
    }
    if (options.asRecords) {
        printRecords(rows);
    } else {
        printTable(rows);
        std::cout << '\n' << conditions(plan) << '\n';
    }
}

} // namespace

int main(int argc, char** argv) {
    try {
        run(parse({argv + 1, argv + argc}));
    } catch (std::exception const& error) {
        std::cerr << "zan-bench-engine: " << error.what() << std::endl;
        return 1;
    }
}
