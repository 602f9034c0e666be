/// An adapter to nothing yet: the copy to begin with. It starts and stops, and refuses every engine
/// operation by name.
#ifndef TEMPLATE_ADAPTER_TEMPLATEADAPTER_H
#define TEMPLATE_ADAPTER_TEMPLATEADAPTER_H

#include "UnsupportedOperations.h"
#include "guaranteed/ZANGMLAdapterFactory.h"

/// Threads: the facade calls one operation at a time, because `isThreadSafe` answers false.
class TemplateAdapter : public UnsupportedOperations {
public:
    explicit TemplateAdapter(counted_ptr<IZANEngineConfigProvider> provider);

    void initialize() override;
    void uninitialize() override;
    bool isThreadSafe() override;
    ZANGMLAdapterFactory& getGMLAdapterFactory() override;

private:
    ZANGMLAdapterFactory guaranteedListeners_;
};

#endif
