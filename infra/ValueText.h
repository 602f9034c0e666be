/// The default text form of a value, written without a stream and without an allocation.
#ifndef ZANENGINE_INFRA_VALUETEXT_H
#define ZANENGINE_INFRA_VALUETEXT_H

#include "infra/Value.h"

#include <string_view>

namespace zan {

/// Room for the digits of any number.
using DigitBuffer = char[32];

/// The default text form; it lies in the value itself or at the beginning of `digits`.
ZAN_API std::string_view defaultText(Value const& value, DigitBuffer& digits);

/// Whether values are printed by `defaultText`: no presentation is installed, or the default one.
ZAN_API bool usesDefaultText();

/// Throws the `InfraException` of a type code that no value has.
[[noreturn]] void throwUnknownType(int type);

} // namespace zan

#endif
