#include "adapter/ZANEngineAdapterBase.h"

ZANEngineAdapterBase::ZANEngineAdapterBase(counted_ptr<IZANEngineConfigProvider> provider)
    : IZANEngineAdapter(provider) {}

ZANEngineAdapterBase::~ZANEngineAdapterBase() = default;

void ZANEngineAdapterBase::subscribe(UserTicket const&, counted_ptr<IZANEventListener>&,
                                     std::string const&, std::string const&) {}

void ZANEngineAdapterBase::unsubscribe(UserTicket const&, counted_ptr<IZANEventListener>&,
                                       std::string const&, std::string const&) {}
