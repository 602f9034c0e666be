// Any conversation of a counterparty's: the session takes it without a crash, its numbers never
// fall but by a reset, what it sends is framed and numbered, and what it keeps is bounded.
#include "Demand.h"
#include "server/sessions/FixFramer.h"
#include "server/sessions/MemoryStore.h"
#include "server/sessions/QuickFixSession.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace zan::server;

class Watch : public FixSessionEvents {
public:
    void linkUp(std::string const&, std::string const&) override {}
    void linkDown() override {}
    void loggedOn(int) override {}
    void loggedOff() override {}
    void logged(std::vector<FixEntry>& entries) override {
        for (FixEntry const& entry : entries) {
            demand(entry.id > lastId, "ids rise");
            lastId = entry.id;
            bool const isOut = entry.origin != FixOrigin::remark &&
                               entry.stream != FixStream::adminIn &&
                               entry.stream != FixStream::appIn;
            if (isOut) {
                demandFramed(entry.text);
                ++sent;
            }
        }
    }
    void trouble(FixTrouble, std::string const& text) override {
        demand(!text.empty(), "a trouble has a text");
    }

    long lastId = 0;
    int sent = 0;

private:
    static void demandFramed(std::string const& text) {
        FixFramer framer;
        std::string message;
        std::string fault;
        framer.append(text.data(), text.size());
        demand(framer.next(message, fault) == FixFramer::Result::message && message == text,
               "what goes out is one whole message");
    }
};

std::string framed(std::string body) {
    for (char& each : body)
        if (each == '|')
            each = '\x01';
    std::string text = "8=FIX.4.4\x01"
                       "9=" +
                       std::to_string(body.size()) + "\x01" + body;
    unsigned sum = 0;
    for (char const each : text)
        sum += static_cast<unsigned char>(each);
    char trailer[8];
    std::snprintf(trailer, sizeof trailer, "10=%03u\x01", sum % 256);
    return text + trailer;
}

std::string now() {
    std::time_t const seconds = std::time(nullptr);
    std::tm parts = {};
    gmtime_r(&seconds, &parts);
    char text[32];
    std::strftime(text, sizeof text, "%Y%m%d-%H:%M:%S", &parts);
    return text;
}

// A line is the type and the body of a message, which gets the usual header with the next number;
// one that begins with `!` is bytes as they are.
std::string bytesOf(std::string const& line, int& number) {
    if (!line.empty() && line[0] == '!')
        return line.substr(1);
    std::string const type = line.substr(0, line.find('|'));
    std::string const rest = line.size() > type.size() ? line.substr(type.size() + 1) : "";
    return framed("35=" + type + "|34=" + std::to_string(number++) + "|49=THEM|52=" + now() +
                  "|56=US|" + rest + (rest.empty() || rest.back() == '|' ? "" : "|"));
}

FixSessionSettings settingsOver(FixSessionStore& store) {
    FixSessionSettings settings;
    settings.keys = {{"BeginString", "FIX.4.4"},
                     {"SenderCompID", "US"},
                     {"TargetCompID", "THEM"},
                     {"HeartBtInt", "30"}};
    settings.store = &store;
    return settings;
}

void drain(int socket) {
    char bytes[65536];
    while (recv(socket, bytes, sizeof bytes, MSG_DONTWAIT) > 0) {
    }
}

void feed(QuickFixSession& session, FixFramer& framer, std::string const& bytes) {
    framer.append(bytes.data(), bytes.size());
    std::vector<Incoming> incoming(1);
    while (framer.next(incoming[0].text, incoming[0].fault) != FixFramer::Result::incomplete) {
        session.take(incoming);
        incoming.assign(1, Incoming());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    int sockets[2];
    demand(socketpair(AF_UNIX, SOCK_STREAM, 0, sockets) == 0, "there is a pair of sockets");
    {
        MemoryStore store;
        Watch watch;
        SocketLink link;
        QuickFixSession session(settingsOver(store), false, watch, link);
        FixFramer framer;
        link.open(sockets[0]);
        session.attach();
        int number = 1;
        feed(session, framer, bytesOf("A|98=0|108=30", number));
        std::string const text(reinterpret_cast<char const*>(data), size);
        std::size_t lines = 0;
        for (std::size_t at = 0; at < text.size() && !link.ending() && lines < 64; ++lines) {
            std::size_t const end = std::min(text.find('\n', at), text.size());
            feed(session, framer, bytesOf(text.substr(at, end - at), number));
            for (int slice = 0; slice < 4 && session.hasMoreToResend(); ++slice)
                session.resendMore();
            std::vector<long> ids;
            session.send({{"B", {{148, "title"}}, false}}, FairLock::Clock::now(), ids);
            session.tick();
            drain(sockets[1]);
            at = end + 1;
        }
        demand(watch.sent < 64 * 1024, "answers are bounded");
        demand(session.numbers().nextOut > 0 && session.numbers().nextIn > 0,
               "numbers are positive");
        session.detach();
        link.close(false);
    }
    close(sockets[1]);
    return 0;
}
