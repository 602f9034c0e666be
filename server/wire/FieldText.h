/// A message as text: `tag=value` after `tag=value`, separated by SOH or, for people, by `|`.
///
/// Threads: values and functions without shared state.
#ifndef ZANENGINE_SERVER_WIRE_FIELDTEXT_H
#define ZANENGINE_SERVER_WIRE_FIELDTEXT_H

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
struct WireField {
    int tag = 0;
    std::string_view value;
};

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

/// Walks over the fields of a text, in one pass.
class FieldCursor {
public:
    FieldCursor(std::string_view text, char separator, Reading reading);

    /// Moves to the next field; false at the end. The first call moves to the first field.
    bool next();
    WireField const& field() const { return field_; }

private:
    bool readField(std::string_view token);
    bool readTag(std::string_view digits);
    std::string_view takeToken();
    std::size_t endOfToken() const;
    bool refuse(std::string_view token, char const* reason) const;

    std::string_view rest_;
    WireField field_;
    char separator_;
    bool isStrict_;
    int dataTag_ = 0;
    std::size_t dataLength_ = 0;
    int position_ = 0;
};

/// The first value of a tag in the text of a message from the wire; empty when it is not there.
std::string_view valueOf(std::string_view message, int tag);

} // namespace zan::server

#endif
