/// Times as people write them, in the form in which the log has them.
///
/// Threads: functions without shared state.
#ifndef ZANENGINE_APPS_ZAN_LOGTIMES_H
#define ZANENGINE_APPS_ZAN_LOGTIMES_H

#include "infra/Time.h"

#include <string>

namespace zan::cli {

/// What the help says of times.
inline constexpr char const* timeForms =
    "20261121, 20261121-09:30, today 09:30, 2026-11-21T09:30Z (all UTC), or -5m for five minutes "
    "ago (s, m, h, d)";

/// The beginning of a time as the log writes it, `20261121-09:30`. Read are the log's own form, in
/// whole or in part; a time without a day, which is of today; the form of ISO 8601,
/// `2026-11-21T09:30:00.123+01:00`, UTC without an offset; and `-5m`, before `now`. Empty for an
/// empty text; throws `UsageError` for anything else.
std::string timeBeginning(std::string const& text, infra::Time now = infra::Time::now());

} // namespace zan::cli

#endif
