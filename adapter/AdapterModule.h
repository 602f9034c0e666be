/// `ZAN_ADAPTER_MODULE`: makes a shared module an adapter that applications start by URL.
///
/// For the protocol `demo` the facade loads the module `demoengineadapter` and calls the function
/// `create_demo_engineadapter` in it. One line in one source of the module defines that function:
///
///     ZAN_ADAPTER_MODULE(demo, makeDemoAdapter);
///
/// Threads: the function is called by the thread that starts the facade. A module is never
/// unloaded.
#ifndef ZANENGINE_ADAPTER_ADAPTERMODULE_H
#define ZANENGINE_ADAPTER_ADAPTERMODULE_H

#include "adapter/AbiMark.h"
#include "adapter/IZANEngineAdapter.h"
#include "infra/Export.h"
#include "infra/Url.h"
#include "infra/counted_ptr.h"

// Clang remarks on C names that return C++ classes. Both sides here are C++; the C name only makes
// the function easy to find.
#ifdef __clang__
#define ZAN_KEEP_WARNINGS _Pragma("clang diagnostic push")
#define ZAN_NO_LINKAGE_WARNING _Pragma("clang diagnostic ignored \"-Wreturn-type-c-linkage\"")
#define ZAN_ALLOW_CLASS_RESULT_BEGIN ZAN_KEEP_WARNINGS ZAN_NO_LINKAGE_WARNING
#define ZAN_ALLOW_CLASS_RESULT_END _Pragma("clang diagnostic pop")
#else
#define ZAN_ALLOW_CLASS_RESULT_BEGIN
#define ZAN_ALLOW_CLASS_RESULT_END
#endif

/// Defines the exported function `create_<protocol>_engineadapter` around `function`, and beside it
/// the module's ABI mark `zan_abi_mark_<protocol>`. Used at namespace scope, with a
/// semicolon.
///
/// `function` takes the `Url const&` that the application gave and returns a
/// `counted_ptr<IZANEngineAdapter>`, a new adapter that is not started. What it throws as an
/// `InfraException` reaches the application as a `WrongConfigurationException` with the same text.
///
/// `protocol` is written as a C name, so a protocol with `+`, `-` or `.` cannot be served this way.
#define ZAN_ADAPTER_MODULE(protocol, function)                                                     \
    extern "C" ZAN_API char const zan_abi_mark_##protocol[sizeof(ZAN_ABI_MARK)];                   \
    ZAN_ALLOW_CLASS_RESULT_BEGIN                                                                   \
    extern "C" ZAN_API counted_ptr<IZANEngineAdapter> create_##protocol##_engineadapter(           \
        Url const& url) {                                                                          \
        return function(url);                                                                      \
    }                                                                                              \
    ZAN_ALLOW_CLASS_RESULT_END                                                                     \
    char const zan_abi_mark_##protocol[sizeof(ZAN_ABI_MARK)] = ZAN_ABI_MARK;                       \
    static_assert(true, "stands before the semicolon")

#endif
