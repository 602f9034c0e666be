/// Names of tags in the expressions that find entries of the log.
///
/// Threads: a function without shared state but the names.
#ifndef ZANENGINE_APPS_ZAN_EXPRESSIONNAMES_H
#define ZANENGINE_APPS_ZAN_EXPRESSIONNAMES_H

#include "apps/zan/Names.h"

#include <string>

namespace zan::cli {

/// The expression with `tag(55)` in place of each `Symbol`: words that are written as the
/// dictionary writes the name of a tag. What stands in quotes or in a comment stays as it is, and
/// so do columns
/// (`text` is the column, `Text` the tag 58), calls of functions, and the type behind AS.
std::string withTagNumbers(std::string const& expression, Names& names);

} // namespace zan::cli

#endif
