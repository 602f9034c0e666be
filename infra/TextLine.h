/// Collects the pieces of a line of text and writes them to a stream at once.
#ifndef ZANENGINE_INFRA_TEXTLINE_H
#define ZANENGINE_INFRA_TEXTLINE_H

#include "infra/Value.h"

#include <cstddef>
#include <iosfwd>
#include <string_view>

namespace zan {

/// Numbers are decimal, whatever format the stream is set to. The text reaches the stream when the
/// buffer is full, with `write()` and with `end()`; each of them throws what the stream throws.
class TextLine {
public:
    explicit TextLine(std::ostream& os) : os_(os) {}
    TextLine(TextLine const&) = delete;
    TextLine& operator=(TextLine const&) = delete;

    TextLine& add(std::string_view text);
    TextLine& add(int number);

    /// The value's text form, by the installed presentation.
    TextLine& add(Value const& value);

    TextLine& addBlanks(std::size_t count);

    /// Writes what was added, without an end of line.
    void write();

    /// Ends the line and flushes the stream.
    void end();

private:
    std::ostream& os_;
    std::size_t size_ = 0;
    char text_[256];
};

} // namespace zan

#endif
