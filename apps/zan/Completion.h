/// Scripts that let a shell complete command lines of the program, made from its commands and
/// options. The names of connections are asked for when they are needed.
#ifndef ZANENGINE_APPS_ZAN_COMPLETION_H
#define ZANENGINE_APPS_ZAN_COMPLETION_H

#include "apps/zan/CommandTree.h"

#include <string>

namespace zan::cli {

std::string bashCompletion(CommandEntry const& program);
std::string zshCompletion(CommandEntry const& program);
std::string fishCompletion(CommandEntry const& program);

} // namespace zan::cli

#endif
