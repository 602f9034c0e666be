/// `UtilityFunctions`: the base of classes that hold static operations only.
///
/// Threads: it has no state.
#ifndef ZANENGINE_INFRA_UTILITYFUNCTIONS_H
#define ZANENGINE_INFRA_UTILITYFUNCTIONS_H

#include "infra/Export.h"

class ZAN_API UtilityFunctions {
protected:
    /// Only derived classes reach these, and they make no objects either.
    UtilityFunctions();
    UtilityFunctions(UtilityFunctions const& other);
    UtilityFunctions& operator=(UtilityFunctions const& other);
    virtual ~UtilityFunctions();
};

#endif
