/// The seed of a randomised test: another one in every run, told so that a run can be repeated.
#ifndef ZANENGINE_TESTS_SUPPORT_SEED_H
#define ZANENGINE_TESTS_SUPPORT_SEED_H

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <random>
#include <string>

/// Prints the seed. The environment variable ZAN_TEST_SEED sets it.
inline std::uint32_t testSeed() {
    char const* const wanted = std::getenv("ZAN_TEST_SEED");
    auto const seed =
        wanted ? static_cast<std::uint32_t>(std::stoul(wanted)) : std::random_device()();
    std::cout << "ZAN_TEST_SEED=" << seed << std::endl;
    return seed;
}

#endif
