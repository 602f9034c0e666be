#include "server/engine/GuaranteedAdapter.h"

#include "errors/ZANEngineException.h"
#include "errors/ZANInvalidMessageException.h"
#include "errors/ZANPersistentStorageException.h"
#include "server/engine/EngineErrors.h"

#include <algorithm>
#include <future>
#include <utility>

namespace zan::server {

namespace {

FixStream checked(GuaranteedAdapter::Stream stream) {
    int const number = stream;
    if (number < 0 || number > static_cast<int>(FixStream::resent)) {
        fail<ZANInvalidMessageException>("stream " + std::to_string(number) +
                                         ": there is no such stream; 0 to 4 would be right");
    }
    return static_cast<FixStream>(number);
}

} // namespace

GuaranteedAdapter::GuaranteedAdapter(std::weak_ptr<Engine> engine, std::string name)
    : filter_(std::make_shared<MessageFilter>()), engine_(std::move(engine)),
      name_(std::move(name)) {}

GuaranteedAdapter::~GuaranteedAdapter() = default;

std::shared_ptr<Engine> GuaranteedAdapter::engine() const {
    std::unique_lock lock(mutex_);
    std::shared_ptr<Engine> engine = engine_.lock();
    lock.unlock();
    if (!engine) {
        throw ZANEngineException("the engine is not running");
    }
    return engine;
}

void GuaranteedAdapter::attachTo(std::weak_ptr<Engine> engine, std::string const& name) {
    {
        std::lock_guard const lock(mutex_);
        engine_ = std::move(engine);
    }
    setName(name);
}

void GuaranteedAdapter::setName(std::string const& name) {
    std::vector<std::tuple<std::string, FixStream, int>> marks;
    {
        std::lock_guard const lock(mutex_);
        if (!name_.empty() || name.empty()) {
            return;
        }
        name_ = name;
        marks = std::exchange(unnamed_, {});
    }
    for (auto const& [connection, stream, id] : marks) {
        engine()->connection(connection).log().setMark(name, stream, id);
    }
}

std::string GuaranteedAdapter::getSubscriberName() {
    std::lock_guard const lock(mutex_);
    return name_;
}

void GuaranteedAdapter::setLastConsumedMessage(std::string const& connection, int id,
                                               Stream stream) {
    FixStream const checkedStream = checked(stream);
    if (id < 0) {
        fail<ZANInvalidMessageException>("message id " + std::to_string(id) +
                                         ": the number of a message is 0 or greater");
    }
    MessageLog& log = engine()->connection(connection).log();
    std::string name;
    {
        std::lock_guard const lock(mutex_);
        if (name_.empty()) {
            unnamed_.emplace_back(connection, checkedStream, id);
            return;
        }
        name = name_;
    }
    log.setMark(name, checkedStream, id);
}

int GuaranteedAdapter::getLastConsumedMessage(std::string const& connection, Stream stream) {
    FixStream const checkedStream = checked(stream);
    std::shared_ptr<Engine> const running = engine();
    MessageLog const& log = running->connection(connection).log();
    std::lock_guard const lock(mutex_);
    if (!name_.empty()) {
        return log.mark(name_, checkedStream);
    }
    int mark = -1;
    for (auto const& [unnamedConnection, unnamedStream, id] : unnamed_) {
        if (unnamedConnection == connection && unnamedStream == checkedStream) {
            mark = std::max(mark, id);
        }
    }
    return mark;
}

void GuaranteedAdapter::resetConsumedMessages(std::string const& connection) {
    std::shared_ptr<Engine> const running = engine();
    Connection& of = running->connection(connection);
    std::string name;
    {
        std::lock_guard const lock(mutex_);
        std::erase_if(unnamed_, [&](auto const& mark) { return std::get<0>(mark) == connection; });
        name = name_;
    }
    if (!name.empty()) {
        of.history().guarded([&] { of.log().resetMarks(name); });
    }
}

void GuaranteedAdapter::flush() {
    std::shared_ptr<Engine> const running = engine();
    for (auto const& connection : running->connections()) {
        connection->history().guarded([&] { connection->log().flushMarks(); });
    }
}

void GuaranteedAdapter::setSubscriptionFilter(std::string const& filter) {
    try {
        filter_->setExpression(filter);
    } catch (BadExpression const& e) {
        fail<ZANInvalidMessageException>(e.what());
    }
}

std::string GuaranteedAdapter::getSubscriptionFilter() {
    return filter_->expression();
}

void GuaranteedAdapter::resetSubscriptionFilter() {
    filter_->setExpression({});
}

// A listener that waited here for its own thread, or for one that waits for it, would wait forever.
void GuaranteedAdapter::retrievePotentiallyLostMessages() {
    std::shared_ptr<Engine> const running = engine();
    std::vector<std::future<void>> deliveries;
    for (auto const& connection : running->connections()) {
        if (connection->subscribers().hasFilter(*filter_)) {
            deliveries.push_back(connection->redeliver(filter_));
        }
    }
    if (running->isDelivering()) {
        return;
    }
    for (std::future<void>& delivery : deliveries) {
        try {
            delivery.get();
        } catch (std::future_error const&) {
            throw ZANEngineException("the engine stopped before everything was delivered");
        } catch (LogFailure const& e) {
            fail<ZANPersistentStorageException>(e.what());
        }
    }
}

} // namespace zan::server
