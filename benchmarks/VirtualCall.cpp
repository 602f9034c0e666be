#include "VirtualCall.h"

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
