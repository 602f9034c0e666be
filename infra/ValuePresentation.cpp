#include "infra/ValuePresentation.h"

#include "infra/InfraException.h"
#include "infra/Value.h"
#include "infra/ValueText.h"

template class TSingleton<ValuePresentation>;

ValuePresentation::~ValuePresentation() = default;

ValueDefaultPresentation::~ValueDefaultPresentation() = default;

namespace {

struct TypeName {
    int type;
    char const* name;
};

constexpr TypeName typeNames[] = {
    {Value::LONG, "long"}, {Value::DOUBLE, "double"}, {Value::STRING, "string"},
    {Value::BOOL, "bool"}, {Value::CHAR, "char"},
};

} // namespace

std::string ValueDefaultPresentation::getPresentationForType(int type) {
    for (auto const& entry : typeNames) {
        if (entry.type == type) {
            return entry.name;
        }
    }
    zan::throwUnknownType(type);
}

int ValueDefaultPresentation::getTypeByPresentation(std::string const& name) {
    for (auto const& entry : typeNames) {
        if (entry.name == name) {
            return entry.type;
        }
    }
    throw InfraException(
        "\"" + name + "\" names no type of a value: types are long, double, string, bool, char.");
}

std::string& ValueDefaultPresentation::fillStringFromValue(Value const& value, std::string& text) {
    zan::DigitBuffer digits;
    return text.assign(zan::defaultText(value, digits));
}

Value& ValueDefaultPresentation::fillValueFromString(std::string const& text, Value& value,
                                                     int type) {
    Value read;
    read.setString(text);
    switch (type) {
    case Value::LONG:
        value.setLong(read.asLong());
        break;
    case Value::DOUBLE:
        value.setDouble(read.asDouble());
        break;
    case Value::STRING:
        value = std::move(read);
        break;
    case Value::BOOL:
        value.setBool(read.asBool());
        break;
    case Value::CHAR:
        value.setChar(read.asChar());
        break;
    default:
        zan::throwUnknownType(type);
    }
    return value;
}

bool ValueDefaultPresentation::isTypeNumeric(int type) {
    return type == Value::LONG || type == Value::DOUBLE;
}

bool ValueDefaultPresentation::canHaveNumericRepresentation(int type) {
    return isTypeNumeric(type) || type == Value::STRING || type == Value::BOOL ||
           type == Value::CHAR;
}
