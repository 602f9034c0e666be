#include "apps/zan/FixLine.h"

#include "server/wire/FieldText.h"
#include "server/wire/WireText.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <string>

namespace zan::cli {

namespace {

constexpr char soh = '\x01';
constexpr std::string_view frameBegins = "8=FIX";

// The separator that comes first behind the first field.
std::string_view separatorOf(std::string_view text) {
    constexpr std::array<std::string_view, 3> known = {"\x01", "|", "^A"};
    std::string_view first;
    std::size_t nearest = std::string_view::npos;
    for (std::string_view const each : known) {
        if (std::size_t const at = text.find(each); at < nearest) {
            nearest = at;
            first = each;
        }
    }
    return first;
}

std::string separatedBySoh(std::string_view text, std::string_view separator) {
    std::string message;
    while (!text.empty()) {
        std::size_t const end = separator.empty() ? text.size() : text.find(separator);
        message += std::string(text.substr(0, end)) + soh;
        text.remove_prefix(end >= text.size() ? text.size() : end + separator.size());
    }
    return message;
}

bool beginsWithTag(std::string_view text) {
    std::size_t const equals = text.find('=');
    return equals != std::string_view::npos && equals > 0 && equals < 10 &&
           std::ranges::all_of(text.substr(0, equals),
                               [](unsigned char c) { return std::isdigit(c) != 0; });
}

// Where the field of the checksum begins; the end when there is none.
std::size_t checksumAt(std::string_view message) {
    std::size_t const at = message.rfind("\x01"
                                         "10=");
    return at == std::string_view::npos ? message.size() : at + 1;
}

std::string threeDigits(unsigned number) {
    std::array<char, 4> text{};
    std::snprintf(text.data(), text.size(), "%03u", number % 1000);
    return text.data();
}

void checkLength(std::string const& message, std::vector<std::string>& faults) {
    std::size_t const second = message.find(soh) + 1;
    if (message.compare(second, 2, "9=") != 0) {
        faults.emplace_back("BodyLength (9) is missing; it would be right as the second field");
        return;
    }
    std::size_t const body = std::min(message.find(soh, second), message.size() - 1) + 1;
    std::string const told = message.substr(second + 2, body - second - 3);
    std::size_t const end = checksumAt(message);
    std::string const right = std::to_string(end - std::min(end, body));
    if (told != right) {
        faults.push_back("BodyLength (9) is " + told + "; " + right + " would be right");
    }
}

void checkChecksum(std::string const& message, std::vector<std::string>& faults) {
    std::size_t const at = checksumAt(message);
    if (at == message.size()) {
        faults.emplace_back("CheckSum (10) is missing");
        return;
    }
    std::string const told(server::valueOf(std::string_view(message).substr(at), 10));
    std::string const right =
        threeDigits(server::checksumOf(std::string_view(message).substr(0, at)));
    if (told != right) {
        faults.push_back("CheckSum (10) is " + told + "; " + right + " would be right");
    }
}

} // namespace

std::string messageIn(std::string_view line) {
    std::size_t const at = line.find(frameBegins);
    if (at == std::string_view::npos) {
        return beginsWithTag(line) ? separatedBySoh(line, separatorOf(line)) : "";
    }
    std::string message = separatedBySoh(line.substr(at), separatorOf(line.substr(at)));
    // What stands behind the checksum is no part of the message.
    std::size_t const checksum = checksumAt(message);
    std::size_t const end = message.find(soh, checksum);
    return end == std::string::npos ? message : message.substr(0, end + 1);
}

bool hasFrame(std::string_view message) {
    return message.starts_with(frameBegins);
}

std::vector<std::string> frameFaults(std::string const& message) {
    std::vector<std::string> faults;
    if (hasFrame(message)) {
        checkLength(message, faults);
        checkChecksum(message, faults);
    }
    return faults;
}

} // namespace zan::cli
