#include "guaranteed/ZANGMLAdapterFactory.h"

#include "guaranteed/SharedAdapters.h"

#include <iostream>

ZANGMLAdapterFactory::~ZANGMLAdapterFactory() = default;

ZANGMLAdapter* ZANGMLAdapterFactory::newGMLAdapter(ZANGuaranteedEngineMessageListener*) {
    std::cout << "ZANGMLAdapterFactory::newGMLAdapter(): default implementation called.\n"
              << std::flush;
    return nullptr;
}

void ZANGMLAdapterFactory::deleteGMLAdapter(ZANGMLAdapter*) {
    std::cout << "ZANGMLAdapterFactory::deleteGMLAdapter(): default implementation called.\n"
              << std::flush;
}

std::size_t ZANGMLAdapterFactory::listenersOf(ZANGMLAdapter const* adapter) noexcept {
    return zan::SharedAdapters::count(adapter);
}
