// Kills a program under load as often as is asked, and prints what became of its orders.
//
//   crash_run [KILLS [SEED [KILLS A ROUND]]]
#include "crash/Round.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>

namespace {

struct Plan {
    int kills = 200;
    unsigned seed = static_cast<unsigned>(std::chrono::system_clock::now().time_since_epoch() /
                                          std::chrono::seconds(1));
    int killsARound = 20;
};

Plan planOf(int argc, char** argv) {
    Plan plan;
    plan.kills = argc > 1 ? std::stoi(argv[1]) : plan.kills;
    plan.seed = argc > 2 ? static_cast<unsigned>(std::stoul(argv[2])) : plan.seed;
    plan.killsARound = argc > 3 ? std::stoi(argv[3]) : plan.killsARound;
    return plan;
}

// Every third round survives a power failure too, and every fourth resets the numbers.
crash::Report run(Plan const& plan) {
    crash::Report all;
    for (int round = 0; all.kills < plan.kills; ++round) {
        int const kills = std::min(plan.killsARound, plan.kills - static_cast<int>(all.kills));
        char const* const durability = round % 3 == 2 ? "full" : "normal";
        bool const resets = round % 4 == 3;
        unsigned const seed = plan.seed + static_cast<unsigned>(round);
        all.add(crash::Round({kills, durability, seed, resets}).run());
        std::cout << all.kills << " kills, " << all.acknowledged << " orders acknowledged, "
                  << (all.isGood() ? "all well" : "FAULTS") << std::endl;
    }
    return all;
}

} // namespace

int main(int argc, char** argv) {
    try {
        Plan const plan = planOf(argc, argv);
        std::cout << "seed " << plan.seed << std::endl;
        auto const began = std::chrono::steady_clock::now();
        crash::Report const report = run(plan);
        std::cout << report.table() << "took "
                  << (std::chrono::steady_clock::now() - began) / std::chrono::seconds(1)
                  << " s, seed " << plan.seed << std::endl;
        return report.isGood() ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (std::exception const& e) {
        std::cerr << "crash_run: " << e.what() << std::endl;
        return EXIT_FAILURE;
    }
}
