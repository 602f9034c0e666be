#ifndef ZANENGINE_TESTS_SUPPORT_RUNNINGENGINE_H
#define ZANENGINE_TESTS_SUPPORT_RUNNINGENGINE_H

#include "conformance/EmptyConfigProvider.h"
#include "conformance/RecordingAdapter.h"
#include "engine/ZANEngineProxy.h"
#include "support/TestFactory.h"

using zan::conformance::emptyConfigProvider;
using zan::conformance::RecordingAdapter;

/// The facade, initialized with a `RecordingAdapter` for as long as this object lives. The calls of
/// the start are forgotten, so that a test sees its own only.
class RunningEngine {
public:
    explicit RunningEngine(bool threadSafe = false) : adapter_(new RecordingAdapter) {
        adapter().threadSafe = threadSafe;
        ZANEngineProxy::initialize(emptyConfigProvider(), counted_ptr<IZANEngineAdapterFactory>(
                                                              new TestFactory(adapter_)));
        adapter().forgetCalls();
    }
    RunningEngine(RunningEngine const&) = delete;
    RunningEngine& operator=(RunningEngine const&) = delete;
    ~RunningEngine() {
        adapter().onCall = nullptr;
        ZANEngineProxy::uninitialize();
    }

    RecordingAdapter& adapter() { return static_cast<RecordingAdapter&>(*adapter_); }
    ZANEngineProxy& proxy() { return ZANEngineProxy::getInstance(); }

private:
    counted_ptr<IZANEngineAdapter> adapter_;
};

#endif
