#include "message/ZANField.h"

#include "message/FieldText.h"

ZANField::ZANField(int tag, int type, Value const& value) : tag_(tag), type_(type), value_(value) {}

int ZANField::getTag() const {
    return tag_;
}

int ZANField::getType() const {
    return type_;
}

Value const& ZANField::getValue() const {
    return value_;
}

void ZANField::setTag(int tag) {
    tag_ = tag;
}

void ZANField::setType(int type) {
    type_ = type;
}

void ZANField::setValue(Value const& value) {
    value_ = value;
}

ZANField& ZANField::operator=(ZANField const& other) {
    setTag(other.getTag());
    setType(other.getType());
    setValue(other.getValue());
    return *this;
}

bool ZANField::operator==(ZANField const& other) const {
    return getTag() == other.getTag() && getType() == other.getType() &&
           getValue() == other.getValue();
}

// Not the negation of operator==: a value may answer the two on its own.
bool ZANField::operator!=(ZANField const& other) const {
    return getTag() != other.getTag() || getType() != other.getType() ||
           getValue() != other.getValue();
}

std::ostream& operator<<(std::ostream& os, ZANField const& field) {
    zan::TextLine line(os);
    zan::addField(line, field);
    line.write();
    return os;
}
