/// What the standard streams are connected to, and how text is made fit for it.
///
/// Threads: functions without shared state.
#ifndef ZANENGINE_APPS_ZAN_TERMINAL_H
#define ZANENGINE_APPS_ZAN_TERMINAL_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace zan::cli {

/// Whether this descriptor is a terminal.
bool isTerminal(int descriptor);

/// How many columns the terminal at this descriptor has; nothing when it is no terminal.
std::optional<std::size_t> terminalWidth(int descriptor);

/// What the setting `auto`, `always` or `never` means for this descriptor. `auto`: on a terminal,
/// unless the environment has a NO_COLOR that is not empty or the terminal is `dumb`.
bool wantsColor(std::string const& setting, int descriptor);

/// Bytes of a message as text that can do no harm to a terminal: SOH is `|`, other control
/// characters (also DEL and U+0080 to U+009F) and bytes that are no UTF-8 are `\x` and two digits,
/// the marks that turn the direction of a text or end a line are `\u` and four.
std::string printable(std::string_view bytes);

/// A line of JSON in which the same characters, as far as they still stand for themselves, are the
/// escape `\u` and four digits: the same JSON, in which nothing is hidden.
std::string withoutHiddenCharacters(std::string_view json);

/// How many characters of UTF-8 a text has.
std::size_t widthOf(std::string_view text);

/// The text, with an ellipsis in place of what goes beyond `width` characters.
std::string cut(std::string_view text, std::size_t width);

/// The same with the ellipsis in place of the beginning.
std::string cutBeginning(std::string_view text, std::size_t width);

/// How a piece of text stands out where there are colours.
enum class Tone { Plain, Heading, Good, Bad, Quiet };

std::string toned(std::string const& text, Tone tone, bool isColored);

} // namespace zan::cli

#endif
