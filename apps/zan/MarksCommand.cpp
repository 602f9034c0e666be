// marks: how far a guaranteed listener has come.
#include "apps/zan/Command.h"
#include "apps/zan/MessageRow.h"
#include "apps/zan/Question.h"
#include "errors/ZANEngineException.h"
#include "guaranteed/ZANGMLAdapter.h"
#include "guaranteed/ZANGMLAdapterFactory.h"
#include "guaranteed/ZANGuaranteedEngineMessageListener.h"

#include <algorithm>
#include <typeinfo>

namespace zan::cli {

namespace {

using Listener = ZANGuaranteedEngineMessageListener;

// A guaranteed listener that gets nothing: the marks of its name are what is looked at.
class Subscriber {
public:
    explicit Subscriber(Session& session) : session_(session) {
        // The library's own factory serves engines without guaranteed delivery.
        ZANGMLAdapterFactory const& factory = session.engine().getGMLAdapterFactory();
        if (typeid(factory) == typeid(ZANGMLAdapterFactory)) {
            throw ZANEngineException("this engine keeps no marks");
        }
        listener_ = counted_ptr<Listener>(new Listener(counted_ptr<IZANEventListener>()));
    }
    ~Subscriber() {
        try {
            session_.engine().destroyDirectSubscriber(listener_);
        } catch (std::exception const&) {
            // The engine ends next, and the listener with it.
        }
    }
    Subscriber(Subscriber const&) = delete;
    Subscriber& operator=(Subscriber const&) = delete;

    /// Its marks at a connection have a name once it is attached there.
    ZANGMLAdapter& at(std::string const& connection) {
        session_.engine().subscribeDirect(session_.ticket(), connection, false, false, false,
                                          listener_);
        return listener_->getAdapter();
    }

private:
    Session& session_;
    counted_ptr<Listener> listener_;
};

FieldValue idOrNone(int id) {
    if (id < 0) {
        return nullptr;
    }
    return static_cast<long long>(id);
}

class MarksCommand final : public Command {
public:
    void addTo(CLI::App& program) override {
        app_ =
            &addCommand(program, "marks",
                        "Shows what a guaranteed listener has consumed, and what waits for it",
                        "The listener is told by its name: the client= of the URL, or the user.");
        Options(*app_)
            .allConnections(name_)
            .flag(resets_, "--reset", "forget the marks: everything is delivered again")
            .needs("name")
            .yes(isSure_);
    }

    ExitCode run(Context& context) override {
        Session session(context.settings, context.interrupt,
                        resets_ ? Purpose::Changes : Purpose::Reads);
        Subscriber subscriber(session);
        if (resets_) {
            reset(subscriber, context);
        }
        for (std::string const& name : session.namesOr(name_)) {
            show(session, name, subscriber.at(name), context);
        }
        return ExitCode::Ok;
    }

private:
    void reset(Subscriber& subscriber, Context& context) const {
        ZANGMLAdapter& marks = subscriber.at(name_);
        if (!isSure_) {
            ask("Forget the marks of " + printable(marks.getSubscriberName()) + " at " +
                    printable(name_) + "?",
                context.interrupt);
        }
        marks.resetConsumedMessages(name_);
        marks.flush();
    }

    static void show(Session& session, std::string const& name, ZANGMLAdapter& marks,
                     Context& context) {
        for (int stream = Listener::ADMIN_MSG_FROM_COUNTERPARTY; stream <= Listener::RESENT_MSG;
             ++stream) {
            int const mark =
                marks.getLastConsumedMessage(name, static_cast<Listener::MessageTypeIds>(stream));
            std::vector<int> const ids =
                session.engine().getMessageIds(session.ticket(), name, stream, false);
            auto const waiting = std::ranges::count_if(ids, [&](int id) { return id > mark; });
            context.output.print({{"name", name},
                                  {"client", marks.getSubscriberName()},
                                  {"stream", static_cast<long long>(stream), streamName(stream)},
                                  {"mark", idOrNone(mark)},
                                  {"newest", idOrNone(ids.empty() ? -1 : ids.back())},
                                  {"waiting", static_cast<long long>(waiting)}});
        }
    }

    std::string name_;
    bool resets_ = false;
    bool isSure_ = false;
};

} // namespace

void addMarksCommand(Commands& commands) {
    commands.push_back(std::make_unique<MarksCommand>());
}

} // namespace zan::cli
