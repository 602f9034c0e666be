// A counterparty that stays alive while the program under test is killed. It stands on QuickFIX's
// own acceptor and file store and uses nothing of the server's code.
//
// Each order gets a report; more reports go out on their own, whether anybody is logged on or not.
// Everything is written down in the journal, one line each, before it goes on:
//   raw <message>       an order as it came over the link
//   taken <ClOrdID>     the session has accepted an order
//   sent <message>      a report, when it got its number
//   logon <message>     a Logon as it came over the link
//   event <text>        what the session says
// with SOH as `|`. Prints `listening on 127.0.0.1:<port>` and ends on SIGTERM. SIGUSR1 stops the
// reports that come on their own, SIGUSR2 starts them again; both are answered by a line.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <fstream>
#include <iostream>
#include <limits>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <quickfix/FileStore.h>
#include <quickfix/Session.h>
#include <quickfix/ThreadedSocketAcceptor.h>

namespace {

char const* const usage = R"(crash_counterparty --store FOLDER --journal FILE [options]
  --port N              port to listen on (0, the default: a free one)
  --report-every MICROS pause between reports that come on their own (0, the default: none come)
  --burst N             how many such reports come at once (1)
  --most N              how many such reports come at all (no end)
  --no-answers          orders get no reports
  --give-up MILLIS      end a link that takes nothing for so long (the system's own patience)
)";

class Journal : public FIX::LogFactory, public FIX::Log {
public:
    explicit Journal(std::string const& path) : file_(path, std::ios::app) {
        if (!file_)
            throw std::runtime_error("cannot write " + path);
    }

    void note(char const* kind, std::string text) {
        for (char& each : text)
            if (each == '\x01')
                each = '|';
        std::lock_guard<std::mutex> lock(mutex_);
        file_ << kind << ' ' << text << std::endl;
    }

    FIX::Log* create() override { return this; }
    FIX::Log* create(FIX::SessionID const&) override { return this; }
    void destroy(FIX::Log*) override {}
    void clear() override {}
    void backup() override {}
    void onIncoming(std::string const& text) override {
        if (text.find("\x01"
                      "35=D\x01") != std::string::npos)
            note("raw", text);
        else if (text.find("\x01"
                           "35=A\x01") != std::string::npos)
            note("logon", text);
    }
    void onOutgoing(std::string const&) override {}
    void onEvent(std::string const& text) override { note("event", text); }

private:
    std::mutex mutex_;
    std::ofstream file_;
};

class Counterparty : public FIX::Application {
public:
    Counterparty(Journal& journal, bool answers) : journal_(journal), answers_(answers) {}

    void onCreate(FIX::SessionID const&) override {}
    void onLogon(FIX::SessionID const&) override {}
    void onLogout(FIX::SessionID const&) override {}
    void toAdmin(FIX::Message&, FIX::SessionID const&) override {}
    void toApp(FIX::Message& message, FIX::SessionID const&) throw(FIX::DoNotSend) override {
        if (!message.getHeader().isSetField(FIX::FIELD::PossDupFlag))
            journal_.note("sent", message.toString());
    }
    void fromAdmin(FIX::Message const&, FIX::SessionID const&) throw(FIX::RejectLogon) override {}
    void fromApp(FIX::Message const& message,
                 FIX::SessionID const& id) throw(FIX::UnsupportedMessageType) override {
        if (message.getHeader().getField(FIX::FIELD::MsgType) != "D")
            return;
        // What it has already, and says so.
        if (message.getHeader().isSetField(FIX::FIELD::PossResend))
            return;
        std::string const order = message.getField(FIX::FIELD::ClOrdID);
        journal_.note("taken", order);
        if (answers_)
            report("E-" + order, order, id);
    }

    void report(std::string const& execution, std::string const& order,
                FIX::SessionID const& id) const {
        FIX::Message report;
        report.getHeader().setField(FIX::MsgType("8"));
        report.setField(37, "O-" + execution);
        report.setField(17, execution);
        report.setField(11, order);
        report.setField(150, "F");
        report.setField(39, "2");
        report.setField(55, "IBM");
        report.setField(54, "1");
        report.setField(58, "filled " + execution);
        FIX::Session::sendToTarget(report, id);
    }

private:
    Journal& journal_;
    bool const answers_;
};

struct Pace {
    int micros;
    int burst;
    int most;
};

// Sends reports that nobody asked for, while it is on.
class Ticker {
public:
    Ticker(Counterparty& counterparty, FIX::SessionID const& id, Pace const& pace)
        : counterparty_(counterparty), id_(id), pace_(pace), on_(pace.micros > 0),
          thread_([this] { run(); }) {}
    ~Ticker() {
        ending_ = true;
        thread_.join();
    }

    // Nothing is sent any more when `turn(false)` returns.
    void turn(bool on) {
        std::lock_guard<std::mutex> lock(mutex_);
        on_ = on;
    }

private:
    void run() {
        while (!ending_) {
            {
                std::lock_guard<std::mutex> lock(mutex_);
                for (int i = 0; on_ && i < pace_.burst && count_ < pace_.most; ++i, ++count_)
                    counterparty_.report("U-" + std::to_string(count_), "none", id_);
            }
            std::this_thread::sleep_for(std::chrono::microseconds(std::max(pace_.micros, 100)));
        }
    }

    Counterparty& counterparty_;
    FIX::SessionID const id_;
    Pace const pace_;
    int count_ = 0;
    std::mutex mutex_;
    bool on_;
    std::atomic<bool> ending_{false};
    std::thread thread_;
};

int freePort() {
    int const probe = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_ANY);
    socklen_t size = sizeof address;
    bind(probe, reinterpret_cast<sockaddr*>(&address), size);
    getsockname(probe, reinterpret_cast<sockaddr*>(&address), &size);
    close(probe);
    return ntohs(address.sin_port);
}

// Where both sides of a link were blocked when the other one was killed, the system may go on
// trying for minutes. The links of the acceptor inherit this from its listening socket, which
// QuickFIX does not show.
void giveUpAfter(int millis) {
    int const highestDescriptor = 64;
    for (int descriptor = 0; descriptor < highestDescriptor; ++descriptor) {
        int listens = 0;
        socklen_t size = sizeof listens;
        if (getsockopt(descriptor, SOL_SOCKET, SO_ACCEPTCONN, &listens, &size) == 0 && listens != 0)
            setsockopt(descriptor, IPPROTO_TCP, TCP_USER_TIMEOUT, &millis, sizeof millis);
    }
}

using Options = std::map<std::string, std::string>;

int numberOr(Options const& options, std::string const& name, int otherwise) {
    auto const found = options.find(name);
    return found == options.end() ? otherwise : std::stoi(found->second);
}

Options parse(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        std::string const name = argv[i];
        bool const isFlag = name == "--no-answers";
        if (!isFlag && i + 1 == argc)
            throw std::runtime_error(name + " needs a value\n" + usage);
        options[name] = isFlag ? "" : argv[++i];
    }
    if (options.count("--store") == 0 || options.count("--journal") == 0)
        throw std::runtime_error(usage);
    return options;
}

FIX::SessionSettings settingsFor(Options const& options, FIX::SessionID const& id, int port) {
    FIX::Dictionary keys;
    keys.setString("ConnectionType", "acceptor");
    keys.setString("StartTime", "00:00:00");
    keys.setString("EndTime", "00:00:00");
    keys.setString("UseDataDictionary", "N");
    keys.setString("SocketNodelay", "Y");
    keys.setInt("SocketAcceptPort", port);
    keys.setString("FileStorePath", options.at("--store"));
    FIX::SessionSettings settings;
    settings.set(id, keys);
    return settings;
}

void say(std::string const& text) {
    std::cout << text << std::endl;
}

void serve(Options const& options, sigset_t const& signals) {
    FIX::SessionID const id("FIX.4.4", "THEM", "US");
    Journal journal(options.at("--journal"));
    Counterparty counterparty(journal, options.count("--no-answers") == 0);
    int const asked = numberOr(options, "--port", 0);
    int const port = asked != 0 ? asked : freePort();
    FIX::FileStoreFactory stores(options.at("--store"));
    FIX::ThreadedSocketAcceptor acceptor(counterparty, stores, settingsFor(options, id, port),
                                         journal);
    acceptor.start();
    giveUpAfter(numberOr(options, "--give-up", 0));
    say("listening on 127.0.0.1:" + std::to_string(port));
    Ticker ticker(counterparty, id,
                  {numberOr(options, "--report-every", 0), numberOr(options, "--burst", 1),
                   numberOr(options, "--most", std::numeric_limits<int>::max())});
    int signal = 0;
    while (sigwait(&signals, &signal) == 0 && signal != SIGTERM) {
        ticker.turn(signal == SIGUSR2);
        say(signal == SIGUSR2 ? "reporting" : "quiet");
    }
    ticker.turn(false);
    acceptor.stop(true);
}

} // namespace

int main(int argc, char** argv) {
    sigset_t signals;
    sigemptyset(&signals);
    for (int const each : {SIGTERM, SIGUSR1, SIGUSR2})
        sigaddset(&signals, each);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    try {
        serve(parse(argc, argv), signals);
        return 0;
    } catch (std::exception const& error) {
        std::cerr << "crash_counterparty: " << error.what() << std::endl;
        return 1;
    }
}
