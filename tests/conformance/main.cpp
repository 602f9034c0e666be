// zan-conformance: puts the kit's promises to any adapter that a URL starts.
#include "conformance/Conformance.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

using namespace zan::conformance;

namespace {

constexpr int mostFailures = 100;
constexpr int wrongUse = 120;

char const* const usage =
    R"(zan-conformance <url>: tests the adapter that the URL starts.

  --abilities LIST   what it can do (all), with commas between: all, none, -name to take away,
                     or some of
)";
char const* const moreUsage =
    R"(  --connection NAME  the connection that is tested (the first one that the adapter names)
  --help             this text

What an absent ability excludes is shown as skipped. The options of GoogleTest are understood, for
example --gtest_filter=*Events*. The exit status is the number of failures, 100 at most, and 120
when it was called in a wrong way.
)";

struct Options {
    std::string url;
    std::string connection;
    Abilities abilities = Abilities::all();
};

// A few on each line.
std::string namesOfAbilities() {
    std::string names;
    int count = 0;
    for (Ability const each : everyAbility()) {
        names += count++ % 6 == 0 ? "                       " : " ";
        names += nameOf(each) + (count % 6 == 0 ? "\n" : "");
    }
    return names.ends_with('\n') ? names : names + "\n";
}

void set(Options& options, std::string const& name, std::string const& value) {
    if (name == "--abilities") {
        options.abilities = Abilities::parse(value);
    } else if (name == "--connection") {
        options.connection = value;
    } else {
        throw std::invalid_argument("unknown option " + name + "; --help lists them");
    }
}

Options parse(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        std::string const word = argv[i];
        if (!word.starts_with("--")) {
            options.url = word;
        } else if (i + 1 == argc) {
            throw std::invalid_argument(word + " needs a value; --help lists the options");
        } else {
            set(options, word, argv[++i]);
        }
    }
    if (options.url.empty()) {
        throw std::invalid_argument("the URL is missing; zan-conformance embedded:demo would be "
                                    "right");
    }
    return options;
}

int run(Options const& options) {
    registerConformance("Adapter", [&options] {
        return std::make_unique<UrlContext>(options.url, options.abilities, options.connection);
    });
    bool const isGood = RUN_ALL_TESTS() == 0;
    int const failures = testing::UnitTest::GetInstance()->failed_test_count();
    return isGood ? 0 : std::clamp(failures, 1, mostFailures);
}

} // namespace

int main(int argc, char** argv) {
    bool const isHelp =
        std::any_of(argv, argv + argc, [](std::string const& word) { return word == "--help"; });
    if (isHelp) {
        std::cout << usage << namesOfAbilities() << moreUsage;
        return 0;
    }
    testing::InitGoogleTest(&argc, argv);
    try {
        return run(parse(argc, argv));
    } catch (std::exception const& error) {
        std::cerr << "zan-conformance: " << error.what() << std::endl;
        return wrongUse;
    }
}
