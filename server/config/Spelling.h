/// Which of some known words a misspelt one was meant to be.
///
/// Threads: functions without shared state.
#ifndef ZANENGINE_SERVER_CONFIG_SPELLING_H
#define ZANENGINE_SERVER_CONFIG_SPELLING_H

#include <string_view>
#include <vector>

namespace zan::server {

/// Whether two letters differ in their case at most.
bool sameLetter(char left, char right);

/// The nearest of the known words, whatever the case of its letters; empty when none is near: at
/// most a third of the letters may be changed, added or left out, one in a short word.
std::string_view nearestWord(std::string_view word, std::vector<std::string_view> const& known);

} // namespace zan::server

#endif
