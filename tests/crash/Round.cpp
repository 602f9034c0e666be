#include "crash/Round.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <utility>

namespace crash {

namespace {

std::size_t socketsOf(pid_t process) {
    std::size_t count = 0;
    std::error_code gone;
    std::filesystem::path const folder = "/proc/" + std::to_string(process) + "/fd";
    for (auto const& each : std::filesystem::directory_iterator(folder, gone)) {
        count += std::filesystem::read_symlink(each, gone).string().rfind("socket:", 0) == 0;
    }
    return count;
}

// Links that nobody has accepted yet: what the system's table tells of a port that listens.
bool hasWaiting(int port) {
    std::ifstream table("/proc/net/tcp");
    std::string line;
    while (std::getline(table, line)) {
        unsigned local = 0;
        unsigned state = 0;
        unsigned waiting = 0;
        unsigned const listens = 10;
        if (std::sscanf(line.c_str(), " %*u: %*x:%x %*x:%*x %x %*x:%x", &local, &state, &waiting) ==
                3 &&
            state == listens && local == static_cast<unsigned>(port)) {
            return waiting > 0;
        }
    }
    return false;
}

} // namespace

Round::Round(RoundSettings settings) : settings_(std::move(settings)), random_(settings_.seed) {
    std::string pattern = (std::filesystem::temp_directory_path() / "zan-crash-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
}

Round::~Round() {
    counterparty_.reset();
    std::error_code ignored;
    // What was wrong can be looked at.
    if (report_.isGood()) {
        std::filesystem::remove_all(folder_, ignored);
    }
}

Report Round::run() {
    startCounterparty();
    for (int i = 0; i < settings_.kills; ++i) {
        kill(i % 5 == 4);
        lookAtLog();
    }
    finish();
    if (!report_.isGood()) {
        report_.fault("rounds with faults", "durability " + settings_.durability + ", seed " +
                                                std::to_string(settings_.seed) + ", in " + folder_);
    }
    return report_;
}

void Round::startCounterparty() {
    std::string const store = folder_ + "/theirs";
    std::filesystem::create_directories(store);
    counterparty_.emplace(CRASH_COUNTERPARTY,
                          std::vector<std::string>{"--store", store, "--journal",
                                                   folder_ + "/journal", "--report-every", "2000",
                                                   "--give-up", "2000"});
    std::string const line = counterparty_->waitForLine("listening on");
    if (line.empty()) {
        throw std::runtime_error("the counterparty does not start");
    }
    port_ = std::stoi(line.substr(line.rfind(':') + 1));
    idleSockets_ = socketsOf(counterparty_->pid());
    writeSessionFile();
}

// QuickFIX lets a link whose Logon it has read wait for seconds while another link has the session:
// the reset that a dead process has asked for would come after the Logon of the next one.
void Round::waitForDeadLinks() {
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (hasWaiting(port_) || socketsOf(counterparty_->pid()) > idleSockets_) {
        if (std::chrono::steady_clock::now() > deadline) {
            report_.fault("dead links that the counterparty keeps", "run " + std::to_string(runs_));
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

void Round::writeSessionFile() const {
    std::ofstream(folder_ + "/sessions.cfg")
        << "[SESSION]\nConnectionName=C\nConnectionType=initiator\nBeginString=FIX.4.4\n"
           "SenderCompID=US\nTargetCompID=THEM\nStartTime=00:00:00\nEndTime=00:00:00\n"
           "HeartBtInt=10\nReconnectInterval=1\nLogonTimeout=5\nSocketNodelay=Y\n"
           "SocketConnectHost=127.0.0.1\nSocketConnectPort="
        << port_ << "\nDurability=" << settings_.durability << "\n";
}

std::string Round::url() const {
    return "embedded:" + folder_ + "/sessions.cfg?data=" + folder_ + "/data&client=books";
}

void Round::sleepUpTo(int millis, int least) {
    std::uniform_int_distribution<int> micros(least * 1000, millis * 1000);
    std::this_thread::sleep_for(std::chrono::microseconds(micros(random_)));
}

void Round::kill(bool isEarly) {
    std::string const run = std::to_string(++runs_);
    ChildProcess program(CRASH_PROGRAM,
                         {settings_.resets ? "resets" : "load", url(), folder_, run});
    if (isEarly) {
        sleepUpTo(60);
    } else if (program.waitForLine("logged on").empty()) {
        report_.fault("programs that do not log on", "run " + run);
    } else {
        sleepUpTo(300, 5);
    }
    program.end(SIGKILL);
    if (settings_.resets) {
        waitForDeadLinks();
    }
    ++report_.kills;
    report_.early += program.lines().empty() ? 1 : 0;
    for (std::string const& line : program.lines()) {
        if (line != "logged on") {
            report_.fault("programs that say more than they should", "run " + run + ": " + line);
        }
    }
}

// In a copy, so that the program itself finds what the kill has left.
void Round::lookAtLog() {
    std::string const copy = folder_ + "/copy";
    if (!std::filesystem::exists(folder_ + "/data")) {
        return;
    }
    std::filesystem::copy(folder_ + "/data", copy);
    ++report_.underLog;
    Evidence const found = evidence(copy);
    Check(found, report_).afterKill();
    std::filesystem::remove_all(copy);
}

void Round::finish() {
    counterparty_->sendSignal(SIGUSR1);
    counterparty_->waitForLine("quiet");
    std::string const run = std::to_string(++runs_);
    {
        ChildProcess program(CRASH_PROGRAM, {"finish", url(), folder_, run});
        bool isDone = false;
        for (int patience = 0; patience < 6 && !isDone; ++patience) {
            isDone = !program.waitForLine("done").empty();
        }
        if (!isDone) {
            report_.fault("programs that do not come to an end", "run " + run);
        }
        for (std::string const& line : program.lines()) {
            if (line != "logged on" && line != "done") {
                report_.fault("programs that say more than they should",
                              "run " + run + ": " + line);
            }
        }
    }
    counterparty_.reset();
    Evidence const found = evidence(folder_ + "/data");
    Check(found, report_).atTheEnd();
}

Evidence Round::evidence(std::string const& dataFolder) const {
    Evidence found;
    // The others first: the log may know more than they, never less.
    found.journal = readJournal(folder_ + "/journal");
    for (int run = 1; run <= runs_; ++run) {
        std::string const number = std::to_string(run);
        found.acknowledged.push_back(readAcknowledged(folder_ + "/acknowledged." + number));
        found.consumed.push_back(readConsumed(folder_ + "/consumed." + number));
    }
    found.mayReset = settings_.resets;
    found.log = readLog(folder_ + "/sessions.cfg", dataFolder);
    return found;
}

} // namespace crash
