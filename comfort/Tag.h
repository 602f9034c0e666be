/// `zan::Tag`: a tag together with the type of its values, so that a wrong value does not compile.
/// `comfort/Tags.h` has those of FIX by name; a counterparty's own are declared in the same way:
///
///     constexpr zan::Tag<double> Markup{5001};
///
/// Threads: constants.
#ifndef ZANENGINE_COMFORT_TAG_H
#define ZANENGINE_COMFORT_TAG_H

#include "infra/Time.h"

#include <string>

namespace zan {

/// `T` is what `FieldReader::get` gives: `std::string`, `double`, `long`, `bool`, `char`,
/// `infra::Time` or an enumeration of `char` or `int`.
template <class T>
struct Tag {
    int number;

    /// So it stands wherever a tag is a number: `group.getField(zan::tag::Symbol)`.
    constexpr operator int() const { return number; }
};

/// The tag of a repeating group. It has no value: the number of instances is counted.
struct GroupTag {
    int number;

    constexpr operator int() const { return number; }
};

} // namespace zan

#endif
