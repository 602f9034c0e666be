/// Cuts the bytes of a link into FIX messages.
///
/// Whatever comes in, the memory in use is bounded by the longest message that is taken, and the
/// work is linear in the bytes. One thread at a time.
#ifndef ZANENGINE_SERVER_SESSIONS_FIXFRAMER_H
#define ZANENGINE_SERVER_SESSIONS_FIXFRAMER_H

#include <cstddef>
#include <string>

namespace zan {
namespace server {

class FixFramer {
public:
    enum class Result {
        message,    ///< a whole message, its length and checksum are right
        incomplete, ///< more bytes are needed
        garbage     ///< bytes were dropped, `fault` tells why; the next message may follow
    };

    /// A message that declares more body bytes than this is garbage.
    static std::size_t const longestBody = 16 * 1024 * 1024;
    /// Of garbage that is dropped at once, no more than this is handed on.
    static std::size_t const mostShown = 4096;

    /// With false the length and the checksum that a message tells need not be right: it ends with
    /// the first field that looks like a checksum, where the length leads to none.
    void setStrict(bool isStrict) { isStrict_ = isStrict; }

    void append(char const* bytes, std::size_t count);

    /// Takes the next message out; `fault` is set for `garbage` only, `message` is then what was
    /// dropped, or the beginning of it.
    Result next(std::string& message, std::string& fault);

    /// Forgets what was appended, for a new link.
    void clear();

private:
    Result drop(std::size_t count, std::string const& why, std::string& dropped,
                std::string& fault);
    Result dropToNext(std::size_t from, std::string const& why, std::string& dropped,
                      std::string& fault);
    std::size_t fieldEnd(std::size_t start) const;
    bool parseLength(std::size_t lengthStart, std::size_t lengthEnd, std::size_t& length) const;
    std::size_t trailerFrom(std::size_t bodyStart, std::size_t told) const;
    Result takeFrame(std::size_t bodyStart, std::size_t bodyLength, std::string& message,
                     std::string& fault);

    std::string buffer_;
    std::size_t begin_ = 0;
    bool isStrict_ = true;
};

} // namespace server
} // namespace zan

#endif
