#include "Yardsticks.h"

namespace {

class Answer final : public VirtualCallee {
public:
    int answer() override { return 42; }
};

} // namespace

VirtualCallee::~VirtualCallee() = default;

std::unique_ptr<VirtualCallee> newVirtualCallee() {
    return std::make_unique<Answer>();
}

void deliver(std::vector<counted_ptr<IZANEventListener>> const& listeners,
             counted_ptr<ZANEvent> const& event) {
    for (auto const& listener : listeners) {
        listener->processEvent(event);
    }
}
