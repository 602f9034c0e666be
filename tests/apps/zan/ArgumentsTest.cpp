// What the program says of a command line that it cannot take, and its help.
#include "apps/zan/Arguments.h"
#include "apps/zan/CommandTree.h"
#include "apps/zan/HelpFormatter.h"
#include "apps/zan/Terminal.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace zan::cli;

struct Parsed {
    std::optional<ExitCode> end;
    std::string output;
    std::string errors;
};

Parsed parsed(std::vector<char const*> words) {
    words.insert(words.begin(), "zan");
    std::ostringstream out;
    std::ostringstream errors;
    Arguments arguments;
    auto const end = arguments.parse(static_cast<int>(words.size()), words.data(), out, errors);
    return {end, out.str(), errors.str()};
}

TEST(CommandLine, NamesAnUnknownCommandAndTheNearestOne) {
    EXPECT_EQ(parsed({"conect", "C"}).errors,
              "zan: there is no command \"conect\"; connect would be right; zan --help explains\n");
    EXPECT_EQ(parsed({"frobnicate"}).errors,
              "zan: there is no command \"frobnicate\"; zan --help explains\n");
    EXPECT_EQ(parsed({"--url", "embedded:demo", "edit", "updat", "C"}).errors,
              "zan: there is no command \"updat\"; update would be right; zan --help explains\n");
    EXPECT_EQ(parsed({"conect"}).end, ExitCode::Usage);
}

TEST(CommandLine, NamesAnUnknownOptionAndTheNearestOne) {
    EXPECT_EQ(parsed({"--urll", "x", "log"}).errors,
              "zan: there is no option \"--urll\"; --url would be right; zan --help explains\n");
    EXPECT_EQ(parsed({"log", "--limt=3"}).errors,
              "zan: there is no option \"--limt\"; --limit would be right; zan --help explains\n");
    EXPECT_EQ(parsed({"log", "-x"}).errors,
              "zan: there is no option \"-x\"; zan --help explains\n");
}

TEST(CommandLine, NamesAWordTooMany) {
    EXPECT_NE(parsed({"log", "C", "D"}).errors.find(": D;"), std::string::npos);
}

TEST(CommandLine, LetsNoWordReachTheTerminalAsACommand) {
    EXPECT_EQ(parsed({"\x1b[31m"}).errors.find('\x1b'), std::string::npos);
}

void expectNarrow(std::string const& command, std::string const& help) {
    std::istringstream lines(help);
    EXPECT_FALSE(help.empty());
    for (std::string line; std::getline(lines, line);) {
        EXPECT_LE(widthOf(line), helpWidth) << command << ": " << line;
    }
}

TEST(Help, FitsATerminalOf80Columns) {
    expectNarrow("zan", parsed({"--help"}).output);
    Arguments arguments;
    for (CommandEntry const& command : commandTree(arguments.program()).commands) {
        expectNarrow(command.name, parsed({command.name.c_str(), "--help"}).output);
        for (CommandEntry const& below : command.commands) {
            expectNarrow(below.name,
                         parsed({command.name.c_str(), below.name.c_str(), "--help"}).output);
        }
    }
}

TEST(Help, GoesOnBelowTheTextOfAnOption) {
    std::string const line =
        "  --option                    " + std::string(40, 'a') + " " + std::string(20, 'b');
    EXPECT_EQ(wrapped(line),
              line.substr(0, 70) + "\n" + std::string(30, ' ') + std::string(20, 'b'));
    EXPECT_EQ(wrapped("one\n\n  two\n"), "one\n\n  two\n");
    std::string const whole(100, 'x');
    EXPECT_EQ(wrapped(whole), whole);
}

} // namespace
