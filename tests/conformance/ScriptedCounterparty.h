/// `ScriptedCounterparty`: a counterparty that answers by a script, on a thread of its own.
///
/// A script has one rule a line; empty lines and lines that begin with `#` are passed over:
///
///     on D send 8 11={11}|37=O{count}|150=2|39=2|14={38}|151=0
///     on 5 send 5
///     on 5 close
///
/// A rule says what follows a message of that type; the rules of one type follow each other. `send`
/// has a type and fields, for which header and trailer are made up. In the fields `{11}` is the
/// value of tag 11 in the message that is answered, `{=141}` its whole field where it has one,
/// `{next}` the number of the next message to send, `{count}` how many rules were followed, and
/// `{now}` the time. `close` closes the link, `cut` resets it.
#ifndef ZANENGINE_CONFORMANCE_SCRIPTEDCOUNTERPARTY_H
#define ZANENGINE_CONFORMANCE_SCRIPTEDCOUNTERPARTY_H

#include "conformance/FixText.h"
#include "conformance/ScriptedPeer.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace zan::conformance {

/// Accepts one link after the other on a loopback port. Its numbers go on from link to link; a
/// Logon that asks for a reset (141) sets them back. Threads: any.
class ScriptedCounterparty {
public:
    /// Logs on and out, answers test requests and resend requests, and fills orders.
    static std::string usualScript();

    /// Throws `std::runtime_error` for a line that is no rule.
    explicit ScriptedCounterparty(Identity identity, std::string const& script = usualScript());
    ScriptedCounterparty(ScriptedCounterparty const&) = delete;
    ScriptedCounterparty& operator=(ScriptedCounterparty const&) = delete;
    ~ScriptedCounterparty();

    int port() const;

    /// Goes on by another script. Throws as the constructor does.
    void setScript(std::string const& script);

    /// Says something of its own accord. Without a link it is said to nobody, and its number is
    /// used.
    void send(std::string const& type, std::string const& fields);
    void sendBytes(std::string const& bytes);

    /// Ends the link with a reset.
    void cut();

    /// What came in, in its order, with `|` for SOH.
    std::vector<std::string> received() const;

    /// The first message, also one that came already, that holds `part`; empty when none came in
    /// `patience`.
    std::string waitFor(std::string const& part,
                        std::chrono::milliseconds patience = std::chrono::seconds(30)) const;

private:
    struct Rule {
        std::string type;
        std::string verb;
        std::string rest;
    };
    static std::vector<Rule> rulesOf(std::string const& script);

    void run();
    void listen();
    void doWhatWasAsked();
    void ask(std::function<void()> action);
    void answer(std::string const& message);
    void follow(Rule const& rule, std::string const& message);
    void say(std::string const& type, std::string const& fields);
    std::string filledIn(std::string text, std::string const& message) const;

    Identity const identity_;
    ScriptedPeer peer_; // of the thread alone, but for its port
    int number_ = 1;
    int count_ = 0;

    mutable std::mutex mutex_;
    mutable std::condition_variable arrived_;
    std::vector<Rule> rules_;
    std::vector<std::function<void()>> asked_;
    std::vector<std::string> received_;
    bool isEnding_ = false;
    std::thread thread_;
};

} // namespace zan::conformance

#endif
