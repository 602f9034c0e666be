/// Walks over the fields of a framed FIX message, data fields that contain SOH included.
#ifndef ZANENGINE_SERVER_SESSIONS_FIXSCANNER_H
#define ZANENGINE_SERVER_SESSIONS_FIXSCANNER_H

#include <cstddef>
#include <string>

namespace zan {
namespace server {

/// The length of "10=123|", the end of every message.
std::size_t const trailerLength = 7;

/// What may be wrong with the bytes where a field is expected.
enum class FieldFault {
    none,
    noTag,      ///< no `=`, or no positive number before it
    noValue,    ///< nothing behind the `=`
    wrongLength ///< data that is not as long as the field before it tells
};

/// Uses the message in place: it must live, unchanged, as long as the scanner.
class FixScanner {
public:
    explicit FixScanner(std::string const& message) : message_(message) {}

    /// Moves to the next field, also where that is none: then `fault` tells why. False at the end.
    bool next();
    /// The same, but passes over what is no field.
    bool nextGood();

    /// What is wrong with this field.
    FieldFault fault() const { return fault_; }
    /// The tag, also of a field with a fault where it is a number; `noNumber` where it is none.
    int tag() const { return tag_; }
    static int const noNumber = -0x7fffffff;
    /// Where the field after this one begins.
    std::size_t position() const { return position_; }
    std::string value() const { return message_.substr(valueStart_, valueEnd_ - valueStart_); }

private:
    bool readTag(std::size_t end);
    void readValue(std::size_t end);
    void noteLength();

    std::string const& message_;
    std::size_t position_ = 0;
    std::size_t valueStart_ = 0;
    std::size_t valueEnd_ = 0;
    std::size_t dataLength_ = 0;
    int dataTag_ = 0;
    int tag_ = 0;
    FieldFault fault_ = FieldFault::none;
};

/// The value of a tag's first appearance in a message; empty when it has none.
std::string fixValue(std::string const& message, int tag);

} // namespace server
} // namespace zan

#endif
