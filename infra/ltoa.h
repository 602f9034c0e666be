/// `ltoa`: a number in decimal, written into a buffer of the caller's.
///
/// Threads: any; nothing is shared but the buffer.
#ifndef ZANENGINE_INFRA_LTOA_H
#define ZANENGINE_INFRA_LTOA_H

#include "infra/Export.h"

#include <limits>

/// Room for the decimal text of any `long`: one digit more than every value can fill, the sign and
/// the zero at the end.
using Ltoabuf = char[std::numeric_limits<long>::digits10 + 3];

/// Writes `number` in decimal, with a leading minus sign when it is negative and a zero at the end.
/// Returns the start of `buffer`. Throws nothing.
ZAN_API char* ltoa(long number, Ltoabuf& buffer);

#endif
