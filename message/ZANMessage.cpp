#include "message/ZANMessage.h"

#include <utility>

namespace {

constexpr int timeStampTag = 16577;
constexpr int connectionMessageIdTag = 16580;

} // namespace

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
    return getFieldGroup()->getField(timeStampTag)->getValue().asDouble();
}

int ZANMessage::getConnectionMessageId() const {
    return getFieldGroup()->getField(connectionMessageIdTag)->getValue().asInt();
}

std::ostream& operator<<(std::ostream& os, ZANMessage const& message) {
    return os << *message.getFieldGroup();
}
