#include "conversations/Application.h"

#include "conversations/FixText.h"
#include "conversations/Script.h"
#include "engine/ZANEngineProxy.h"
#include "infra/Url.h"

#include <cxxabi.h>

#include <cstdlib>
#include <memory>
#include <typeinfo>

namespace conversations {

namespace {

std::string const connection = "C";

std::string className(std::exception const& exception) {
    int status = 0;
    std::unique_ptr<char, void (*)(void*)> const name(
        abi::__cxa_demangle(typeid(exception).name(), nullptr, nullptr, &status), std::free);
    return status == 0 ? name.get() : typeid(exception).name();
}

counted_ptr<ZANFieldGroup> logonFields(std::string const& text) {
    counted_ptr<ZANFieldGroup> fields(new ZANFieldGroup(std::string("A")));
    for (std::string const& each : splitFields(text, '|')) {
        std::size_t const sign = each.find('=');
        fields->setFieldValue(std::stoi(each), each.substr(sign + 1));
    }
    return fields;
}

// Text that holds SOH in a value has it between the fields too.
std::string messageText(std::string const& text) {
    return text.find('\x01') == std::string::npos ? text : wired(text);
}

} // namespace

Application::Application(std::string sessionFile) : sessionFile_(std::move(sessionFile)) {
    start();
}

Application::~Application() {
    if (isBusy()) {
        outcome_.wait();
    }
    ZANEngineProxy::uninitialize();
}

void Application::start() {
    ZANEngineProxy::initialize(Url("embedded:" + sessionFile_));
    recorders_.push_back(counted_ptr<IZANEventListener>(new EventRecorder));
    ZANEngineProxy::getInstance().subscribeDirect(ticket_, connection, true, true, true,
                                                  recorders_.back());
}

void Application::restart() {
    ZANEngineProxy::uninitialize();
    start();
}

void Application::begin(std::string const& operation, std::string const& argument) {
    outcome_ = std::async(std::launch::async, [=, this] {
        try {
            return call(operation, argument);
        } catch (Unexpected const&) {
            throw;
        } catch (std::exception const& e) {
            return className(e) + " " + e.what();
        }
    });
}

std::string Application::finish() {
    return outcome_.get();
}

std::string Application::call(std::string const& operation, std::string const& argument) {
    if (operation == "restart") {
        restart();
        return {};
    }
    ZANEngineProxy& engine = ZANEngineProxy::getInstance();
    if (operation == "connect") {
        argument.empty() ? engine.connect(ticket_, connection)
                         : engine.connect(ticket_, connection, logonFields(argument));
        return {};
    }
    if (operation == "disconnect") {
        engine.disconnect(ticket_, connection, argument);
        return {};
    }
    if (operation == "resetConnection") {
        engine.resetConnection(ticket_, connection);
        return {};
    }
    if (operation == "pingConnection") {
        return engine.pingConnection(ticket_, connection, std::stol(argument)) ? "true" : "false";
    }
    std::string const text = messageText(argument);
    if (operation == "sendMessage") {
        return std::to_string(engine.sendMessage(ticket_, connection, text));
    }
    if (operation == "sendAdminMessage") {
        return std::to_string(engine.sendAdminMessage(ticket_, connection, text));
    }
    if (operation == "postInternalMessage") {
        return std::to_string(engine.postInternalMessage(ticket_, connection, text));
    }
    throw Unexpected("no operation is called " + operation);
}

long Application::flags() const {
    return ZANEngineProxy::getInstance().getConnectionState(ticket_, connection)->getState();
}

std::string Application::lastError() const {
    return ZANEngineProxy::getInstance().getConnectionState(ticket_, connection)->getLastError();
}

Application::LogTable Application::log() const {
    LogTable table;
    ZANEngineProxy::getInstance().retrieveMessageLogData(ticket_, connection, -1,
                                                         "id,stream,text,note", "", "id", table);
    // The first row holds the names of the columns.
    table.erase(table.begin());
    return table;
}

std::vector<SeenEvent> Application::events() const {
    std::vector<SeenEvent> all;
    for (counted_ptr<IZANEventListener> const& each : recorders_) {
        std::vector<SeenEvent> const events = static_cast<EventRecorder&>(*each).events();
        all.insert(all.end(), events.begin(), events.end());
    }
    return all;
}

} // namespace conversations
