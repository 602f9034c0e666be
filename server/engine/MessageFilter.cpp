#include "server/engine/MessageFilter.h"

#include <utility>

namespace zan::server {

void MessageFilter::setExpression(std::string const& expression) {
    auto filter = expression.empty() ? nullptr : std::make_unique<EntryFilter>(expression);
    std::lock_guard const lock(mutex_);
    expression_ = expression;
    filter_ = std::move(filter);
}

std::string MessageFilter::expression() const {
    std::lock_guard const lock(mutex_);
    return expression_;
}

bool MessageFilter::passes(FixEntry const& entry) {
    std::lock_guard const lock(mutex_);
    return !filter_ || filter_->matches(entry);
}

} // namespace zan::server
