#include "apps/zan/Record.h"

#include <nlohmann/json.hpp>

#include <type_traits>

namespace zan::cli {

namespace {

using Json = nlohmann::ordered_json;

// NOLINTNEXTLINE(misc-no-recursion): as deep as lists stand in lists.
Json objectOf(Record const& record) {
    Json object = Json::object();
    for (RecordField const& field : record) {
        std::visit(
            [&](auto const& value) {
                using Type = std::decay_t<decltype(value)>;
                if constexpr (std::is_same_v<Type, std::vector<Record>>) {
                    object[field.name] = Json::array();
                    for (Record const& each : value) {
                        object[field.name].push_back(objectOf(each));
                    }
                } else if constexpr (!std::is_same_v<Type, std::monostate>) {
                    object[field.name] = value;
                }
            },
            field.value);
    }
    return object;
}

} // namespace

std::string shownText(RecordField const& field) {
    if (!field.shown.empty()) {
        return printable(field.shown);
    }
    return std::visit(
        [](auto const& value) -> std::string {
            using Type = std::decay_t<decltype(value)>;
            if constexpr (std::is_same_v<Type, std::string>) {
                return printable(value);
            } else if constexpr (std::is_same_v<Type, bool>) {
                return value ? "yes" : "no";
            } else if constexpr (std::is_same_v<Type, long long>) {
                return std::to_string(value);
            } else {
                return "";
            }
        },
        field.value);
}

std::string jsonLine(Record const& record) {
    constexpr int inOneLine = -1;
    return withoutHiddenCharacters(
        objectOf(record).dump(inOneLine, ' ', false, Json::error_handler_t::replace));
}

} // namespace zan::cli
