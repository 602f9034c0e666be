#include "server/wire/OutgoingMessage.h"

#include "message/ZANMessage.h"
#include "server/wire/FieldText.h"
#include "server/wire/GroupReader.h"
#include "server/wire/GroupWriter.h"

#include <algorithm>
#include <iterator>

namespace zan::server {

namespace {

bool isSetByEngine(int tag) {
    constexpr int tags[] = {8,
                            9,
                            10,
                            34,
                            messageTypeTag,
                            49,
                            52,
                            56,
                            ZANMessage::TIME_STAMP_TAG,
                            ZANMessage::CONNECTION_MESSAGE_ID_TAG,
                            ZANMessage::STREAM_TAG};
    return std::ranges::find(tags, tag) != std::end(tags);
}

FixFields bodyOf(ZANFieldGroup const& message, std::string const& type,
                 CompiledDictionary const& dictionary) {
    return writeFields(message, type, dictionary, [](int tag) { return !isSetByEngine(tag); });
}

std::string typeOf(ZANFieldGroup const& message) {
    counted_ptr<ZANField> const field = message.getField(messageTypeTag);
    return field ? field->getValue().asString() : std::string();
}

} // namespace

bool OutgoingMessage::isAdmin() const {
    return type.size() == 1 && std::string_view("012345A").find(type.front()) != std::string::npos;
}

OutgoingMessage outgoingFromText(std::string_view text, CompiledDictionary const& dictionary) {
    char const separator =
        text.find(fieldSeparator) == std::string_view::npos ? '|' : fieldSeparator;
    counted_ptr<ZANFieldGroup> const model =
        readMessage(text, separator, Reading::Strict, dictionary);
    OutgoingMessage message{typeOf(*model), {}};
    FieldCursor cursor(text, separator, Reading::Strict);
    while (cursor.next()) {
        if (!isSetByEngine(cursor.tag())) {
            message.body.emplace_back(cursor.tag(), std::string(cursor.value()),
                                      dictionary.placeOf(cursor.tag()));
        }
    }
    return message;
}

OutgoingMessage outgoingFromModel(ZANFieldGroup const& message,
                                  CompiledDictionary const& dictionary) {
    std::string const type = typeOf(message);
    if (type.empty()) {
        throw MalformedMessage("tag 35, the type of the message, is missing");
    }
    return {type, bodyOf(message, type, dictionary)};
}

FixFields logonFieldsFromModel(ZANFieldGroup const& fields, CompiledDictionary const& dictionary) {
    std::string const type = typeOf(fields);
    if (!type.empty() && type != "A") {
        throw MalformedMessage("tag 35: the fields of a Logon cannot be of message type " + type);
    }
    return bodyOf(fields, "A", dictionary);
}

} // namespace zan::server
