/// The seeds of the random tests: a few that follow on the printed one, or ZAN_TEST_ROUNDS many.
#ifndef ZANENGINE_TESTS_MESSAGE_MODEL_SEEDS_H
#define ZANENGINE_TESTS_MESSAGE_MODEL_SEEDS_H

#include "support/Seed.h"

#include <cstdlib>

struct Seeds {
    unsigned first;
    unsigned rounds;
};

inline Seeds seeds() {
    constexpr unsigned usualRounds = 12;
    char const* const wanted = std::getenv("ZAN_TEST_ROUNDS");
    unsigned const rounds =
        wanted ? static_cast<unsigned>(std::strtoul(wanted, nullptr, 10)) : usualRounds;
    return {testSeed(), rounds};
}

#endif
