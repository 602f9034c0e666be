#include "conversations/Conversation.h"

#include "events/ZANEngineDefs.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <set>
#include <thread>

namespace conversations {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

std::map<std::string, std::string> usualSettings() {
    return {{"ConnectionName", "C"},    {"ConnectionType", "initiator"},
            {"BeginString", "FIX.4.4"}, {"SenderCompID", "US"},
            {"TargetCompID", "THEM"},   {"StartTime", "00:00:00"},
            {"EndTime", "00:00:00"},    {"HeartBtInt", "30"},
            {"ReconnectInterval", "1"}, {"LogonTimeout", "3"},
            {"LogoutTimeout", "1"},     {"SocketConnectHost", "127.0.0.1"}};
}

std::string pathOfSessionFile(std::map<std::string, std::string> const& settings,
                              std::string const& folder, int port) {
    std::string const path = folder + "/sessions.cfg";
    std::ofstream file(path);
    file << "[SESSION]\nSocketConnectPort=" << port << '\n';
    for (auto const& [key, value] : settings) {
        file << key << '=' << value << '\n';
    }
    return path;
}

Script withUsualSettings(Script script) {
    script.settings.merge(usualSettings());
    return script;
}

// `DataDictionary=orders` is the file beside this one, with the version of the session in it.
Script withDictionary(Script script, std::string const& folder) {
    auto const dictionary = script.settings.find("DataDictionary");
    if (dictionary == script.settings.end() || dictionary->second != "orders") {
        return script;
    }
    std::ifstream input(std::string(CONVERSATIONS) + "/orders.xml");
    std::string xml{std::istreambuf_iterator<char>(input), {}};
    std::string const version = script.settings.at("BeginString");
    bool const isFixt = version == "FIXT.1.1";
    for (auto const& [mark, value] : {std::pair{"@type@", std::string("FIX")},
                                      {"@major@", isFixt ? "5" : version.substr(4, 1)},
                                      {"@minor@", isFixt ? "0" : version.substr(6, 1)}}) {
        xml.replace(xml.find(mark), std::strlen(mark), value);
    }
    dictionary->second = folder + "/orders.xml";
    std::ofstream(dictionary->second) << xml;
    return script;
}

std::map<std::string, long> const& flagNames() {
    static std::map<std::string, long> const names = {
        {"LINK_ACTIVE", FLAG_LINK_ACTIVE}, {"SESSION_ACTIVE", FLAG_SESSION_ACTIVE},
        {"LOGGED_OUT", FLAG_LOGGED_OUT},   {"DISCONNECTED", FLAG_DISCONNECTED},
        {"TIMED_OUT", FLAG_TIMED_OUT},     {"BROKEN", FLAG_BROKEN},
        {"UNREACHABLE", FLAG_UNREACHABLE}};
    return names;
}

std::string textOfFlags(long flags) {
    std::string text;
    for (auto const& [name, flag] : flagNames()) {
        text += (flags & flag) != 0 ? (text.empty() ? "" : " ") + name : "";
    }
    return text;
}

std::string messageOf(SeenEvent const& event) {
    std::string text;
    for (auto const& [tag, value] : event.fields) {
        text += std::to_string(tag) + "=" + value + '\x01';
    }
    return text;
}

} // namespace

Conversation::Conversation(Script script, std::string const& folder)
    : script_(withDictionary(withUsualSettings(std::move(script)), folder)),
      identity_{script_.settings.at("BeginString"), script_.settings.at("TargetCompID"),
                script_.settings.at("SenderCompID")},
      application_(std::make_unique<Application>(
          pathOfSessionFile(script_.settings, folder, peer_.port()))) {}

std::map<std::string, Conversation::Verb> const& Conversation::verbs() {
    using C = Conversation;
    static std::map<std::string, Verb> const verbs = {{"begin", &C::begin},
                                                      {"call", &C::call},
                                                      {"outcome", &C::expectOutcome},
                                                      {"delivered", &C::expectDelivery},
                                                      {"groups", &C::expectGroups},
                                                      {"state", &C::expectState},
                                                      {"last-error", &C::expectError},
                                                      {"accept", &C::accept},
                                                      {"logon", &C::logOn},
                                                      {"expect", &C::expect},
                                                      {"with", &C::expectRun},
                                                      {"expect-nothing", &C::expectNothing},
                                                      {"expect-link-closed", &C::expectLinkClosed},
                                                      {"expect-no-link", &C::expectNoLink},
                                                      {"send", &C::send},
                                                      {"raw", &C::sendBytes},
                                                      {"hold", &C::hold},
                                                      {"release", &C::release},
                                                      {"number", &C::setNumber},
                                                      {"half-close", &C::finishWriting},
                                                      {"close", &C::close},
                                                      {"cut", &C::cut},
                                                      {"not-logged", &C::notLogged},
                                                      {"rejected", &C::expectReject},
                                                      {"refused", &C::refused},
                                                      {"noted", &C::noted}};
    return verbs;
}

void Conversation::run() {
    for (Step const& step : script_.steps) {
        play(step);
    }
    finish();
}

void Conversation::play(Step const& step) {
    line_ = step.line;
    auto const verb = verbs().find(step.verb);
    if (verb == verbs().end()) {
        throw Unexpected("no step is called " + step.verb);
    }
    (this->*verb->second)(expanded(step.rest));
}

std::string Conversation::transcript() const {
    std::string text;
    for (Exchange const& each : exchanges_) {
        text += each.kind == Exchange::Kind::fromEngine ? "engine  " : "script  ";
        text += readable(each.text).substr(0, 1000) + "\n";
    }
    return text;
}

void Conversation::begin(std::string const& rest) {
    if (application_->isBusy()) {
        throw Unexpected("the operation before has no outcome yet");
    }
    std::string argument = rest;
    std::string const operation = takeWord(argument);
    application_->begin(operation, argument);
}

void Conversation::call(std::string const& rest) {
    begin(rest);
    expectOutcome("");
}

void Conversation::expectOutcome(std::string const& rest) {
    std::string text = rest;
    std::string const first = takeWord(text);
    std::string const outcome = application_->finish();
    bool const isRight = first.empty() ? outcome.find("Exception ") == std::string::npos
                                       : outcome.starts_with(first) &&
                                             outcome.find(text, first.size()) != std::string::npos;
    if (!isRight) {
        throw Unexpected("the operation came to \"" + outcome + "\"");
    }
}

void Conversation::eventually(std::function<std::string()> const& fault) const {
    auto const deadline = Clock::now() + longestWait;
    std::string text = fault();
    while (!text.empty()) {
        if (Clock::now() > deadline) {
            throw Unexpected(text);
        }
        std::this_thread::sleep_for(2ms);
        text = fault();
    }
}

void Conversation::expectDelivery(std::string const& rest) {
    eventually([&] {
        std::vector<SeenEvent> const events = application_->events();
        for (std::size_t i = delivered_; i < events.size(); ++i) {
            if (mismatch(messageOf(events[i]), rest).empty()) {
                lastDelivered_ = events[i];
                delivered_ = i + 1;
                return std::string();
            }
        }
        return "the listener got no such message after " + readable(messageOf(lastDelivered_));
    });
}

void Conversation::expectGroups(std::string const& rest) {
    if (lastDelivered_.groups != rest) {
        throw Unexpected("the groups are " + lastDelivered_.groups);
    }
}

void Conversation::expectState(std::string const& rest) {
    std::vector<std::string> wanted = splitFields(rest, ' ');
    std::ranges::sort(wanted);
    eventually([&] {
        std::string const flags = textOfFlags(application_->flags());
        return splitFields(flags, ' ') == wanted ? "" : "the state is " + flags;
    });
}

void Conversation::expectError(std::string const& rest) {
    eventually([&] {
        std::string const error = application_->lastError();
        bool const isRight = rest.empty() ? error.empty() : error.find(rest) != std::string::npos;
        return isRight ? "" : "the last error is \"" + error + "\"";
    });
}

// Nothing was left unsaid, and the log tells the same as the wire.
void Conversation::finish() {
    if (application_->isBusy()) {
        expectOutcome("");
    }
    if (peer_.hasLink()) {
        peer_.finishWriting();
        expectLinkClosed("");
    }
    application_->begin("disconnect", "");
    application_->finish();
    // What it said to a link that nobody took is in its log as well.
    while (peer_.accept(0ms)) {
        drain();
    }
    checkLog();
}

void Conversation::checkLog() {
    Application::LogTable const rows = application_->log();
    std::string const difference = logDifference(exchanges_, rows);
    if (!difference.empty()) {
        throw Unexpected(difference);
    }
    checkNotes(rows);
    checkDelivery(rows);
}

void Conversation::checkNotes(Application::LogTable const& rows) const {
    for (std::string const& note : notes_) {
        bool const isThere = std::ranges::any_of(rows, [&](auto const& row) {
            return row.at(2).empty() && row.at(3).find(note) != std::string::npos;
        });
        if (!isThere) {
            throw Unexpected("no note in the log holds \"" + note + "\"");
        }
    }
}

// The listener gets what is in the log, once, in its order, but not what is there for people.
void Conversation::checkDelivery(Application::LogTable const& rows) {
    std::vector<int> wanted;
    for (auto const& row : rows) {
        if (!row.at(2).empty() && row.at(3).empty()) {
            wanted.push_back(std::stoi(row[0]));
        }
    }
    eventually([&]() -> std::string {
        std::vector<int> ids;
        for (SeenEvent const& event : application_->events()) {
            if (event.kind != SeenEvent::Kind::State) {
                ids.push_back(event.id);
            }
        }
        return ids == wanted ? "" : "the listener did not get what the log holds, once each";
    });
}

void Conversation::notLogged(std::string const&) {
    lastSaid().isLogged = false;
}

void Conversation::refused(std::string const& rest) {
    lastSaid().note = rest.empty() ? "refused" : rest;
}

void Conversation::noted(std::string const& rest) {
    notes_.push_back(rest);
}

Exchange& Conversation::lastSaid() {
    auto const found =
        std::find_if(exchanges_.rbegin(), exchanges_.rend(),
                     [](Exchange const& each) { return each.kind != Exchange::Kind::fromEngine; });
    if (found == exchanges_.rend()) {
        throw Unexpected("nothing was sent yet");
    }
    return *found;
}

} // namespace conversations
