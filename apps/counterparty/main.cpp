// zan-counterparty: a counterparty that fills orders, as a program.
#include "server/counterparty/Counterparty.h"

#include <charconv>
#include <csignal>
#include <iostream>
#include <mutex>
#include <stdexcept>
#include <string>

namespace {

char const* const usage =
    R"(zan-counterparty: acknowledges FIX orders and fills each in two parts.
An order with a price below 1 rests until it is cancelled.

  --port N           port on 127.0.0.1 (0, the default: a free one, which is printed)
  --sender ID        its own CompID (COUNTERPARTY)
  --target ID        the CompID of the client (CLIENT)
  --begin-string V   FIX.4.2 or FIX.4.4 (the default)
  --store FOLDER     keep sequence numbers, messages and ids there, so that they go on after a
                     restart
  --help             this text

Ends on SIGTERM and SIGINT, after a Logout to a client that is logged on.
)";

struct Options {
    zan::server::CounterpartySettings settings;
    bool help = false;
};

int parsePort(std::string const& text) {
    int port = -1;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (error != std::errc() || end != text.data() + text.size() || port < 0 || port > 65535)
        throw std::runtime_error("--port " + text + ": a number from 0 to 65535 is expected");
    return port;
}

void set(Options& options, std::string const& name, std::string const& value) {
    if (name == "--port")
        options.settings.port = parsePort(value);
    else if (name == "--sender")
        options.settings.sender = value;
    else if (name == "--target")
        options.settings.target = value;
    else if (name == "--begin-string")
        options.settings.beginString = value;
    else if (name == "--store")
        options.settings.store = value;
    else
        throw std::runtime_error("unknown option " + name + "; --help lists them");
}

Options parse(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; i += 2) {
        std::string const name = argv[i];
        if (name == "--help") {
            options.help = true;
            return options;
        }
        if (i + 1 == argc)
            throw std::runtime_error(name + " needs a value; --help lists the options");
        set(options, name, argv[i + 1]);
    }
    std::string const& version = options.settings.beginString;
    if (version != "FIX.4.2" && version != "FIX.4.4")
        throw std::runtime_error("--begin-string " + version + ": FIX.4.2 or FIX.4.4 is expected");
    return options;
}

void print(char direction, std::string text) {
    static std::mutex printing;
    for (char& each : text)
        if (each == '\x01')
            each = '|';
    std::lock_guard const lock(printing);
    std::cout << direction << ' ' << text << std::endl;
}

void run(Options const& options, sigset_t const& ends) {
    zan::server::Counterparty counterparty(options.settings, print);
    std::cout << "listening on 127.0.0.1:" << counterparty.port() << std::endl;
    int signal = 0;
    sigwait(&ends, &signal);
    counterparty.logOut("the counterparty ends");
}

} // namespace

int main(int argc, char** argv) {
    // Blocked before there are threads, so that only sigwait gets them.
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGTERM);
    sigaddset(&ends, SIGINT);
    pthread_sigmask(SIG_BLOCK, &ends, nullptr);
    try {
        Options const options = parse(argc, argv);
        if (options.help)
            std::cout << usage;
        else
            run(options, ends);
        return 0;
    } catch (std::exception const& error) {
        std::cerr << "zan-counterparty: " << error.what() << std::endl;
        return 1;
    }
}
