#include "apps/zan/ZanFixture.h"

std::vector<nlohmann::ordered_json> ZanTest::objects(std::string const& output) {
    std::vector<nlohmann::ordered_json> all;
    for (std::string const& line : lines(output)) {
        all.push_back(nlohmann::ordered_json::parse(line));
    }
    return all;
}
