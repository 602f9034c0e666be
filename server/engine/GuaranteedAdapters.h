/// Gives guaranteed listeners their adapters, and takes them back.
///
/// Copies of a listener share an adapter and each gives it back, in any order, and some of them to
/// the factory of a later engine. So the adapters belong to the process, and none of them ends, and
/// no address is used again, while a listener has it: what comes back is only noted. An adapter
/// that came back ends with a later call when no listener has it any more, one that nobody gives
/// back ends with its factory. An adapter whose engine is gone says so, until its listener is
/// attached to the next one.
///
/// Threads: any.
#ifndef ZANENGINE_SERVER_ENGINE_GUARANTEEDADAPTERS_H
#define ZANENGINE_SERVER_ENGINE_GUARANTEEDADAPTERS_H

#include "guaranteed/ZANGMLAdapterFactory.h"
#include "server/engine/Engine.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>

namespace zan::server {

class GuaranteedAdapters final : public ZANGMLAdapterFactory {
public:
    GuaranteedAdapters() = default;
    GuaranteedAdapters(GuaranteedAdapters const&) = delete;
    GuaranteedAdapters& operator=(GuaranteedAdapters const&) = delete;
    ~GuaranteedAdapters() override;

    /// From now on adapters are for this engine, under this name; with an empty one each listener
    /// takes the name of the user who attaches it first.
    void serve(std::weak_ptr<Engine> engine, std::string name);

    ZANGMLAdapter* newGMLAdapter(ZANGuaranteedEngineMessageListener* listener) override;

    /// One that is not known is ignored.
    void deleteGMLAdapter(ZANGMLAdapter* adapter) override;

    /// How many adapters there are in the process.
    static std::size_t count();

private:
    std::mutex mutex_;
    std::weak_ptr<Engine> engine_;
    std::string name_;
};

} // namespace zan::server

#endif
