/// `ZANGuaranteedEngineMessageListener`: the listener of an application that must not lose
/// messages. It passes each event to the application's ordinary listener, and lets the application
/// tell which messages it has consumed, ask for those that it may have missed, and narrow what it
/// receives.
///
/// It is attached to connections with `subscribeDirect`. The bookkeeping is the transport's: the
/// listener gets a `ZANGMLAdapter` from the transport's factory when it is built, and gives it back
/// when it ends.
///
/// Threads: no lock is taken here. Events arrive on the thread that the transport delivers on, the
/// other operations reach the adapter on the caller's thread.
#ifndef ZANENGINE_GUARANTEED_ZANGUARANTEEDENGINEMESSAGELISTENER_H
#define ZANENGINE_GUARANTEED_ZANGUARANTEEDENGINEMESSAGELISTENER_H

#include "adapter/IZANEventListener.h"
#include "events/ZANConnectionStateEvent.h"
#include "events/ZANEvent.h"
#include "infra/Export.h"
#include "infra/counted_ptr.h"

#include <string>

class ZANGMLAdapter;

class ZAN_API ZANGuaranteedEngineMessageListener {
public:
    /// The streams of a connection whose consumption is marked, each on its own. The values travel
    /// as plain integers.
    enum MessageTypeIds : int {
        /// Administrative messages received from the counterparty.
        ADMIN_MSG_FROM_COUNTERPARTY = 0,
        /// Administrative messages sent to the counterparty.
        ADMIN_MSG_TO_COUNTERPARTY = 1,
        /// Application messages received from the counterparty.
        APP_MSG_FROM_COUNTERPARTY = 2,
        /// Application messages sent to the counterparty.
        APP_MSG_TO_COUNTERPARTY = 3,
        /// Resent messages.
        RESENT_MSG = 4
    };

    /// Shares `listener`; with an empty one events are dropped. The facade must be initialized,
    /// otherwise `ZANEngineException` is thrown. The factory's answer is kept as it is: when the
    /// transport offers no guaranteed delivery there is no adapter, and only event passing, copying
    /// and destruction are allowed.
    explicit ZANGuaranteedEngineMessageListener(counted_ptr<IZANEventListener> const& listener);

    /// A copy shares the listener and the adapter; no new adapter is asked for. Each copy gives the
    /// shared adapter back when it ends, so the transport gets it more than once; the others go on
    /// with it, also after the facade has ended. An assigned listener does not give back the
    /// adapter that it had before. With the embedded engine any number of copies may come and go in
    /// any order, as in a `std::vector` that grows.
    ZANGuaranteedEngineMessageListener(ZANGuaranteedEngineMessageListener const& other);
    ZANGuaranteedEngineMessageListener& operator=(ZANGuaranteedEngineMessageListener const& other);

    /// Gives the adapter back to the factory that the facade offers now. A missing facade is no
    /// error; an `InfraException` of another kind is told on standard output. Any other exception
    /// of the factory leaves the destructor. A `counted_ptr` cannot carry such an exception: when
    /// it holds the listener, the process ends.
    virtual ~ZANGuaranteedEngineMessageListener() noexcept(false);

    /// Called by the transport for each event; passes it to the application's listener.
    virtual void processEvent(counted_ptr<ZANEvent> event);
    virtual void processStateEvent(counted_ptr<ZANConnectionStateEvent> event);

    /// Mark the message with this id as the last one consumed in one stream of a connection. They
    /// throw what the transport throws.
    void setLastConsumedAdminMessageFromCounterPartyId(std::string const& connectionName,
                                                       int messageId);
    void setLastConsumedAdminMessageToCounterPartyId(std::string const& connectionName,
                                                     int messageId);
    void setLastConsumedAppMessageFromCounterPartyId(std::string const& connectionName,
                                                     int messageId);
    void setLastConsumedAppMessageToCounterPartyId(std::string const& connectionName,
                                                   int messageId);
    void setLastConsumedResentMessageId(std::string const& connectionName, int messageId);

    /// Marks the message of a message event, in the stream that its field
    /// `ZANMessage::STREAM_TAG` tells. Throws `ZANInvalidMessageException` for an event that tells
    /// no stream or no number, and what the transport throws.
    void consumed(ZANEvent const& event);
    void consumed(counted_ptr<ZANEvent> const& event);

    /// Gives up a message on which the application's listener fails: it is marked, and with it what
    /// comes before it in its stream, so that delivery goes on behind it. The same as the mark; the
    /// name tells why it is set. Throws like `consumed`.
    void skip(ZANEvent const& event);
    void skip(counted_ptr<ZANEvent> const& event);
    void skip(std::string const& connectionName, int messageId, MessageTypeIds stream);

    /// Makes the transport deliver again what may have been missed, judged by the marks.
    void retrievePotentiallyLostMessages();

    /// Narrows what is delivered. The form of the filter is the transport's.
    void setSubscriptionFilter(std::string const& filter);

    /// The filter in force, as the transport tells it; empty when there is none.
    std::string getSubscriptionFilter();

    void resetSubscriptionFilter();

    /// The transport's adapter of this listener, for calls that only this transport knows. Valid as
    /// long as the listener; must not be called when there is no adapter.
    ZANGMLAdapter& getAdapter();

protected:
    /// What the five public marks are shorthands for.
    void setLastConsumedMessage(std::string const& connectionName, int messageId,
                                MessageTypeIds stream);

private:
    counted_ptr<IZANEventListener> listener_;
    ZANGMLAdapter* adapter_;
};

#endif
