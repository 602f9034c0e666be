#include "conformance/FaultScript.h"

#include "conformance/FixText.h"
#include "errors/ZANCannotConnectException.h"
#include "errors/ZANConnectionUnavailableException.h"
#include "errors/ZANConnectionUnknownException.h"
#include "errors/ZANEngineException.h"
#include "errors/ZANEngineUnknownRemoteException.h"
#include "errors/ZANInvalidLogonException.h"
#include "errors/ZANInvalidMessageException.h"
#include "errors/ZANNotConnectedException.h"
#include "errors/ZANPersistentStorageException.h"
#include "errors/ZANSecurityException.h"
#include "infra/WrongConfigurationException.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

namespace zan::conformance {

namespace {

using Throw = void (*)(std::string const&);

template <class Remote>
void throwRemote(std::string const& text) {
    throw Remote(Remote().getType() + ": " + text);
}

template <class Local>
void throwLocal(std::string const& text) {
    throw Local(text);
}

std::map<std::string, Throw> const& exceptions() {
    static std::map<std::string, Throw> const exceptions = {
        {"InfraException", throwLocal<InfraException>},
        {"WrongConfigurationException", throwLocal<WrongConfigurationException>},
        {"ZANEngineException", throwLocal<ZANEngineException>},
        {"ZANCannotConnectException", throwLocal<ZANCannotConnectException>},
        {"ZANConnectionUnavailableException", throwRemote<ZANConnectionUnavailableException>},
        {"ZANConnectionUnknownException", throwRemote<ZANConnectionUnknownException>},
        {"ZANInvalidLogonException", throwRemote<ZANInvalidLogonException>},
        {"ZANInvalidMessageException", throwRemote<ZANInvalidMessageException>},
        {"ZANNotConnectedException", throwRemote<ZANNotConnectedException>},
        {"ZANPersistentStorageException", throwRemote<ZANPersistentStorageException>},
        {"ZANSecurityException", throwRemote<ZANSecurityException>},
        {"ZANEngineUnknownRemoteException", throwRemote<ZANEngineUnknownRemoteException>}};
    return exceptions;
}

[[noreturn]] void refuse(std::string const& reason) {
    throw std::invalid_argument(reason);
}

Throw findException(std::string const& name) {
    auto const found = exceptions().find(name);
    if (found != exceptions().end()) {
        return found->second;
    }
    std::string known;
    for (auto const& [each, thrower] : exceptions()) {
        known += (known.empty() ? "" : ", ") + each;
    }
    refuse("\"" + name + "\" cannot be thrown; these can: " + known);
}

int readNumber(std::string const& text) {
    int number = 0;
    char const* const end = text.data() + text.size();
    auto const [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || number <= 0) {
        refuse("\"" + text + "\" is no number; 1 or more would be right");
    }
    return number;
}

std::chrono::milliseconds readTime(std::string const& text) {
    if (!text.ends_with("ms")) {
        refuse("\"" + text + "\" is no time; 20ms would be right");
    }
    return std::chrono::milliseconds(readNumber(text.substr(0, text.size() - 2)));
}

Fault::Kind readKind(std::string const& word) {
    static std::map<std::string, Fault::Kind> const kinds = {{"throw", Fault::Kind::Throw},
                                                             {"delay", Fault::Kind::Delay},
                                                             {"drop", Fault::Kind::Drop},
                                                             {"reorder", Fault::Kind::Reorder}};
    auto const found = kinds.find(word);
    if (found == kinds.end()) {
        refuse("\"" + word + "\" is no fault; throw, delay, drop and reorder are");
    }
    return found->second;
}

Fault faultOf(std::string line) {
    Fault fault;
    fault.kind = readKind(takeWord(line));
    fault.what = takeWord(line);
    std::string const number = takeWord(line);
    fault.number = number == "*" ? 0 : readNumber(number);
    switch (fault.kind) {
    case Fault::Kind::Throw:
        fault.exception = takeWord(line);
        findException(fault.exception);
        if (fault.what == "event") {
            refuse("an event cannot throw; delay, drop and reorder are for events");
        }
        fault.text = line;
        break;
    case Fault::Kind::Delay:
        fault.time = readTime(line);
        break;
    case Fault::Kind::Reorder:
        fault.after = readNumber(line);
        if (fault.number == 0 || fault.after <= fault.number) {
            refuse("only one that comes earlier can come later: reorder " + fault.what +
                   " 2 3 would be right");
        }
        break;
    case Fault::Kind::Drop:
        break;
    }
    return fault;
}

} // namespace

FaultScript::FaultScript(std::string const& text, std::string const& name) {
    std::istringstream lines(text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        try {
            if (!line.empty() && line.front() != '#') {
                faults_.push_back(faultOf(line));
            }
        } catch (std::invalid_argument const& wrong) {
            throw WrongConfigurationException(name + ":" + std::to_string(number) + ": " +
                                              wrong.what());
        }
    }
}

FaultScript FaultScript::read(std::string const& path) {
    std::ifstream file(path);
    if (!file) {
        throw WrongConfigurationException(path + ": cannot be read; the path of a file with one "
                                                 "fault a line would be right here");
    }
    std::ostringstream text;
    text << file.rdbuf();
    return {text.str(), path};
}

std::vector<Fault> FaultScript::of(std::string const& what, int number) const {
    std::vector<Fault> found;
    std::ranges::copy_if(faults_, std::back_inserter(found), [&](Fault const& fault) {
        return fault.what == what && (fault.number == 0 || fault.number == number);
    });
    return found;
}

void throwByName(std::string const& exception, std::string const& text) {
    try {
        findException(exception)(text);
    } catch (std::invalid_argument const& wrong) {
        throw WrongConfigurationException(wrong.what());
    }
    throw std::logic_error(exception + " was not thrown");
}

} // namespace zan::conformance
