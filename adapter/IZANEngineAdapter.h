/// `IZANEngineAdapter`: what the facade requires of a transport beyond the engine operations: a
/// configuration, a start and a stop, and the road back for events. `ZANEngineAdapterBase` is the
/// class to derive from.
///
/// Threads: `initialize` and `uninitialize` are called by the thread that starts or stops the
/// facade. All other operations come from application threads, one at a time unless `isThreadSafe`
/// answers true. `eventReceived` may be called from any thread of the adapter's.
///
/// The order of the virtual operations continues that of `IZANEngine` and is part of the contract.
#ifndef ZANENGINE_ADAPTER_IZANENGINEADAPTER_H
#define ZANENGINE_ADAPTER_IZANENGINEADAPTER_H

#include "adapter/IZANEngine.h"
#include "adapter/IZANEngineConfigProvider.h"
#include "events/ZANEvent.h"
#include "infra/Export.h"
#include "infra/counted_ptr.h"

class ZANGMLAdapterFactory;

class ZAN_API IZANEngineAdapter : public IZANEngine {
public:
    /// Shares `provider`. Throws `WrongConfigurationException` when it is empty: there is no
    /// adapter without a configuration provider.
    explicit IZANEngineAdapter(counted_ptr<IZANEngineConfigProvider> provider);

    /// Copies share the configuration provider.
    IZANEngineAdapter(IZANEngineAdapter const&) = default;
    IZANEngineAdapter& operator=(IZANEngineAdapter const&) = default;
    ~IZANEngineAdapter() override;

    /// The configuration provider; never missing. The reference is valid until `setConfigProvider`
    /// or the end of the adapter.
    virtual IZANEngineConfigProvider const& getConfigProvider() const;

    /// Starts the adapter. Called once, after the facade has stored the adapter and before
    /// applications can reach it. An exception aborts the start of the facade and reaches the
    /// caller.
    virtual void initialize() = 0;

    /// Stops the adapter. Called once, before the facade lets go of it and without a lock. No event
    /// may be reported after it returns.
    virtual void uninitialize() = 0;

    /// True when the adapter accepts concurrent calls; the facade then adds no lock of its own.
    /// Asked once, when the adapter is installed.
    virtual bool isThreadSafe() = 0;

    /// The factory that gives guaranteed listeners their adapters. It is owned by this adapter and
    /// must live as long.
    virtual ZANGMLAdapterFactory& getGMLAdapterFactory() = 0;

protected:
    /// Replaces the configuration provider. An empty one throws `WrongConfigurationException` and
    /// changes nothing.
    virtual void setConfigProvider(counted_ptr<IZANEngineConfigProvider> provider);

    /// Hands an event to the facade, which delivers it to the subscribed listeners on this thread
    /// before the call returns. Throws `ZANEngineException` while there is no facade; exceptions of
    /// listeners come back to the adapter. Must not be called under a lock that a listener may need
    /// when it calls engine operations.
    virtual void eventReceived(counted_ptr<ZANEvent> event);

private:
    counted_ptr<IZANEngineConfigProvider> ConfigProvider_;
};

#endif
