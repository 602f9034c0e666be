/// Builds the benchmarks' orders with the library's own classes.
#ifndef ZANENGINE_BENCHMARKS_MODEL_H
#define ZANENGINE_BENCHMARKS_MODEL_H

#include "infra/counted_ptr.h"
#include "message/ZANFieldGroup.h"
#include "message/ZANMessage.h"

#include <vector>

namespace model {

/// A body with its fields, and with its repeating groups when `grouped`.
counted_ptr<ZANFieldGroup> newBody(bool grouped);

/// The same as an application sends it.
counted_ptr<ZANMessage> newOrder(bool grouped);

/// Tags of the plain order's body, at random but the same in every run, so that no branch
/// predictor learns them.
std::vector<int> randomBodyTags(int count);

} // namespace model

#endif
