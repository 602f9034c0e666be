#include "apps/zan/Record.h"

#include <nlohmann/json.hpp>

#include <type_traits>

namespace zan::cli {

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
    nlohmann::ordered_json object = nlohmann::ordered_json::object();
    for (RecordField const& field : record) {
        std::visit(
            [&](auto const& value) {
                if constexpr (!std::is_same_v<std::decay_t<decltype(value)>, std::monostate>) {
                    object[field.name] = value;
                }
            },
            field.value);
    }
    constexpr int inOneLine = -1;
    return object.dump(inOneLine, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

} // namespace zan::cli
