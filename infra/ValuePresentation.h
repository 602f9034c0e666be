/// `ValuePresentation`: how values are written as text and read from it, for the whole process.
///
/// Threads: the installed instance is used by every thread that prints a value, so its operations
/// must be safe to call from several threads at once.
#ifndef ZANENGINE_INFRA_VALUEPRESENTATION_H
#define ZANENGINE_INFRA_VALUEPRESENTATION_H

#include "infra/Export.h"
#include "infra/TSingleton.h"

#include <string>

class Value;

/// The text form of values. The engine proxy installs a `ValueDefaultPresentation` when it starts
/// and none is installed; an application may install its own before with `initialize`. With none
/// installed values print as `ValueDefaultPresentation` prints them.
///
/// An implementation reads the value with `asLong`, `asDouble`, `asBool`, `asChar` and
/// `asStringView`. It must not ask the value for `asString` nor stream it: these come back to the
/// installed presentation.
class ZAN_API ValuePresentation : public TSingleton<ValuePresentation> {
public:
    ValuePresentation() = default;
    ValuePresentation(ValuePresentation const&) = default;
    ValuePresentation& operator=(ValuePresentation const&) = default;
    virtual ~ValuePresentation();

    /// The name of a type code.
    virtual std::string getPresentationForType(int type) = 0;

    /// The type code of a name.
    virtual int getTypeByPresentation(std::string const& name) = 0;

    /// Replaces `text` by the text form of `value`; returns `text`.
    virtual std::string& fillStringFromValue(Value const& value, std::string& text) = 0;

    /// Gives `value` the type `type` and the payload that `text` tells; returns `value`.
    virtual Value& fillValueFromString(std::string const& text, Value& value, int type) = 0;

    /// Whether values of the type are numbers.
    virtual bool isTypeNumeric(int type) = 0;

    /// Whether a value of the type may be read as a number.
    virtual bool canHaveNumericRepresentation(int type) = 0;
};

extern template class TSingleton<ValuePresentation>;

/// The presentation that the library comes with: numbers in decimal, a double in the shortest form
/// that reads back to the same value and without an exponent between 1e-5 and 1e15, a bool as `Y`
/// or `N`, strings and chars as they are. Type names are "long", "double", "string", "bool",
/// "char". Unknown types, unknown names and text that does not fit the type throw `InfraException`.
class ZAN_API ValueDefaultPresentation : public ValuePresentation {
public:
    ValueDefaultPresentation() = default;
    ValueDefaultPresentation(ValueDefaultPresentation const&) = default;
    ValueDefaultPresentation& operator=(ValueDefaultPresentation const&) = default;
    ~ValueDefaultPresentation() override;

    std::string getPresentationForType(int type) override;
    int getTypeByPresentation(std::string const& name) override;
    std::string& fillStringFromValue(Value const& value, std::string& text) override;
    Value& fillValueFromString(std::string const& text, Value& value, int type) override;

    /// True for long and double.
    bool isTypeNumeric(int type) override;

    /// True for every type: text and characters can spell a number, a bool is 1 or 0.
    bool canHaveNumericRepresentation(int type) override;
};

#endif
