// The manual page and the completion scripts: made from the same commands and options as the help.
#include "apps/zan/Completion.h"
#include "apps/zan/Arguments.h"
#include "apps/zan/CommandTree.h"
#include "apps/zan/ExitCodes.h"
#include "apps/zan/ManualPage.h"
#include "apps/zan/ZanFixture.h"

#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>

namespace {

using namespace zan::cli;

CommandEntry tree() {
    Arguments arguments;
    return commandTree(arguments.program());
}

void forEachOption(CommandEntry const& command,
                   std::function<void(OptionEntry const&)> const& visit) {
    for (OptionEntry const& option : command.options) {
        visit(option);
    }
    for (CommandEntry const& each : command.commands) {
        forEachOption(each, visit);
    }
}

TEST(CommandTree, HasEveryCommandAndNoHiddenOne) {
    std::string names;
    for (CommandEntry const& command : tree().commands) {
        names += command.name + " ";
        EXPECT_FALSE(command.description.empty()) << command.name;
    }
    for (char const* name :
         {"connections ", "state ", "send ", "log ", "tail ", "edit ", "decode "})
        EXPECT_NE(names.find(name), std::string::npos) << name;
    EXPECT_EQ(names.find("complete-connections"), std::string::npos);
}

TEST(CommandTree, GivesAnOptionTheSameKindEverywhere) {
    std::map<std::string, std::string> kinds;
    forEachOption(tree(), [&](OptionEntry const& option) {
        EXPECT_FALSE(option.description.empty());
        for (std::string const& name : option.names) {
            std::string const kind = choicesOf(option.kind).empty() ? "" : option.kind;
            auto const [found, isNew] = kinds.emplace(name, kind);
            EXPECT_EQ(found->second, kind) << name << " is completed in two ways";
        }
    });
}

TEST(ManualPage, NamesEveryCommandOptionAndExitCode) {
    std::string const page = manualPage(tree());
    forEachOption(tree(), [&](OptionEntry const& option) {
        for (std::string name : option.names) {
            for (std::size_t at = 0; (at = name.find('-', at)) != std::string::npos; at += 2) {
                name.insert(at, 1, '\\');
            }
            EXPECT_TRUE(name == "\\-h" || name == "\\-\\-help" ||
                        page.find("\\fB" + name + "\\fR") != std::string::npos)
                << name;
        }
    });
    for (ExitMeaning const& each : exitMeanings()) {
        EXPECT_NE(page.find("\\fB" + std::to_string(static_cast<int>(each.code)) + "\\fR"),
                  std::string::npos);
    }
}

class Shells : public ZanTest {
protected:
    // What bash offers for a command line that ends at the cursor.
    std::string offeredBy(std::string const& line) const {
        write("zan.bash", bashCompletion(tree()));
        std::string const script = "source '" + folder_ +
                                   "/zan.bash'; zan() { '" ZAN_PROGRAM "' \"$@\"; }; "
                                   "compopt() { :; }; COMP_LINE='" +
                                   line +
                                   "'; COMP_POINT=${#COMP_LINE}; _zan; "
                                   "printf '%s ' \"${COMPREPLY[@]}\"";
        write("run.bash", script);
        return outputOf("bash '" + folder_ + "/run.bash' 2>&1");
    }

    static std::string outputOf(std::string const& command) {
        FILE* const pipe = popen(command.c_str(), "r");
        std::string output;
        for (int c = 0; (c = std::fgetc(pipe)) != EOF;) {
            output += static_cast<char>(c);
        }
        pclose(pipe);
        return output;
    }
};

TEST_F(Shells, BashOffersCommandsOptionsAndTheirValues) {
    EXPECT_EQ(offeredBy("zan conn"), "connections connect ");
    EXPECT_EQ(offeredBy("zan --color a"), "auto always ");
    EXPECT_EQ(offeredBy("zan completion z"), "zsh ");
    EXPECT_EQ(offeredBy("zan edit d"), "delete ");
    EXPECT_EQ(offeredBy("zan log --new"), "--newest-first ");
    EXPECT_EQ(offeredBy("zan log --ur"), "--url ");
    EXPECT_EQ(offeredBy("zan edit update --strea"), "--stream ");
    EXPECT_EQ(offeredBy("zan tail --stream app"), "app-in app-out ");
}

TEST_F(Shells, BashOffersTheConnectionsOfTheEngine) {
    EXPECT_EQ(offeredBy("zan --url embedded:demo state "), "DEMO ");
    EXPECT_EQ(offeredBy("zan --url embedded:demo state D"), "DEMO ");
    EXPECT_EQ(offeredBy("zan --url embedded:demo state X"), " ");
}

TEST_F(Shells, FishOffersTheSame) {
    if (std::system("command -v fish >/dev/null 2>&1") != 0) {
        GTEST_SKIP() << "there is no fish here";
    }
    auto const offered = [this](std::string const& line) {
        return outputOf("cd '" + folder_ +
                        "' && PATH=$(dirname '" ZAN_PROGRAM
                        "'):$PATH fish -c 'source zan.fish; complete -C \"" +
                        line + "\"' | cut -f 1 | tr '\\n' ' '");
    };
    write("zan.fish", fishCompletion(tree()));
    EXPECT_EQ(offered("zan conn"), "connect connections ");
    EXPECT_EQ(offered("zan --color a"), "always auto ");
    EXPECT_EQ(offered("zan edit d"), "delete ");
    EXPECT_EQ(offered("zan edit update --strea"), "--stream ");
    EXPECT_EQ(offered("zan tail --stream app"), "app-in app-out ");
    EXPECT_EQ(offered("zan --url embedded:demo state D"), "DEMO ");
}

TEST_F(Shells, ShellsThatAreHereTakeTheirScripts) {
    write("zan.bash", bashCompletion(tree()));
    write("_zan", zshCompletion(tree()));
    write("zan.fish", fishCompletion(tree()));
    auto const check = [&](std::string const& shell, std::string const& file) {
        std::string const isHere = "command -v " + shell + " >/dev/null 2>&1";
        if (std::system(isHere.c_str()) == 0) {
            std::string const command = shell + " -n '" + folder_ + "/" + file + "'";
            EXPECT_EQ(std::system(command.c_str()), 0) << file;
        }
    };
    check("bash", "zan.bash");
    check("zsh", "_zan");
    check("fish", "zan.fish");
}

TEST_F(Shells, ProgramPrintsTheScriptOfAShell) {
    RunResult const run = zan({"completion", "bash"});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.output, bashCompletion(tree()));
}

TEST(ExitCodes, StandInTheDocumentAsTheyAre) {
    std::ifstream file(ZAN_COMMAND_LINE_PAGE);
    std::string const page{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    for (ExitMeaning const& each : exitMeanings()) {
        std::string const row =
            "\n| " + std::to_string(static_cast<int>(each.code)) + " | " + each.meaning + " |\n";
        EXPECT_NE(page.find(row), std::string::npos) << row;
    }
}

TEST(CommandTree, HasEveryCommandInTheDocument) {
    std::ifstream file(ZAN_COMMAND_LINE_PAGE);
    std::string const page{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    for (CommandEntry const& command : tree().commands) {
        EXPECT_TRUE(page.find("\n| `" + command.name + "`") != std::string::npos ||
                    page.find("\n| `" + command.name + " ") != std::string::npos)
            << command.name;
    }
}

TEST(ExitCodes, AreDistinctAndInTheHelp) {
    Arguments arguments;
    std::ostringstream out;
    std::ostringstream errors;
    char const* words[] = {"zan", "--help"};
    ASSERT_EQ(arguments.parse(2, words, out, errors), ExitCode::Ok);
    int before = -1;
    for (ExitMeaning const& each : exitMeanings()) {
        int const code = static_cast<int>(each.code);
        EXPECT_GT(code, before);
        before = code;
        EXPECT_NE(out.str().find("\n  " + std::to_string(code) + " "), std::string::npos) << code;
        EXPECT_NE(out.str().find(each.meaning), std::string::npos);
    }
}

} // namespace
