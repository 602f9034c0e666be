/// Gives guaranteed listeners their adapters, and takes them back.
///
/// Threads: any. A listener may outlive the factory that made its adapter, and gives it back to
/// whichever factory is there then: so the adapters belong to the process.
#ifndef ZANENGINE_SERVER_ENGINE_GUARANTEEDADAPTERS_H
#define ZANENGINE_SERVER_ENGINE_GUARANTEEDADAPTERS_H

#include "guaranteed/ZANGMLAdapterFactory.h"
#include "server/engine/Engine.h"

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

    /// One that is not known, or came back already, is ignored.
    void deleteGMLAdapter(ZANGMLAdapter* adapter) override;

private:
    std::mutex mutex_;
    std::weak_ptr<Engine> engine_;
    std::string name_;
};

} // namespace zan::server

#endif
