/// `ZANEngineAdapterBase`: the class that adapters derive from. It answers the two subscription
/// operations that the facade never forwards; everything else is left to the adapter.
///
/// Threads: as for `IZANEngineAdapter`.
#ifndef ZANENGINE_ADAPTER_ZANENGINEADAPTERBASE_H
#define ZANENGINE_ADAPTER_ZANENGINEADAPTERBASE_H

#include "adapter/IZANEngineAdapter.h"
#include "infra/Export.h"

#include <string>

class ZAN_API ZANEngineAdapterBase : public IZANEngineAdapter {
public:
    /// Throws `WrongConfigurationException` when `provider` is empty.
    explicit ZANEngineAdapterBase(counted_ptr<IZANEngineConfigProvider> provider);
    ZANEngineAdapterBase(ZANEngineAdapterBase const&) = default;
    ZANEngineAdapterBase& operator=(ZANEngineAdapterBase const&) = default;
    ~ZANEngineAdapterBase() override;

    /// Do nothing: the facade keeps the listeners itself. Listeners that an adapter serves on its
    /// own come through `subscribeDirect`.
    void subscribe(UserTicket const& ticket, counted_ptr<IZANEventListener>& listener,
                   std::string const& connectionName, std::string const& eventType) override;
    void unsubscribe(UserTicket const& ticket, counted_ptr<IZANEventListener>& listener,
                     std::string const& connectionName, std::string const& eventType) override;
};

#endif
