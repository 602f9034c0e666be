#include "conformance/FixText.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <map>

namespace zan::conformance {

namespace {

constexpr char soh = '\x01';

std::string utcTime(long secondsFromNow) {
    using namespace std::chrono;
    auto const millis = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
    std::time_t const seconds = static_cast<std::time_t>(millis / 1000 + secondsFromNow);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    std::array<char, 32> text{};
    std::size_t const length = std::strftime(text.data(), text.size(), "%Y%m%d-%H:%M:%S", &parts);
    std::snprintf(text.data() + length, text.size() - length, ".%03d",
                  static_cast<int>(millis % 1000));
    return text.data();
}

std::string placeholder(std::string const& name) {
    if (name == "SOH") {
        return {soh};
    }
    if (name.starts_with("now")) {
        return utcTime(name.size() > 3 ? std::stol(name.substr(3)) : 0);
    }
    if (name.size() > 2 && name[1] == '*') {
        return std::string(std::stoul(name.substr(2)), name[0]);
    }
    return {};
}

// Replaces `{name}`, `{name+2}`, `{name-2}` by the number.
std::string withNumber(std::string text, std::string const& name, long number, int digits) {
    std::size_t const start = text.find("{" + name);
    std::size_t const end = text.find('}', start);
    if (start == std::string::npos || end == std::string::npos) {
        return text;
    }
    std::string const offset = text.substr(start + name.size() + 1, end - start - name.size() - 1);
    std::string value = std::to_string(number + (offset.empty() ? 0 : std::stol(offset)));
    if (value.size() < static_cast<std::size_t>(digits)) {
        value.insert(0, static_cast<std::size_t>(digits) - value.size(), '0');
    }
    return text.replace(start, end - start + 1, value);
}

std::string field(std::map<std::string, std::string> const& header, std::string const& tag) {
    auto const found = header.find(tag);
    return found == header.end() ? std::string() : tag + "=" + found->second + soh;
}

} // namespace

std::string takeWord(std::string& text, char separator) {
    std::size_t const end = text.find(separator);
    std::string word = text.substr(0, end);
    text.erase(0, end == std::string::npos ? end : end + 1);
    return word;
}

std::string readable(std::string text) {
    std::ranges::replace(text, soh, '|');
    return text;
}

std::string wired(std::string text) {
    std::ranges::replace(text, '|', soh);
    return text;
}

std::vector<std::string> splitFields(std::string const& text, char separator) {
    std::vector<std::string> fields;
    for (std::string rest = text; !rest.empty();) {
        fields.push_back(takeWord(rest, separator));
    }
    return fields;
}

std::string valueOf(std::string const& message, std::string const& tag) {
    for (std::string const& each : splitFields(message, soh)) {
        if (each.starts_with(tag + "=")) {
            return each.substr(tag.size() + 1);
        }
    }
    return {};
}

bool isAdmin(std::string const& message) {
    std::string const type = valueOf(message, "35");
    return type.size() == 1 && std::string("0A12345").find(type) != std::string::npos;
}

std::string expanded(std::string text) {
    for (std::size_t start = text.find('{'); start != std::string::npos;
         start = text.find('{', start + 1)) {
        std::size_t const end = text.find('}', start);
        std::string const value = placeholder(text.substr(start + 1, end - start - 1));
        if (end != std::string::npos && !value.empty()) {
            text.replace(start, end - start + 1, value);
        }
    }
    return text;
}

std::string composed(Identity const& identity, int number, std::string const& type,
                     std::string const& fields) {
    std::map<std::string, std::string> header = {{"8", identity.beginString},
                                                 {"9", "{length}"},
                                                 {"35", type},
                                                 {"34", std::to_string(number)},
                                                 {"49", identity.sender},
                                                 {"56", identity.target},
                                                 {"52", utcTime(0)},
                                                 {"10", "{sum}"}};
    std::string body;
    for (std::string const& each : splitFields(fields, '|')) {
        std::string const tag = each.substr(0, each.find('='));
        // Within data there may be what looks like a field of the header.
        if (body.empty() && each.starts_with("!")) {
            header.erase(each.substr(1));
        } else if (body.empty() && header.count(tag) != 0 && each != tag) {
            header[tag] = each.substr(tag.size() + 1);
        } else {
            body += each + soh;
        }
    }
    std::string inner;
    for (char const* tag : {"35", "34", "49", "56", "52"}) {
        inner += field(header, tag);
    }
    inner += body;
    std::string message =
        field(header, "8") +
        withNumber(field(header, "9"), "length", static_cast<long>(inner.size()), 0) + inner;
    return message + withNumber(field(header, "10"), "sum", checkSum(message), 3);
}

namespace {

std::string missing(std::vector<std::string>& present, std::string const& wanted) {
    std::size_t const sign = wanted.find_first_of("=~");
    std::string const tag = wanted.substr(0, sign);
    std::string const value = sign == std::string::npos ? "" : wanted.substr(sign + 1);
    auto const found = std::ranges::find_if(
        present, [&](std::string const& each) { return each.starts_with(tag + "="); });
    if (found == present.end()) {
        return tag + " is not there";
    }
    std::string const actual = found->substr(tag.size() + 1);
    // The next mention of the tag is about its next appearance.
    present.erase(found);
    bool const isRight = sign != std::string::npos && wanted[sign] == '~'
                             ? actual.find(value) != std::string::npos
                             : value == "*" || actual == value;
    return isRight ? "" : tag + " is " + actual;
}

} // namespace

std::string mismatch(std::string const& message, std::string wanted) {
    std::vector<std::string> present = splitFields(message, soh);
    std::string const type = takeWord(wanted);
    if (type != "*" && valueOf(message, "35") != type) {
        return "35 is " + valueOf(message, "35");
    }
    for (std::string const& each : splitFields(wanted, '|')) {
        bool const isAbsence = each.starts_with("!");
        std::string const fault = missing(present, isAbsence ? each.substr(1) + "=*" : each);
        if (isAbsence == fault.empty()) {
            return isAbsence ? each.substr(1) + " is there" : fault;
        }
    }
    return {};
}

unsigned checkSum(std::string const& bytes) {
    unsigned sum = 0;
    for (char const each : bytes) {
        sum += static_cast<unsigned char>(each);
    }
    return sum % 256;
}

} // namespace zan::conformance
