#include "apps/zan/Session.h"

#include "apps/zan/ExitCodes.h"
#include "infra/Url.h"
#include "infra/WrongConfigurationException.h"

#include <exception>
#include <iostream>

namespace zan::cli {

namespace {

Url urlOf(Settings const& settings) {
    if (settings.url.empty()) {
        throw WrongConfigurationException(
            "there is no URL of an engine; --url, ZAN_URL or a line url = ... in " +
            settings.configFile + " would be right, for example embedded:demo");
    }
    try {
        return {settings.url};
    } catch (InfraException const& failure) {
        throw WrongConfigurationException("the URL of " + settings.urlFrom +
                                          " is none: " + failure.getMessage());
    }
}

// An engine in this process does what the command says, nothing by itself. What the URL says itself
// goes before that.
Url withDefaults(Url const& url, std::string text, Purpose purpose) {
    auto const add = [&](std::string const& parameter) {
        if (url.getParameter(parameter, "").empty()) {
            text += (text.find('?') == std::string::npos ? "?" : "&") + parameter + "=no";
        }
    };
    add("connect");
    if (purpose == Purpose::Reads) {
        add("create");
    }
    return {text};
}

} // namespace

Session::Session(Settings const& settings, Interrupt& interrupt, Purpose purpose)
    : interrupt_(interrupt), ticket_(settings.user, settings.secret) {
    Url const url = urlOf(settings);
    isInProcess_ = url.getProtocol() == "embedded";
    ZANEngineProxy::initialize(isInProcess_ ? withDefaults(url, settings.url, purpose) : url);
}

Session::~Session() {
    try {
        close();
    } catch (std::exception const& failure) {
        std::cerr << "zan: the engine did not end in order: " << lineOf(failure) << std::endl;
    }
}

void Session::close() {
    if (ZANEngineProxy::isInitialized()) {
        ZANEngineProxy::uninitialize();
    }
}

std::vector<std::string> Session::names() const {
    std::vector<std::string> names;
    engine().getConnectionNameList(ticket_, names);
    return names;
}

std::string Session::nameOr(std::string const& given) const {
    if (!given.empty()) {
        return given;
    }
    std::vector<std::string> const all = names();
    if (all.size() == 1) {
        return all.front();
    }
    std::string list;
    for (std::string const& name : all) {
        list += (list.empty() ? "" : ", ") + name;
    }
    throw UsageError("which connection? " +
                     (list.empty() ? "The engine has none" : "One of " + list + " would be right"));
}

std::vector<std::string> Session::namesOr(std::string const& given) const {
    return given.empty() ? names() : std::vector{given};
}

void Session::connect(std::string const& name, counted_ptr<ZANFieldGroup> const& fields) {
    interrupt_.guard(
        [&] {
            if (engine().isConnected(ticket_, name)) {
                return;
            }
            fields ? engine().connect(ticket_, name, fields) : engine().connect(ticket_, name);
        },
        [&] { engine().disconnect(ticket_, name, "interrupted"); });
    interrupt_.check();
}

} // namespace zan::cli
