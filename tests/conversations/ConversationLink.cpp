// The steps of the counterparty.
#include "conversations/Conversation.h"

#include <algorithm>

namespace conversations {

namespace {

using namespace std::chrono_literals;

// Heartbeats come when time passes; only those that answer a test request are news.
bool isPlainHeartbeat(std::string const& message) {
    return valueOf(message, "35") == "0" && valueOf(message, "112").empty();
}

} // namespace

void Conversation::accept(std::string const&) {
    if (!peer_.accept(longestWait)) {
        throw Unexpected("the engine does not connect");
    }
}

void Conversation::logOn(std::string const& rest) {
    begin("connect");
    accept("");
    expect("A");
    std::string const version = valueOf(lastReceived_, "1137");
    send("A 98=0|108=" + script_.settings.at("HeartBtInt") + (rest.empty() ? "" : "|") + rest +
         (version.empty() ? "" : "|1137=" + version));
    expectOutcome("");
}

ScriptedPeer::Got Conversation::receive(std::string& message, ScriptedPeer::Patience patience) {
    ScriptedPeer::Got const got = peer_.next(message, patience);
    if (got == ScriptedPeer::Got::message) {
        exchanges_.push_back({Exchange::Kind::fromEngine, message, true, ""});
    }
    return got;
}

ScriptedPeer::Got Conversation::receiveNews(std::string& message, ScriptedPeer::Patience patience,
                                            bool withHeartbeats) {
    auto const deadline = std::chrono::steady_clock::now() + patience;
    ScriptedPeer::Got got = ScriptedPeer::Got::message;
    do {
        auto const left = std::chrono::duration_cast<ScriptedPeer::Patience>(
            deadline - std::chrono::steady_clock::now());
        got = receive(message, std::max(left, 0ms));
    } while (got == ScriptedPeer::Got::message && !withHeartbeats && isPlainHeartbeat(message));
    return got;
}

void Conversation::drain() {
    std::string message;
    peer_.finishWriting();
    while (receive(message, 1s) == ScriptedPeer::Got::message) {
    }
}

void Conversation::expect(std::string const& rest) {
    switch (receiveNews(lastReceived_, longestWait, rest.starts_with("0"))) {
    case ScriptedPeer::Got::end:
        throw Unexpected("the engine closed the link");
    case ScriptedPeer::Got::nothing:
        throw Unexpected("the engine sent nothing");
    case ScriptedPeer::Got::message:
        break;
    }
    std::string const fault = mismatch(lastReceived_, rest);
    if (!fault.empty()) {
        throw Unexpected(fault + " in " + readable(lastReceived_));
    }
}

// A Reject as each version tells it: number, reason and tag of the message, then the words.
void Conversation::expectReject(std::string const& rest) {
    std::string text = rest;
    std::string const number = takeWord(text);
    std::string const reason = takeWord(text);
    std::string const tag = takeWord(text);
    std::string const& version = script_.settings.at("BeginString");
    if (reason == "unsupported") {
        expect((version < "FIX.4.2" ? "3 45=" : "j 380=3|372=*|45=") + number + "|58~" + text);
        return;
    }
    std::string wanted = "3 45=" + number + "|58~" + text;
    if (version < "FIX.4.2") {
        wanted += (tag == "-" ? "" : " (" + tag + ")") + "|!371|!372|!373";
    } else {
        wanted += tag == "-" ? "|!371" : "|371=" + tag;
        bool const isTold = version > "FIX.4.2" || std::stoi(reason) <= 11;
        wanted += "|372=*|" + (isTold ? "373=" + reason : "!373");
    }
    expect(wanted);
}

void Conversation::expectRun(std::string const& rest) {
    if (("|" + readable(lastReceived_)).find("|" + readable(rest) + "|") == std::string::npos) {
        throw Unexpected("the fields do not stand so in " + readable(lastReceived_));
    }
}

void Conversation::expectNothing(std::string const& rest) {
    std::string message;
    switch (receiveNews(message, ScriptedPeer::Patience(std::stol(rest)), false)) {
    case ScriptedPeer::Got::end:
        throw Unexpected("the engine closed the link");
    case ScriptedPeer::Got::message:
        throw Unexpected("the engine sent " + readable(message));
    case ScriptedPeer::Got::nothing:
        break;
    }
}

void Conversation::expectLinkClosed(std::string const&) {
    std::string message;
    switch (receiveNews(message, longestWait, false)) {
    case ScriptedPeer::Got::message:
        throw Unexpected("the engine sent " + readable(message));
    case ScriptedPeer::Got::nothing:
        throw Unexpected("the link is open");
    case ScriptedPeer::Got::end:
        break;
    }
}

void Conversation::expectNoLink(std::string const& rest) {
    if (peer_.accept(ScriptedPeer::Patience(std::stol(rest)))) {
        throw Unexpected("the engine connects");
    }
}

void Conversation::send(std::string const& rest) {
    std::string fields = rest;
    std::string const type = takeWord(fields);
    std::string const message = composed(identity_, number_, type, fields);
    std::string const number = valueOf(message, "34");
    bool const isCounted = !number.empty() && number.size() < 10;
    if (isCounted && number.find_first_not_of("0123456789") == std::string::npos) {
        number_ = std::max(number_, std::stoi(number) + 1);
    }
    write({Exchange::Kind::fromPeer, message, true, ""});
}

void Conversation::sendBytes(std::string const& rest) {
    write({Exchange::Kind::bytesFromPeer, wired(rest), true, ""});
}

void Conversation::write(Exchange exchange) {
    if (held_) {
        held_->append(exchange.text);
    } else {
        peer_.write(exchange.text);
    }
    exchanges_.push_back(std::move(exchange));
}

void Conversation::hold(std::string const&) {
    held_.emplace();
}

void Conversation::release(std::string const& rest) {
    if (!held_) {
        throw Unexpected("nothing is held");
    }
    std::string const bytes = *held_;
    held_.reset();
    std::size_t const count = rest.empty() ? bytes.size() : std::stoul(rest);
    for (std::size_t start = 0; start < bytes.size(); start += count) {
        peer_.write(bytes.substr(start, count));
    }
}

void Conversation::setNumber(std::string const& rest) {
    number_ = std::stoi(rest);
}

void Conversation::finishWriting(std::string const&) {
    peer_.finishWriting();
}

void Conversation::close(std::string const&) {
    drain();
    peer_.close();
}

void Conversation::cut(std::string const&) {
    peer_.cut();
}

} // namespace conversations
