/// What the tests of the program share: a folder, a counterparty in another process, a session
/// file, and runs of the program.
#ifndef ZANENGINE_TESTS_APPS_ZAN_ZANFIXTURE_H
#define ZANENGINE_TESTS_APPS_ZAN_ZANFIXTURE_H

#include "apps/zan/ProgramRun.h"
#include "support/ChildProcess.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

struct RunResult {
    int code;
    std::string output;
    std::string errors;
};

class ZanTest : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (std::filesystem::temp_directory_path() / "zan-cli-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
        // Nothing of who runs the tests may play a part.
        environment_ = {{"HOME", folder_}, {"XDG_CONFIG_HOME", ""}, {"ZAN_URL", ""},
                        {"ZAN_USER", ""},  {"ZAN_SECRET", ""},      {"NO_COLOR", ""},
                        {"TERM", "xterm"}};
    }

    void TearDown() override {
        counterparty_.reset();
        std::filesystem::remove_all(folder_);
    }

    RunSettings settings(std::vector<std::string> arguments,
                         std::optional<unsigned short> width = std::nullopt,
                         std::string const& input = "") const {
        return {std::move(arguments), input, environment_, width};
    }

    RunResult zan(std::vector<std::string> arguments, std::string const& input = "") const {
        ProgramRun run(settings(std::move(arguments), std::nullopt, input));
        run.closeInput();
        int const code = run.wait();
        return {code, run.output(), run.errors()};
    }

    RunResult onTerminal(unsigned short width, std::vector<std::string> arguments,
                         std::string const& typed = "") const {
        ProgramRun run(settings(std::move(arguments), width, typed));
        int const code = run.wait();
        return {code, run.output(), run.errors()};
    }

    /// Starts a counterparty that lives on, and names the engine in the environment: a session file
    /// with the connection `C` to it.
    void useCounterparty() {
        counterparty_.emplace(ZAN_COUNTERPARTY_PROGRAM,
                              std::vector<std::string>{"--sender", "THEM", "--target", "US",
                                                       "--store", folder_ + "/theirs"});
        std::string const line = counterparty_->waitForLine("listening on");
        ASSERT_FALSE(line.empty()) << "the counterparty does not start";
        write("sessions.cfg",
              "[SESSION]\nConnectionName=C\nConnectionType=initiator\nBeginString=FIX.4.4\n"
              "SenderCompID=US\nTargetCompID=THEM\nStartTime=00:00:00\nEndTime=00:00:00\n"
              "HeartBtInt=10\nReconnectInterval=1\nLogonTimeout=5\n"
              "SocketConnectHost=127.0.0.1\nSocketConnectPort=" +
                  line.substr(line.rfind(':') + 1) + "\n");
        environment_["ZAN_URL"] = "embedded:" + folder_ + "/sessions.cfg";
    }

    std::string write(std::string const& name, std::string const& text) const {
        std::string const path = folder_ + "/" + name;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path) << text;
        return path;
    }

    static std::string order(std::string const& id) {
        return "35=D|11=" + id + "|55=IBM|54=1|38=100|40=2|44=10|60=20261121-09:30:00";
    }

    /// Each line as an object of JSON.
    static std::vector<nlohmann::ordered_json> objects(std::string const& output);

    static std::vector<std::string> lines(std::string const& output) {
        std::vector<std::string> all;
        std::istringstream input(output);
        for (std::string line; std::getline(input, line);) {
            all.push_back(line);
        }
        return all;
    }

    std::string folder_;
    std::map<std::string, std::string> environment_;
    std::optional<ChildProcess> counterparty_;
};

#endif
