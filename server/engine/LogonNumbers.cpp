#include "server/engine/LogonNumbers.h"

#include "server/sessions/SequenceNumbers.h"
#include "server/wire/FieldText.h"

namespace zan::server {

namespace {

constexpr int nextOutTag = 34;
constexpr int nextInTag = 789;
constexpr int resetTag = 141;

[[noreturn]] void refuse(int tag, std::string const& value, std::string const& right) {
    throw MalformedMessage("tag " + std::to_string(tag) + ": " + value + right);
}

std::optional<int> numberIn(ZANFieldGroup const& fields, int tag) {
    if (!fields.has(tag)) {
        return std::nullopt;
    }
    std::string const text = fields.getString(tag);
    int const number = sequenceNumberIn(text);
    if (number < 1 || number > largestSequenceNumber) {
        refuse(tag, "\"" + text + "\" is no sequence number",
               "; a whole number from 1 to " + std::to_string(largestSequenceNumber) +
                   " would be right");
    }
    return number;
}

void requireOne(std::optional<int> number, int tag) {
    if (number.value_or(1) != 1) {
        refuse(tag, std::to_string(*number),
               " does not go with 141=Y, which sets both numbers to 1; no tag " +
                   std::to_string(tag) + " would be right");
    }
}

} // namespace

LogonNumbers logonNumbersOf(ZANFieldGroup const& fields) {
    LogonNumbers const numbers{numberIn(fields, nextOutTag), numberIn(fields, nextInTag),
                               fields.getString(resetTag) == "Y"};
    std::string const flag = fields.getString(resetTag, "N");
    if (flag != "Y" && flag != "N") {
        refuse(resetTag, "\"" + flag + "\" is no flag", "; Y or N would be right");
    }
    if (numbers.isReset) {
        requireOne(numbers.nextOut, nextOutTag);
        requireOne(numbers.nextIn, nextInTag);
    }
    return numbers;
}

FixFields withoutNumbers(FixFields fields) {
    std::erase_if(fields, [](FixField const& field) {
        return field.tag == nextOutTag || field.tag == nextInTag ||
               (field.tag == resetTag && field.value == "Y");
    });
    return fields;
}

} // namespace zan::server
