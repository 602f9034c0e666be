/// Every engine operation as a call, so that a check can go through all of them.
#ifndef ZANENGINE_CONFORMANCE_OPERATIONS_H
#define ZANENGINE_CONFORMANCE_OPERATIONS_H

#include "conformance/Abilities.h"

#include <functional>
#include <string>
#include <vector>

namespace zan::conformance {

struct Operation {
    char const* name;
    /// The ability that it belongs to.
    Ability ability;
    /// Calls it for a connection of this name, with arguments that are right otherwise.
    std::function<void(std::string const& connection)> call;
};

/// All operations that take the name of a connection and that an adapter may leave out, each
/// overload on its own.
std::vector<Operation> const& namedOperations();

} // namespace zan::conformance

#endif
