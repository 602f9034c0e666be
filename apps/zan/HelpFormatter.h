/// The help of a command as text for a terminal.
///
/// Threads: one at a time.
#ifndef ZANENGINE_APPS_ZAN_HELPFORMATTER_H
#define ZANENGINE_APPS_ZAN_HELPFORMATTER_H

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace CLI {
class FormatterBase;
}

namespace zan::cli {

/// How wide a line of the help is at most.
inline constexpr std::size_t helpWidth = 80;

/// The lines of a text, none wider than `helpWidth` as far as blanks allow it. What goes on in the
/// next line begins below what it belongs to: the text of an option in its column, and other lines
/// where they began.
std::string wrapped(std::string_view text);

/// What a program or a command makes its help with.
std::shared_ptr<CLI::FormatterBase> helpFormatter();

} // namespace zan::cli

#endif
