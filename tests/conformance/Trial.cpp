#include "conformance/Trial.h"

#include "conformance/FixText.h"
#include "errors/ZANCannotConnectException.h"
#include "infra/Time.h"

#include <atomic>
#include <thread>
#include <utility>

namespace zan::conformance {

void Trial::SetUp() {
    context_ = make_();
    for (Ability const each : promise_.needs) {
        if (!has(each)) {
            GTEST_SKIP() << "the adapter has no ability " << nameOf(each);
        }
    }
    context_->start();
    name_ = context_->connection();
}

void Trial::TearDown() {
    ZANEngineProxy::uninitialize();
    recorders_.clear();
    context_.reset();
}

void Trial::restart() {
    ZANEngineProxy::uninitialize();
    context_->start();
}

void Trial::connect() {
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(3);
    while (true) {
        try {
            engine().connect(me, name_);
            return;
        } catch (ZANCannotConnectException const&) {
            if (std::chrono::steady_clock::now() > deadline) {
                throw;
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

std::string Trial::newId(std::string const& prefix) {
    static std::atomic<int> count{0};
    return prefix + std::to_string(infra::Time::now().getMillis()) + "-" + std::to_string(++count);
}

counted_ptr<ZANMessage> Trial::orderModel(std::string const& id) {
    counted_ptr<ZANFieldGroup> const body(new ZANFieldGroup);
    for (std::string const& field : splitFields(order(id), '|')) {
        body->setFieldValue(std::stoi(field), field.substr(field.find('=') + 1));
    }
    return counted_ptr<ZANMessage>(new ZANMessage(body));
}

EventRecorder& Trial::keep(EventRecorder* recorder) {
    recorder->patience = context_->patience();
    recorders_.push_back(counted_ptr<IZANEventListener>(recorder));
    return *recorder;
}

EventRecorder& Trial::listen(std::string const& type) {
    EventRecorder& recorder = keep(new EventRecorder);
    engine().subscribe(me, recorders_.back(), name_, type);
    return recorder;
}

EventRecorder& Trial::record(std::function<void()> onEvent) {
    EventRecorder& recorder = keep(new EventRecorder);
    recorder.onEvent(std::move(onEvent));
    engine().subscribeDirect(me, name_, true, true, true, recorders_.back());
    return recorder;
}

bool Trial::waitForOrder(EventRecorder& recorder, std::string const& id, long number) {
    return recorder.waitFor(
        [&](SeenEvent const& event) { return event.field(11) == id && event.id == number; });
}

bool Trial::eventually(std::function<bool()> const& test) {
    auto const deadline = std::chrono::steady_clock::now() + context_->patience();
    while (!test()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

std::string fieldOf(counted_ptr<ZANMessage> const& message, int tag) {
    auto const field = message->getFieldGroup()->getField(tag);
    return field ? field->getValue().asString() : std::string();
}

std::string fieldsOf(Messages const& messages, int tag) {
    std::string text;
    for (counted_ptr<ZANMessage> const& message : messages) {
        text += (text.empty() ? "" : " ") + fieldOf(message, tag);
    }
    return text;
}

} // namespace zan::conformance
