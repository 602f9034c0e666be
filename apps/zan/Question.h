/// Questions to the one at the terminal, before something is done that cannot be undone.
#ifndef ZANENGINE_APPS_ZAN_QUESTION_H
#define ZANENGINE_APPS_ZAN_QUESTION_H

#include "apps/zan/Interrupt.h"

#include <string>

namespace zan::cli {

/// Returns when the answer is yes. Throws `UsageError` for another answer, and when the standard
/// input is no terminal and nobody can answer; `Interruption` for Ctrl-C.
void ask(std::string const& question, Interrupt const& interrupt);

} // namespace zan::cli

#endif
