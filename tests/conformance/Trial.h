/// `Trial`: one promise put to one adapter, and what the checks of all promises share.
#ifndef ZANENGINE_CONFORMANCE_TRIAL_H
#define ZANENGINE_CONFORMANCE_TRIAL_H

#include "conformance/ConformanceContext.h"
#include "conformance/EventRecorder.h"
#include "engine/ZANEngineProxy.h"
#include "errors/ZANEngineRemoteException.h"
#include "events/ZANEngineDefs.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace zan::conformance {

using Messages = std::vector<counted_ptr<ZANMessage>>;
using Table = std::vector<std::vector<std::string>>;

class Trial;

/// What is promised, and how it is checked.
struct Promise {
    // The standard's source location is not there with every compiler that this is built with.
    Promise(char const* itsGroup, char const* itsName, std::vector<Ability> itsNeeds,
            void (*itsCheck)(Trial&), char const* itsFile = __builtin_FILE(),
            int itsLine = __builtin_LINE())
        : group(itsGroup), name(itsName), needs(std::move(itsNeeds)), check(itsCheck),
          file(itsFile), line(itsLine) {}

    char const* group;
    char const* name;
    std::vector<Ability> needs;
    void (*check)(Trial&);
    char const* file;
    int line;
};

using Promises = std::vector<Promise>;

/// Starts the adapter, unless an ability is missing, and ends it after the check.
class Trial : public testing::Test {
public:
    Trial(Promise const& promise, MakeContext const& make) : promise_(promise), make_(make) {}

    static ZANEngineProxy& engine() { return ZANEngineProxy::getInstance(); }

    ConformanceContext& context() { return *context_; }
    bool has(Ability ability) const { return context_->abilities().has(ability); }
    std::string const& name() const { return name_; }

    /// Logs the tested connection on. A counterparty that has just been logged out may need a
    /// moment before it takes the next link.
    void connect();
    void disconnect() { engine().disconnect(me, name_, "end of the test"); }

    bool isConnected() const { return engine().isConnected(me, name_); }

    /// Ends the adapter and starts it again on what it left.
    void restart();

    /// An id that no message of the log has yet.
    std::string newId(std::string const& prefix = "k");

    /// Sends an order of this id.
    long send(std::string const& id) { return engine().sendMessage(me, name_, order(id)); }
    std::string order(std::string const& id) { return context_->order(id); }

    /// The same order as a model of its own.
    counted_ptr<ZANMessage> orderModel(std::string const& id);

    /// A listener of the facade, for application messages.
    EventRecorder& listen(std::string const& type = ZANEngineDefs::APP_EVENT_TYPE);

    /// A listener straight at the adapter, for events of all kinds. `onEvent` runs with each.
    EventRecorder& record(std::function<void()> onEvent = nullptr);

    /// True when an event of this ClOrdID and number has come, or comes in time.
    bool waitForOrder(EventRecorder& recorder, std::string const& id, long number);

    /// True as soon as `test` is, within the context's patience.
    bool eventually(std::function<bool()> const& test);

    static inline UserTicket const me{"conformance", ""};

protected:
    void SetUp() override;
    void TearDown() override;
    void TestBody() override { promise_.check(*this); }

private:
    EventRecorder& keep(EventRecorder* recorder);

    Promise const& promise_;
    MakeContext const& make_;
    std::unique_ptr<ConformanceContext> context_;
    std::string name_;
    std::vector<counted_ptr<IZANEventListener>> recorders_;
};

/// The message of the exception of class `Failure` that `call` throws; what happened otherwise.
template <class Failure, class Call>
std::string failureOf(Call call) {
    try {
        call();
    } catch (Failure const& e) {
        return e.getMessage();
    } catch (std::exception const& e) {
        return std::string("an exception of another class: ") + e.what();
    }
    return "no exception";
}

/// Expects `call` to throw exactly as the engine's error of class `Failure` is thrown: its message
/// begins with the engine's name of the error, and goes on with a text that holds `part`.
template <class Failure, class Call>
void expectFailure(Call call, std::string const& part = {}) {
    std::string const text = failureOf<Failure>(call);
    std::string const begin = Failure().getType() + ": ";
    EXPECT_EQ(text.substr(0, begin.size()), begin) << text;
    EXPECT_GT(text.size(), begin.size()) << "the reason is missing: " << text;
    EXPECT_NE(text.find(part), std::string::npos) << text << " should tell " << part;
}

/// The value of a field as text; empty where there is none.
std::string fieldOf(counted_ptr<ZANMessage> const& message, int tag);

/// The values of a tag in all of these messages: `a b c`.
std::string fieldsOf(Messages const& messages, int tag);

Promises lifeCyclePromises();
Promises refusalPromises();
Promises connectionPromises();
Promises sendingPromises();
Promises manyAtOncePromises();
Promises eventPromises();
Promises directPromises();
Promises sessionPromises();
Promises counterpartyPromises();
Promises logPromises();
Promises expressionPromises();
Promises editPromises();
Promises guaranteedPromises();

} // namespace zan::conformance

#endif
