#include "apps/zan/Question.h"

#include "apps/zan/ExitCodes.h"
#include "apps/zan/InputLines.h"
#include "apps/zan/Terminal.h"

#include <iostream>

#include <unistd.h>

namespace zan::cli {

void ask(std::string const& question, Interrupt const& interrupt) {
    if (!isTerminal(STDIN_FILENO)) {
        throw UsageError("nobody can answer: " + question + " --yes would be right");
    }
    std::cerr << question << " [y/N] " << std::flush;
    std::string answer;
    InputLines input("-", interrupt);
    if (!input.next(answer) || (answer != "y" && answer != "Y" && answer != "yes")) {
        throw UsageError("nothing was done");
    }
}

} // namespace zan::cli
