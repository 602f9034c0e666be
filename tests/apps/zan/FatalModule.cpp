// A module whose initialisation ends the process.
#include <cstdlib>

namespace {

struct Fatal {
    Fatal() { std::abort(); }
} const fatal;

} // namespace
