/// `ZANGMLAdapter`: the transport's side of one guaranteed listener. The transport implements it
/// and hands it out through its `ZANGMLAdapterFactory`.
///
/// Threads: the operations come on application threads without any lock of the library, at the same
/// time as events are delivered; an adapter protects itself.
///
/// The order of the virtual operations is part of the contract.
#ifndef ZANENGINE_GUARANTEED_ZANGMLADAPTER_H
#define ZANENGINE_GUARANTEED_ZANGMLADAPTER_H

#include "guaranteed/ZANGuaranteedEngineMessageListener.h"
#include "infra/Export.h"

#include <string>

class ZAN_API ZANGMLAdapter {
public:
    ZANGMLAdapter() = default;
    ZANGMLAdapter(ZANGMLAdapter const&) = default;
    ZANGMLAdapter& operator=(ZANGMLAdapter const&) = default;
    virtual ~ZANGMLAdapter();

    /// Records that the listener has consumed the message with this id in a stream of a connection.
    virtual void
    setLastConsumedMessage(std::string const& connectionName, int messageId,
                           ZANGuaranteedEngineMessageListener::MessageTypeIds stream) = 0;

    /// Delivers again what the listener may have missed, judged by the recorded marks.
    virtual void retrievePotentiallyLostMessages() = 0;

    /// The filter that narrows what is delivered; its form and the exception for a filter that
    /// cannot be understood are the transport's. Without one `getSubscriptionFilter` returns an
    /// empty text.
    virtual void setSubscriptionFilter(std::string const& filter) = 0;
    virtual std::string getSubscriptionFilter() = 0;
    virtual void resetSubscriptionFilter() = 0;

    // The library never calls the operations below; applications reach them through `getAdapter` of
    // the listener.

    /// The mark of a stream, or -1 when there is none.
    virtual int
    getLastConsumedMessage(std::string const& connectionName,
                           ZANGuaranteedEngineMessageListener::MessageTypeIds stream) = 0;

    /// Forgets the marks of a connection, in all streams.
    virtual void resetConsumedMessages(std::string const& connectionName) = 0;

    /// The marks set so far are durable when it returns.
    virtual void flush() = 0;

    /// The name under which the transport keeps the marks.
    virtual std::string getSubscriberName() = 0;
};

#endif
