/// Plays a script: between an engine and a counterparty that says what the script says.
#ifndef ZANENGINE_TESTS_CONVERSATIONS_CONVERSATION_H
#define ZANENGINE_TESTS_CONVERSATIONS_CONVERSATION_H

#include "conversations/Application.h"
#include "conversations/LogCheck.h"
#include "conversations/Script.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace conversations {

class Conversation {
public:
    /// The engine's session file and its data are put into the folder.
    Conversation(Script script, std::string const& folder);

    /// Plays the script and looks whether the log tells the same. Throws `Unexpected`.
    void run();

    /// The line of the script that is played.
    int line() const { return line_; }

    /// What went over the wire until now, a line each.
    std::string transcript() const;

private:
    using Verb = void (Conversation::*)(std::string const&);
    static std::map<std::string, Verb> const& verbs();

    void play(Step const& step);
    void finish();
    void checkLog();
    void checkNotes(Application::LogTable const& rows) const;
    void checkDelivery(Application::LogTable const& rows);

    // The verbs of the application.
    void begin(std::string const& rest);
    void call(std::string const& rest);
    void expectOutcome(std::string const& rest);
    void expectDelivery(std::string const& rest);
    void expectGroups(std::string const& rest);
    void expectState(std::string const& rest);
    void expectError(std::string const& rest);

    // The verbs of the counterparty.
    void accept(std::string const& rest);
    void logOn(std::string const& rest);
    void expect(std::string const& rest);
    void expectReject(std::string const& rest);
    void expectRun(std::string const& rest);
    void expectNothing(std::string const& rest);
    void expectLinkClosed(std::string const& rest);
    void expectNoLink(std::string const& rest);
    void send(std::string const& rest);
    void sendBytes(std::string const& rest);
    void hold(std::string const& rest);
    void release(std::string const& rest);
    void setNumber(std::string const& rest);
    void finishWriting(std::string const& rest);
    void close(std::string const& rest);
    void cut(std::string const& rest);

    // What the log has to hold.
    void notLogged(std::string const& rest);
    void refused(std::string const& rest);
    void noted(std::string const& rest);

    /// Longer than anything takes that is expected, also on a busy machine.
    static constexpr std::chrono::milliseconds longestWait{10'000};

    ScriptedPeer::Got receive(std::string& message, ScriptedPeer::Patience patience);
    ScriptedPeer::Got receiveNews(std::string& message, ScriptedPeer::Patience patience,
                                  bool withHeartbeats);
    void drain();
    void write(Exchange exchange);
    void eventually(std::function<std::string()> const& fault) const;
    Exchange& lastSaid();

    Script const script_;
    Identity identity_;
    ScriptedPeer peer_;
    std::unique_ptr<Application> application_;
    std::vector<Exchange> exchanges_;
    std::vector<std::string> notes_;
    std::string lastReceived_;
    std::optional<std::string> held_;
    std::size_t delivered_ = 0;
    SeenEvent lastDelivered_;
    int number_ = 1;
    int line_ = 0;
};

} // namespace conversations

#endif
