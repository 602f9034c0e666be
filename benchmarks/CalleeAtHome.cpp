#include "Yardsticks.h"

namespace {

class AnswerAtHome final : public VirtualCallee {
public:
    int answer() override { return 42; }
};

} // namespace

std::unique_ptr<VirtualCallee> newVirtualCalleeAtHome() {
    return std::make_unique<AnswerAtHome>();
}
