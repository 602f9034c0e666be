/// What the benchmarks ask of QuickFIX. Its headers need an older language level than ours, so
/// they are read by one source only, behind these functions.
#ifndef ZANENGINE_BENCHMARKS_QUICKFIXPEER_H
#define ZANENGINE_BENCHMARKS_QUICKFIXPEER_H

#include <cstddef>
#include <iosfwd>

namespace quickfix {

/// `ready` hands every field its text; `typed` hands over the values that an application has and
/// lets the fields make text of them.
enum class Values { ready, typed };

/// Build an order, plain or with its groups, on the stack, and destroy it.
void buildAndDestroy(bool grouped, Values values);

/// An order on the heap; `destroy` takes it back.
void* newOrder(bool grouped, Values values);
void destroy(void* message);

/// Deep copy on the stack, and its destruction.
void copyAndDestroy(void const* message);

/// Looks every tag up by reference and returns a sum over the lengths of the texts found.
std::size_t lookUp(void const* message, int const* tags, std::size_t count);

/// Looks at each field of the body and returns the last tag.
int walk(void const* message);

void print(std::ostream& os, void const* message);

} // namespace quickfix

#endif
