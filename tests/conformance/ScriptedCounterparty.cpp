#include "conformance/ScriptedCounterparty.h"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace zan::conformance {

namespace {

using namespace std::chrono_literals;

// How soon the thread sees what it was asked for.
constexpr std::chrono::milliseconds glance = 5ms;

} // namespace

std::string ScriptedCounterparty::usualScript() {
    return "on A send A {=141}98=0|108={108}\n"
           "on 1 send 0 112={112}\n"
           "on 2 send 4 34={7}|43=Y|122={now}|123=Y|36={next}\n"
           "on 5 send 5\n"
           "on D send 8 11={11}|37=O{count}|17=E{count}|55={55}|54={54}|38={38}|150=2|39=2|"
           "14={38}|151=0|6=0\n";
}

ScriptedCounterparty::ScriptedCounterparty(Identity identity, std::string const& script)
    : identity_(std::move(identity)), rules_(rulesOf(script)), thread_([this] { run(); }) {}

ScriptedCounterparty::~ScriptedCounterparty() {
    {
        std::lock_guard const lock(mutex_);
        isEnding_ = true;
    }
    thread_.join();
}

int ScriptedCounterparty::port() const {
    return peer_.port();
}

std::vector<ScriptedCounterparty::Rule> ScriptedCounterparty::rulesOf(std::string const& script) {
    std::vector<Rule> rules;
    std::istringstream lines(script);
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line.front() == '#') {
            continue;
        }
        std::string rest = line;
        std::string const on = takeWord(rest);
        Rule rule;
        rule.type = takeWord(rest);
        rule.verb = takeWord(rest);
        rule.rest = rest;
        bool const isKnown = rule.verb == "send" || rule.verb == "close" || rule.verb == "cut";
        if (on != "on" || !isKnown) {
            throw std::runtime_error("\"" + line + "\" is no rule; on D send 8 11={11}, " +
                                     "on 5 close or on 5 cut would be right");
        }
        rules.push_back(std::move(rule));
    }
    return rules;
}

void ScriptedCounterparty::setScript(std::string const& script) {
    std::vector<Rule> rules = rulesOf(script);
    std::lock_guard const lock(mutex_);
    rules_ = std::move(rules);
}

void ScriptedCounterparty::ask(std::function<void()> action) {
    std::lock_guard const lock(mutex_);
    asked_.push_back(std::move(action));
}

void ScriptedCounterparty::send(std::string const& type, std::string const& fields) {
    ask([this, type, fields] { say(type, fields); });
}

void ScriptedCounterparty::sendBytes(std::string const& bytes) {
    ask([this, bytes] {
        if (peer_.hasLink()) {
            peer_.write(bytes);
        }
    });
}

void ScriptedCounterparty::cut() {
    ask([this] { peer_.cut(); });
}

std::vector<std::string> ScriptedCounterparty::received() const {
    std::lock_guard const lock(mutex_);
    return received_;
}

std::string ScriptedCounterparty::waitFor(std::string const& part,
                                          std::chrono::milliseconds patience) const {
    std::unique_lock lock(mutex_);
    std::string found;
    arrived_.wait_for(lock, patience, [&] {
        auto const first = std::ranges::find_if(received_, [&](std::string const& each) {
            return each.find(part) != std::string::npos;
        });
        found = first == received_.end() ? "" : *first;
        return !found.empty();
    });
    return found;
}

void ScriptedCounterparty::run() {
    for (bool isEnding = false; !isEnding;) {
        try {
            doWhatWasAsked();
            listen();
        } catch (Unexpected const&) {
            // The engine closed the link while something was said, or sent bytes that are no
            // message: both end the link.
            peer_.close();
        }
        std::lock_guard const lock(mutex_);
        isEnding = isEnding_;
    }
}

void ScriptedCounterparty::listen() {
    if (!peer_.hasLink() && !peer_.accept(glance)) {
        return;
    }
    std::string message;
    if (peer_.next(message, glance) == ScriptedPeer::Got::message) {
        {
            std::lock_guard const lock(mutex_);
            received_.push_back(readable(message));
        }
        arrived_.notify_all();
        answer(message);
    }
}

void ScriptedCounterparty::doWhatWasAsked() {
    std::vector<std::function<void()>> asked;
    {
        std::lock_guard const lock(mutex_);
        asked.swap(asked_);
    }
    for (auto const& action : asked) {
        action();
    }
}

void ScriptedCounterparty::answer(std::string const& message) {
    std::string const type = valueOf(message, "35");
    if (type == "A" && valueOf(message, "141") == "Y") {
        number_ = 1;
    }
    std::vector<Rule> rules;
    {
        std::lock_guard const lock(mutex_);
        rules = rules_;
    }
    for (Rule const& rule : rules) {
        if (rule.type == type) {
            follow(rule, message);
        }
    }
}

void ScriptedCounterparty::follow(Rule const& rule, std::string const& message) {
    ++count_;
    if (rule.verb == "close") {
        peer_.close();
    } else if (rule.verb == "cut") {
        peer_.cut();
    } else {
        std::string fields = filledIn(rule.rest, message);
        std::string const type = takeWord(fields);
        say(type, fields);
    }
}

void ScriptedCounterparty::say(std::string const& type, std::string const& fields) {
    std::string const message = composed(identity_, number_, type, expanded(fields));
    number_ = std::max(number_, std::stoi(valueOf(message, "34")) + 1);
    if (peer_.hasLink()) {
        peer_.write(message);
    }
}

std::string ScriptedCounterparty::filledIn(std::string text, std::string const& message) const {
    for (std::size_t start = text.find('{'); start != std::string::npos;
         start = text.find('{', start + 1)) {
        std::size_t const end = text.find('}', start);
        std::string const name = text.substr(start + 1, end - start - 1);
        std::string value = "{" + name + "}";
        if (name == "next") {
            value = std::to_string(number_);
        } else if (name == "count") {
            value = std::to_string(count_);
        } else if (name.starts_with('=')) {
            std::string const whole = valueOf(message, name.substr(1));
            value = whole.empty() ? "" : name.substr(1) + "=" + whole + "|";
        } else if (std::ranges::all_of(name, [](unsigned char c) { return std::isdigit(c); })) {
            value = valueOf(message, name);
        }
        if (end != std::string::npos) {
            text.replace(start, end - start + 1, value);
        }
    }
    return text;
}

} // namespace zan::conformance
