/// The manual page, made from the commands and options of the program.
#ifndef ZANENGINE_APPS_ZAN_MANUALPAGE_H
#define ZANENGINE_APPS_ZAN_MANUALPAGE_H

#include "apps/zan/CommandTree.h"

#include <string>

namespace zan::cli {

/// The page zan(1) in the language of man.
std::string manualPage(CommandEntry const& program);

} // namespace zan::cli

#endif
