/// Walks over the fields of a framed FIX message, data fields that contain SOH included.
#ifndef ZANENGINE_SERVER_SESSIONS_FIXSCANNER_H
#define ZANENGINE_SERVER_SESSIONS_FIXSCANNER_H

#include <cstddef>
#include <string>

namespace zan {
namespace server {

/// The length of "10=123|", the end of every message.
std::size_t const trailerLength = 7;

/// Uses the message in place: it must live, unchanged, as long as the scanner.
class FixScanner {
public:
    explicit FixScanner(std::string const& message) : message_(message) {}

    /// Moves to the next field. False at the end, and where the bytes are no field: then
    /// `malformed` is true.
    bool next();

    int tag() const { return tag_; }
    /// Where the field after this one begins.
    std::size_t position() const { return position_; }
    std::string value() const { return message_.substr(valueStart_, valueEnd_ - valueStart_); }
    bool malformed() const { return malformed_; }

    /// The data tag that the length in this tag belongs to; 0 when it is no such length.
    static int dataTagOf(int lengthTag);

private:
    bool readTag();
    bool readValue();
    void noteLength();

    std::string const& message_;
    std::size_t position_ = 0;
    std::size_t valueStart_ = 0;
    std::size_t valueEnd_ = 0;
    std::size_t dataLength_ = 0;
    int dataTag_ = 0;
    int tag_ = 0;
    bool malformed_ = false;
};

/// The value of a tag's first appearance in a message; empty when it has none.
std::string fixValue(std::string const& message, int tag);

} // namespace server
} // namespace zan

#endif
