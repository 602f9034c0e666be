// A counterparty for tests that run in another process. It stands on QuickFIX's own acceptor and
// uses nothing of the server's code, so that both cannot share a mistake.
//
// Prints `listening on 127.0.0.1:<port>`, then every message as `in <message>` or `out <message>`
// with SOH as `|`, and `logon` and `logout`. Ends on SIGTERM and SIGINT.
//
// QuickFIX binds its port on every address of the machine; connect over loopback.
#include <atomic>
#include <csignal>
#include <initializer_list>
#include <iostream>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <quickfix/DataDictionaryProvider.h>
#include <quickfix/FileStore.h>
#include <quickfix/MessageStore.h>
#include <quickfix/Session.h>
#include <quickfix/ThreadedSocketAcceptor.h>

namespace {

char const* const usage = R"(test_acceptor [options]
  --port N             port to listen on (0, the default: a free one)
  --sender ID          our id (THEM)
  --target ID          the counterparty's id (US)
  --begin-string V     protocol version (FIX.4.4)
  --store FOLDER       keep sequence numbers and messages there (in memory when not given)
  --refuse-logon TEXT  answer every Logon with a Logout that says this
  --no-reports         leave orders unanswered
  --mute               fall silent after the logon: no answers, no heartbeats
  --send MESSAGE       send this after the logon, for example "35=B|148=News|33=1|58=Text"
)";

struct Options {
    int port = 0;
    std::string sender = "THEM";
    std::string target = "US";
    std::string beginString = "FIX.4.4";
    std::string store;
    std::string refusal;
    std::string messageAfterLogon;
    bool reports = true;
    bool mute = false;
};

void print(std::string const& kind, std::string text = std::string()) {
    static std::mutex printing;
    for (char& each : text)
        if (each == '\x01')
            each = '|';
    std::lock_guard<std::mutex> lock(printing);
    std::cout << kind << (text.empty() ? "" : " ") << text << std::endl;
}

class Logs : public FIX::LogFactory, public FIX::Log {
public:
    FIX::Log* create() override { return this; }
    FIX::Log* create(FIX::SessionID const&) override { return this; }
    void destroy(FIX::Log*) override {}
    void clear() override {}
    void backup() override {}
    void onIncoming(std::string const& text) override {
        lastIn_ = text;
        print("in", text);
    }
    void onOutgoing(std::string const& text) override { print("out", text); }
    void onEvent(std::string const& text) override { std::cerr << text << std::endl; }

    // Asked on the thread that has just read the message.
    std::string const& lastIn() const { return lastIn_; }

private:
    std::string lastIn_;
};

std::string valueOf(std::string const& message, int tag) {
    std::string const key = "\x01" + std::to_string(tag) + "=";
    std::size_t const at = message.find(key);
    if (at == std::string::npos)
        return std::string();
    std::size_t const start = at + key.size();
    return message.substr(start, message.find('\x01', start) - start);
}

// The fields between header and trailer as they stand; the header of the initiators under test
// ends with TargetCompID (56) or a field that is allowed to be echoed.
std::string bodyOf(std::string const& message) {
    std::size_t const target = message.find("\x01"
                                            "56=");
    std::size_t const start = message.find('\x01', target + 1) + 1;
    std::size_t const trailer = message.rfind("\x01"
                                              "10=");
    return message.substr(start, trailer - start);
}

// Sends fields in the order given: QuickFIX sorts several fields, but leaves the value of one
// alone.
void sendFields(std::string const& type, std::string const& fields, FIX::SessionID const& id) {
    FIX::Message message;
    message.getHeader().setField(FIX::MsgType(type));
    std::size_t const equals = fields.find('=');
    message.setField(FIX::FieldBase(std::stoi(fields), fields.substr(equals + 1)));
    FIX::Session::sendToTarget(message, id);
}

class Counterparty : public FIX::Application {
public:
    Counterparty(Options const& options, Logs const& logs) : options_(options), logs_(logs) {}

    void onCreate(FIX::SessionID const&) override {}
    void onLogon(FIX::SessionID const& id) override;
    void onLogout(FIX::SessionID const&) override { print("logout"); }
    void toAdmin(FIX::Message&, FIX::SessionID const&) override {}
    void toApp(FIX::Message&, FIX::SessionID const&) throw(FIX::DoNotSend) override {}
    void fromAdmin(FIX::Message const& message,
                   FIX::SessionID const&) throw(FIX::RejectLogon) override;
    void fromApp(FIX::Message const& message,
                 FIX::SessionID const& id) throw(FIX::UnsupportedMessageType) override;

private:
    void report(std::string const& order, FIX::SessionID const& id);

    Options const& options_;
    Logs const& logs_;
    std::atomic<int> orders_{0};
};

void Counterparty::onLogon(FIX::SessionID const& id) {
    print("logon");
    if (!options_.messageAfterLogon.empty()) {
        std::string fields = options_.messageAfterLogon;
        for (char& each : fields)
            if (each == '|')
                each = '\x01';
        std::size_t const typeEnd = fields.find('\x01');
        sendFields(fields.substr(3, typeEnd - 3), fields.substr(typeEnd + 1), id);
    }
    // The link's thread stays here: nothing is read, nothing is answered, no heartbeat goes out.
    while (options_.mute)
        pause();
}

void Counterparty::fromAdmin(FIX::Message const& message,
                             FIX::SessionID const&) throw(FIX::RejectLogon) {
    bool const logon = message.getHeader().getField(FIX::FIELD::MsgType) == FIX::MsgType_Logon;
    if (logon && !options_.refusal.empty())
        throw FIX::RejectLogon(options_.refusal);
}

void Counterparty::fromApp(FIX::Message const& message,
                           FIX::SessionID const& id) throw(FIX::UnsupportedMessageType) {
    if (options_.reports &&
        message.getHeader().getField(FIX::FIELD::MsgType) == FIX::MsgType_NewOrderSingle)
        report(logs_.lastIn(), id);
}

void Counterparty::report(std::string const& order, FIX::SessionID const& id) {
    std::string const number = std::to_string(++orders_);
    std::string const quantity = valueOf(order, 38);
    std::string const filled = options_.beginString == "FIX.4.4" ? "F" : "2";
    std::string fields = "37=O-" + number + "|17=E-" + number + "|20=0|150=" + filled +
                         "|39=2|14=" + quantity + "|151=0|32=" + quantity + "|31=100|6=100|";
    for (char& each : fields)
        if (each == '|')
            each = '\x01';
    sendFields("8", fields + bodyOf(order), id);
}

FIX::DataDictionary members(std::initializer_list<int> tags) {
    FIX::DataDictionary group;
    for (int const tag : tags)
        group.addField(tag);
    return group;
}

// The groups that the tests send in orders. Without a version a dictionary knows groups but does
// not judge messages, so that unknown types and fields pass.
FIX::DataDictionaryProvider dictionaryFor(std::string const& beginString) {
    auto const dictionary = std::make_shared<FIX::DataDictionary>();
    FIX::DataDictionary parties = members({448, 447, 452, 802});
    parties.addGroup("D", 802, 523, members({523, 803}));
    dictionary->addGroup("D", 453, 448, parties);
    dictionary->addGroup("D", 78, 79, members({79, 80}));
    dictionary->addGroup("D", 454, 455, members({455, 456}));
    FIX::DataDictionaryProvider provider;
    provider.addTransportDataDictionary(FIX::BeginString(beginString), dictionary);
    return provider;
}

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

FIX::SessionSettings settingsFor(Options const& options, int port) {
    FIX::Dictionary keys;
    keys.setString("ConnectionType", "acceptor");
    keys.setString("StartTime", "00:00:00");
    keys.setString("EndTime", "00:00:00");
    keys.setString("UseDataDictionary", "N");
    keys.setString("SocketNodelay", "Y");
    keys.setInt("SocketAcceptPort", port);
    if (!options.store.empty())
        keys.setString("FileStorePath", options.store);
    FIX::SessionSettings settings;
    settings.set(FIX::SessionID(options.beginString, options.sender, options.target), keys);
    return settings;
}

std::string argument(int argc, char** argv, int& i) {
    if (i + 1 >= argc)
        throw std::runtime_error(std::string(argv[i]) + " needs a value\n" + usage);
    return argv[++i];
}

Options parse(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        std::string const name = argv[i];
        if (name == "--port")
            options.port = std::stoi(argument(argc, argv, i));
        else if (name == "--sender")
            options.sender = argument(argc, argv, i);
        else if (name == "--target")
            options.target = argument(argc, argv, i);
        else if (name == "--begin-string")
            options.beginString = argument(argc, argv, i);
        else if (name == "--store")
            options.store = argument(argc, argv, i);
        else if (name == "--refuse-logon")
            options.refusal = argument(argc, argv, i);
        else if (name == "--send")
            options.messageAfterLogon = argument(argc, argv, i);
        else if (name == "--no-reports")
            options.reports = false;
        else if (name == "--mute")
            options.mute = true;
        else
            throw std::runtime_error("unknown option " + name + "\n" + usage);
    }
    return options;
}

void serve(Options const& options, sigset_t const& ends) {
    Logs logs;
    Counterparty counterparty(options, logs);
    int const port = options.port != 0 ? options.port : freePort();
    FIX::SessionSettings const settings = settingsFor(options, port);
    std::unique_ptr<FIX::MessageStoreFactory> stores(new FIX::MemoryStoreFactory);
    if (!options.store.empty())
        stores.reset(new FIX::FileStoreFactory(options.store));
    FIX::ThreadedSocketAcceptor acceptor(counterparty, *stores, settings, logs);
    FIX::SessionID const id(options.beginString, options.sender, options.target);
    acceptor.getSession(id)->setDataDictionaryProvider(dictionaryFor(options.beginString));
    acceptor.start();
    print("listening on 127.0.0.1:" + std::to_string(port));
    int signal = 0;
    sigwait(&ends, &signal);
    if (options.mute)
        _exit(0); // the link's thread never comes back to be joined
    acceptor.stop();
}

} // namespace

int main(int argc, char** argv) {
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGTERM);
    sigaddset(&ends, SIGINT);
    pthread_sigmask(SIG_BLOCK, &ends, nullptr);
    try {
        serve(parse(argc, argv), ends);
        return 0;
    } catch (std::exception const& error) {
        std::cerr << "test_acceptor: " << error.what() << std::endl;
        return 1;
    }
}
