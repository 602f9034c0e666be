#include "IdleAdapter.h"

namespace {

class IdleAdapterFactory final : public IZANEngineAdapterFactory {
public:
    IdleAdapterFactory(bool threadSafe, IdleAdapter*& created)
        : threadSafe_(threadSafe), created_(created) {}

    counted_ptr<IZANEngineAdapter>
    createAdapter(counted_ptr<IZANEngineConfigProvider> provider) override {
        created_ = new IdleAdapter(std::move(provider), threadSafe_);
        return counted_ptr<IZANEngineAdapter>(created_);
    }

private:
    bool const threadSafe_;
    IdleAdapter*& created_;
};

} // namespace

IdleEngine::IdleEngine(bool threadSafe) {
    counted_ptr<IZANEngineConfigProvider> const provider(new NoProperties);
    counted_ptr<IZANEngineAdapterFactory> const factory(
        new IdleAdapterFactory(threadSafe, adapter_));
    ZANEngineProxy::initialize(provider, factory);
}

IdleEngine::~IdleEngine() {
    ZANEngineProxy::uninitialize();
}
