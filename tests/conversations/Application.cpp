#include "conversations/Application.h"

#include "conversations/Script.h"
#include "engine/ZANEngineProxy.h"
#include "infra/Time.h"
#include "infra/Url.h"
#include "message/ZANMessage.h"

#include <cxxabi.h>

#include <cstdlib>
#include <map>
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

ZANEngineProxy& engine() {
    return ZANEngineProxy::getInstance();
}

counted_ptr<ZANFieldGroup> modelOf(std::string const& type, std::string const& text) {
    counted_ptr<ZANFieldGroup> fields(new ZANFieldGroup(type));
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
    engine().subscribeDirect(ticket_, connection, true, true, true, recorders_.back());
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
    static std::map<std::string, std::string (Application::*)(std::string const&)> const
        operations = {{"connect", &Application::connect},
                      {"disconnect", &Application::disconnect},
                      {"resetConnection", &Application::resetConnection},
                      {"restart", &Application::restart},
                      {"pingConnection", &Application::ping},
                      {"sendMessage", &Application::send},
                      {"sendAdminMessage", &Application::sendAdmin},
                      {"sendMultipleMessages", &Application::sendBatch},
                      {"resendMessages", &Application::resend}};
    auto const found = operations.find(operation);
    if (found == operations.end()) {
        throw Unexpected("no operation is called " + operation);
    }
    return (this->*found->second)(argument);
}

std::string Application::connect(std::string const& fields) {
    fields.empty() ? engine().connect(ticket_, connection)
                   : engine().connect(ticket_, connection, modelOf("A", fields));
    return {};
}

std::string Application::disconnect(std::string const& reason) {
    engine().disconnect(ticket_, connection, reason);
    return {};
}

std::string Application::resetConnection(std::string const&) {
    engine().resetConnection(ticket_, connection);
    return {};
}

std::string Application::restart(std::string const&) {
    ZANEngineProxy::uninitialize();
    start();
    return {};
}

std::string Application::ping(std::string const& millis) {
    return engine().pingConnection(ticket_, connection, std::stol(millis)) ? "true" : "false";
}

std::string Application::send(std::string const& message) {
    return std::to_string(engine().sendMessage(ticket_, connection, messageText(message)));
}

std::string Application::sendAdmin(std::string const& message) {
    return std::to_string(engine().sendAdminMessage(ticket_, connection, messageText(message)));
}

std::string Application::sendBatch(std::string const& messages) {
    std::vector<counted_ptr<ZANMessage>> batch;
    for (std::string const& each : splitFields(messages, ' ')) {
        std::string fields = each;
        std::string const type = takeWord(fields, '|').substr(3);
        batch.push_back(counted_ptr<ZANMessage>(new ZANMessage(modelOf(type, fields))));
    }
    engine().sendMultipleMessages(ticket_, connection, batch);
    return {};
}

std::string Application::resend(std::string const& filter) {
    return std::to_string(
        engine().resendMessages(ticket_, connection, infra::Time(0), infra::Time::now(), filter));
}

long Application::flags() const {
    return engine().getConnectionState(ticket_, connection)->getState();
}

std::string Application::lastError() const {
    return engine().getConnectionState(ticket_, connection)->getLastError();
}

Application::LogTable Application::log() const {
    LogTable table;
    engine().retrieveMessageLogData(ticket_, connection, -1, "id,stream,text,note", "", "id",
                                    table);
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
