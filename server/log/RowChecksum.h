/// A checksum over what a row of the log must keep as it was written.
///
/// Threads: one object belongs to one thread.
#ifndef ZANENGINE_SERVER_LOG_ROWCHECKSUM_H
#define ZANENGINE_SERVER_LOG_ROWCHECKSUM_H

#include <cstdint>
#include <string_view>

namespace zan::server {

/// Two rows that differ in one place only never have the same sum; others hardly ever do.
class RowChecksum {
public:
    void add(std::int64_t number);

    /// Its length counts too, so that bytes cannot move from one text to the next.
    void add(std::string_view bytes);

    std::int64_t value() const;

private:
    void mix(std::uint64_t word);

    std::uint64_t state_ = 0x243f6a8885a308d3;
};

} // namespace zan::server

#endif
