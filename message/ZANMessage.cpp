#include "message/ZANMessage.h"

#include <utility>

ZANMessage::ZANMessage() = default;

ZANMessage::ZANMessage(counted_ptr<ZANFieldGroup> fieldGroup)
    : fieldGroup_(std::move(fieldGroup)) {}

ZANMessage::ZANMessage(ZANMessage const& other) = default;

ZANMessage& ZANMessage::operator=(ZANMessage const& other) = default;

ZANMessage::~ZANMessage() = default;

void ZANMessage::setFieldGroup(counted_ptr<ZANFieldGroup> fieldGroup) {
    fieldGroup_ = std::move(fieldGroup);
}

counted_ptr<ZANFieldGroup> ZANMessage::getFieldGroup() {
    return fieldGroup_;
}

counted_ptr<ZANFieldGroup> ZANMessage::getFieldGroup() const {
    return fieldGroup_;
}

double ZANMessage::getTimeStamp() const {
    return getFieldGroup()->getField(TIME_STAMP_TAG)->getValue().asDouble();
}

int ZANMessage::getConnectionMessageId() const {
    return getFieldGroup()->getField(CONNECTION_MESSAGE_ID_TAG)->getValue().asInt();
}

int ZANMessage::getStream() const {
    return getFieldGroup()->getField(STREAM_TAG)->getValue().asInt();
}

std::ostream& operator<<(std::ostream& os, ZANMessage const& message) {
    return os << *message.getFieldGroup();
}
