/// An order with twelve short fields, and what the tests ask about the memory of this process.
#ifndef ZANENGINE_TESTS_PERFORMANCE_TESTORDER_H
#define ZANENGINE_TESTS_PERFORMANCE_TESTORDER_H

#include "infra/counted_ptr.h"
#include "message/ZANFieldGroup.h"
#include "message/ZANMessage.h"

#include <cstdint>

/// Every text fits into a field, so that only the model's own storage is measured.
counted_ptr<ZANFieldGroup> newOrderBody();

counted_ptr<ZANMessage> newOrder();

/// The resident memory of this process in bytes.
std::int64_t residentBytes();

/// How far the resident memory may grow while as much is freed as is built: what free lists and the
/// heap hold back, which does not depend on how long it goes on.
inline constexpr std::int64_t allowedGrowth = 4 * 1024 * 1024;

#endif
