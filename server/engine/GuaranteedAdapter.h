/// The engine's side of one guaranteed listener: its name, its marks, its filter.
///
/// Threads: any. Its engine may be stopped before it; the operations that need one then throw
/// `ZANEngineException`.
#ifndef ZANENGINE_SERVER_ENGINE_GUARANTEEDADAPTER_H
#define ZANENGINE_SERVER_ENGINE_GUARANTEEDADAPTER_H

#include "guaranteed/ZANGMLAdapter.h"
#include "server/engine/Engine.h"
#include "server/engine/MessageFilter.h"

#include <memory>
#include <mutex>
#include <string>
#include <tuple>
#include <vector>

namespace zan::server {

class GuaranteedAdapter final : public ZANGMLAdapter {
public:
    using Stream = ZANGuaranteedEngineMessageListener::MessageTypeIds;

    /// With an empty name the listener gets its name when it is attached to a connection.
    GuaranteedAdapter(std::weak_ptr<Engine> engine, std::string name);
    GuaranteedAdapter(GuaranteedAdapter const&) = delete;
    GuaranteedAdapter& operator=(GuaranteedAdapter const&) = delete;
    ~GuaranteedAdapter() override;

    void setLastConsumedMessage(std::string const& connection, int id, Stream stream) override;

    /// For every connection that the listener is attached to; returns when all of it is delivered,
    /// but for a listener of the engine's that calls it, which gets it afterwards. A stream without
    /// a mark is delivered from its beginning.
    void retrievePotentiallyLostMessages() override;

    void setSubscriptionFilter(std::string const& filter) override;
    std::string getSubscriptionFilter() override;
    void resetSubscriptionFilter() override;
    int getLastConsumedMessage(std::string const& connection, Stream stream) override;
    void resetConsumedMessages(std::string const& connection) override;
    void flush() override;
    std::string getSubscriberName() override;

    /// The listener is attached to a connection of this engine, which may be a later one than it
    /// was made with; it gets this name when it has none yet.
    void attachTo(std::weak_ptr<Engine> engine, std::string const& name);

    std::shared_ptr<MessageFilter> const& filter() const { return filter_; }

private:
    std::shared_ptr<Engine> engine() const;
    void setName(std::string const& name);

    std::shared_ptr<MessageFilter> const filter_;
    mutable std::mutex mutex_;
    std::weak_ptr<Engine> engine_;
    std::string name_;
    // Marks that were set while there was no name to keep them under.
    std::vector<std::tuple<std::string, FixStream, int>> unnamed_;
};

} // namespace zan::server

#endif
