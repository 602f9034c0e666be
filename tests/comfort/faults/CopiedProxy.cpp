// A reference is taken without a word, a copy is warned of.
#include "engine/ZANEngineProxy.h"

bool isThereOne();
bool isThereOne() {
    ZANEngineProxy& engine = ZANEngineProxy::getInstance();
    return engine.isInitialized();
}

#ifdef WITH_FAULT
bool isThereACopy();
bool isThereACopy() {
    auto engine = ZANEngineProxy::getInstance();
    return engine.isInitialized();
}
#endif
