#include "TemplateAdapter.h"

TemplateAdapter::TemplateAdapter(counted_ptr<IZANEngineConfigProvider> provider)
    : UnsupportedOperations(provider) {}

void TemplateAdapter::initialize() {}

void TemplateAdapter::uninitialize() {}

bool TemplateAdapter::isThreadSafe() {
    return false;
}

ZANGMLAdapterFactory& TemplateAdapter::getGMLAdapterFactory() {
    return guaranteedListeners_;
}
