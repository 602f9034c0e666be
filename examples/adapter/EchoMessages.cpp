#include "EchoMessages.h"

#include "errors/ZANUtilityFunctions.h"

#include <algorithm>
#include <charconv>

namespace {

[[noreturn]] void refuse(std::string const& reason) {
    ZANUtilityFunctions::throwConcreteRemoteException(
        "kestrow.moravane.message.ZANInvalidMessageException", reason);
}

void demandType(ZANFieldGroup const& body) {
    if (!body.isFieldPresent(35)) {
        refuse("the message has no type (tag 35)");
    }
}

void addField(ZANFieldGroup& body, std::string const& field) {
    std::size_t const equals = field.find('=');
    int tag = 0;
    char const* const end = field.data() + (equals == std::string::npos ? 0 : equals);
    if (std::from_chars(field.data(), end, tag).ptr != end || tag <= 0 ||
        equals + 1 == field.size()) {
        refuse("\"" + field + "\" is not a field of the form tag=value");
    }
    body.setFieldValue(tag, field.substr(equals + 1));
}

} // namespace

counted_ptr<ZANFieldGroup> copyOfBody(counted_ptr<ZANMessage> const& message) {
    if (!message || !message->getFieldGroup()) {
        refuse("the message has no body");
    }
    demandType(*message->getFieldGroup());
    return counted_ptr<ZANFieldGroup>(new ZANFieldGroup(*message->getFieldGroup()));
}

counted_ptr<ZANFieldGroup> readBody(std::string const& text) {
    counted_ptr<ZANFieldGroup> body(new ZANFieldGroup);
    for (std::size_t begin = 0; begin < text.size();) {
        std::size_t const end = std::min(text.find_first_of("|\x01", begin), text.size());
        addField(*body, text.substr(begin, end - begin));
        begin = end + 1;
    }
    demandType(*body);
    return body;
}
