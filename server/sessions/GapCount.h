/// Counts what QuickFIX keeps of the counterparty's messages until a gap before them is filled.
#ifndef ZANENGINE_SERVER_SESSIONS_GAPCOUNT_H
#define ZANENGINE_SERVER_SESSIONS_GAPCOUNT_H

#include <cstddef>
#include <map>
#include <string>

namespace zan {
namespace server {

/// QuickFIX keeps them without bound, each under its number, until that number is expected or the
/// link ends. One thread at a time.
class GapCount {
public:
    /// More than this is more than a session keeps.
    static std::size_t const mostBytes = 128 * 1024 * 1024;

    void keep(int number, std::size_t textSize, bool isAdmin);
    void release(int number);
    void clear();

    std::size_t bytes() const { return bytes_; }
    bool isTooMuch() const { return bytes_ > mostBytes; }
    /// For people: what is too much.
    std::string reason(int expected) const;

private:
    std::map<int, std::size_t> sizes_;
    std::size_t bytes_ = 0;
};

} // namespace server
} // namespace zan

#endif
