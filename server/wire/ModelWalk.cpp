#include "server/wire/ModelWalk.h"

namespace zan::server::refusal {

namespace {

std::string tagText(int tag) {
    return "tag " + std::to_string(tag);
}

} // namespace

void badTag(int tag) {
    throw MalformedMessage(tagText(tag) + ": a tag has to be a positive number");
}

void emptyValue(int tag) {
    throw MalformedMessage(tagText(tag) + " has an empty value");
}

void separatorInside(int tag) {
    throw MalformedMessage(tagText(tag) + " holds the separator (SOH) of fields in its value");
}

void wrongCount(int tag, std::string_view told, std::size_t instances) {
    throw MalformedMessage(tagText(tag) + " tells " + std::string(told) +
                           " instances of its group, but their number is " +
                           std::to_string(instances));
}

void dataMissing(int lengthTag, int dataTag) {
    throw MalformedMessage(tagText(lengthTag) + " tells the length of " + tagText(dataTag) +
                           ", which is missing");
}

void wrongLength(int lengthTag, std::string_view told, int dataTag, std::size_t length) {
    throw MalformedMessage(tagText(lengthTag) + " tells a length of " + std::string(told) +
                           ", but " + tagText(dataTag) + " has " + std::to_string(length) +
                           " characters");
}

void delimiterMissing(int delimiter, int groupTag) {
    throw MalformedMessage(tagText(delimiter) + " is missing in an instance of group " +
                           std::to_string(groupTag) + ", which has to begin with it");
}

void emptyInstance(int groupTag) {
    throw MalformedMessage(tagText(groupTag) + ": an instance of its group is an empty pointer");
}

void stranger(int tag, int groupTag, std::string_view type) {
    std::string place =
        groupTag == 0 ? "no such group in message type "
                      : "no such member of group " + std::to_string(groupTag) + " in message type ";
    throw MalformedMessage(tagText(tag) + ": the session's dictionary knows " + place.append(type) +
                           "; a DataDictionary that knows it would be right");
}

} // namespace zan::server::refusal
