/// A message as text: `tag=value` after `tag=value`, separated by SOH or, for people, by `|`.
///
/// Threads: values and functions without shared state.
#ifndef ZANENGINE_SERVER_WIRE_FIELDTEXT_H
#define ZANENGINE_SERVER_WIRE_FIELDTEXT_H

#include "message/GroupAccess.h"

#include <cstddef>
#include <stdexcept>
#include <string_view>

namespace zan::server {

/// A message that cannot be sent as it is; the text names the tag and the reason.
class MalformedMessage : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

inline constexpr char fieldSeparator = '\x01';

/// One field; the value looks into the text that was read.
using WireField = TextField;

/// The tag of the field that tells the length of the data field `tag`, or 0 when `tag` is no data
/// field. The value of a data field may hold separators.
int lengthTagOf(int tag);

/// The tag of the data field whose length the field `tag` tells, or 0.
int dataTagOf(int tag);

/// How to take text that is not as it should be.
enum class Reading {
    Strict,  ///< throws `MalformedMessage`
    Tolerant ///< passes over what is no field and goes on
};

/// Walks over the fields of a text, in one pass and in a time that grows with its length only.
class FieldCursor {
public:
    FieldCursor(std::string_view text, char separator, Reading reading);

    /// Moves to the next field; false at the end. The first call moves to the first field.
    bool next();
    WireField const& field() const { return field_; }

private:
    bool readTag();
    bool readOddTag();
    void passOver(char const* end);
    char const* endOfValue() const;
    void readLength(char const* end);
    void refuse(char const* end, char const* reason) const;

    char const* at_;
    char const* end_;
    char const* token_;
    WireField field_;
    char separator_;
    bool isStrict_;
    // The data field whose length the field before has told, or 0.
    int dataTag_ = 0;
    std::size_t dataLength_ = 0;
    int position_ = 0;
};

/// The first value of a tag in the text of a message from the wire; empty when it is not there.
std::string_view valueOf(std::string_view message, int tag);

} // namespace zan::server

#endif
