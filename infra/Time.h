/// `infra::Time`: a point in time, counted in milliseconds since 1970-01-01 00:00:00 UTC.
///
/// Threads: a value; one object belongs to one thread at a time, copies are independent.
#ifndef ZANENGINE_INFRA_TIME_H
#define ZANENGINE_INFRA_TIME_H

#include "infra/Export.h"

#include <cstdint>
#include <string>

namespace infra {

class ZAN_API Time {
public:
    /// 1970-01-01 00:00:00 UTC.
    Time();

    /// Every count is a time, earlier ones than 1970 are negative.
    explicit Time(std::int64_t millis);

    /// The present, by the system's clock.
    static Time now();

    /// Reads `YYYYMMDD-HH:MM:SS.sss` or, without milliseconds, `YYYYMMDD-HH:MM:SS`, both in UTC.
    /// Throws `InfraException` for any other text, and for a day or an hour that does not exist; a
    /// leap second counts among those. The message tells what is wrong and where.
    static Time fromString(std::string const& text);

    /// The time as `YYYYMMDD-HH:MM:SS.sss` in UTC, which `fromString` reads back to the same time.
    /// Throws `InfraException` when the year does not lie between 0000 and 9999.
    std::string toString() const;

    std::int64_t getMillis() const;

    /// The earlier time is the lesser one.
    friend bool operator==(Time left, Time right) { return left.millis_ == right.millis_; }
    friend bool operator!=(Time left, Time right) { return left.millis_ != right.millis_; }
    friend bool operator<(Time left, Time right) { return left.millis_ < right.millis_; }
    friend bool operator<=(Time left, Time right) { return left.millis_ <= right.millis_; }
    friend bool operator>(Time left, Time right) { return left.millis_ > right.millis_; }
    friend bool operator>=(Time left, Time right) { return left.millis_ >= right.millis_; }

private:
    std::int64_t millis_ = 0;
};

} // namespace infra

#endif
