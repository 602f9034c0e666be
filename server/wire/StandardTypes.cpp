#include "server/wire/MessageRules.h"

#include <algorithm>
#include <iterator>

namespace zan::server {

namespace {

/// The types that a version has, those of one letter and those of two, up to the last of them.
struct Types {
    std::string_view version;
    std::string_view letters;
    std::string_view lastPair; ///< types of two letters count from AA on
};

constexpr Types typesOf[] = {
    {"FIX.4.0", "0123456789ABCDEFGHJKLMNPQRS", ""},
    {"FIX.4.1", "0123456789ABCDEFGHJKLMNPQRST", ""},
    {"FIX.4.2", "0123456789ABCDEFGHJKLMNPQRSTVWXYZabcdefghijklm", ""},
    {"FIX.4.3", "0123456789ABCDEFGHJKLMNPQRSTVWXYZabcdefghijklmnopqrstuvwxyz", "AI"},
    {"FIX.4.4", "0123456789ABCDEFGHJKLMNPQRSTVWXYZabcdefghijklmnopqrstuvwxyz", "BH"},
    {"FIXT.1.1", "0123456789ABCDEFGHJKLMNPQRSTVWXYZabcdefghijklmnopqrstuvwxyz", "EB"}};

bool isCapital(char c) {
    return c >= 'A' && c <= 'Z';
}

} // namespace

bool isTypeOfStandard(std::string_view type, std::string_view version) {
    if (type.starts_with('U')) {
        return true;
    }
    auto const found = std::ranges::find(typesOf, version, &Types::version);
    Types const& types = found == std::end(typesOf) ? *std::prev(std::end(typesOf)) : *found;
    if (type.size() == 1) {
        return types.letters.find(type) != std::string_view::npos;
    }
    return type.size() == 2 && std::ranges::all_of(type, isCapital) && type <= types.lastPair;
}

} // namespace zan::server
