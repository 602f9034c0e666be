/// What the benchmarks ask of QuickFIX. Its headers need an older language level than ours, so
/// they are read by one source only, behind these functions.
#ifndef ZANENGINE_BENCHMARKS_QUICKFIXPEER_H
#define ZANENGINE_BENCHMARKS_QUICKFIXPEER_H

#include <cstddef>
#include <iosfwd>
#include <string>

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

/// Replaces `text` by the text of the message.
void write(void const* message, std::string& text);

void buildWriteAndDestroy(bool grouped, Values values, std::string& text);

/// `lengthAndChecksum`: whether the text's own length and checksum are true.
enum class Checks { none, lengthAndChecksum };

/// Reads an order from its text, with a dictionary that knows its groups, on the stack, and
/// destroys it.
void parseAndDestroy(std::string const& text, Checks checks);

} // namespace quickfix

#endif
