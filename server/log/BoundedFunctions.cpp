#include "server/log/BoundedFunctions.h"

#include "server/log/Pattern.h"
#include "server/wire/FieldText.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <string_view>

namespace zan::server {

namespace {

constexpr std::size_t longestPattern = 1000;
constexpr std::size_t longestTrimmed = 1000;
constexpr int widestFormat = 9'999;
constexpr std::size_t bytesBetweenLooks = 64 * 1024;

// Ends the statement as SQLite's own look at the clock does.
struct TimeIsOver {};

using Values = sqlite3_value**;

SearchClock const& clockOf(sqlite3_context* context) {
    return *static_cast<SearchClock const*>(sqlite3_user_data(context));
}

void look(sqlite3_context* context) {
    if (clockOf(context).isOver()) {
        throw TimeIsOver();
    }
}

void fail(sqlite3_context* context, char const* reason) {
    sqlite3_result_error(context, reason, -1);
}

bool isNull(sqlite3_value* value) {
    return sqlite3_value_type(value) == SQLITE_NULL;
}

std::string_view textOf(sqlite3_value* value) {
    auto const* const bytes = reinterpret_cast<char const*>(sqlite3_value_text(value));
    return bytes ? std::string_view(bytes, static_cast<std::size_t>(sqlite3_value_bytes(value)))
                 : std::string_view();
}

std::string_view bytesOf(sqlite3_value* value) {
    auto const* const bytes = static_cast<char const*>(sqlite3_value_blob(value));
    return bytes ? std::string_view(bytes, static_cast<std::size_t>(sqlite3_value_bytes(value)))
                 : std::string_view();
}

void give(sqlite3_context* context, std::string_view text) {
    sqlite3_result_text64(context, text.data() ? text.data() : "", text.size(), SQLITE_TRANSIENT,
                          SQLITE_UTF8);
}

void seen(sqlite3_context* context, int, Values values) {
    if (!isNull(values[0])) {
        give(context, bytesOf(values[0]));
    }
}

void tagOf(sqlite3_context* context, int, Values values) {
    sqlite3_int64 const tag = sqlite3_value_int64(values[1]);
    if (sqlite3_value_type(values[1]) != SQLITE_INTEGER || tag <= 0 ||
        tag > std::numeric_limits<int>::max()) {
        fail(context, "tag(N) needs a positive whole number");
        return;
    }
    FieldCursor cursor(bytesOf(values[0]), fieldSeparator, Reading::Tolerant);
    while (cursor.next()) {
        if (cursor.field().tag == tag) {
            give(context, cursor.field().value);
            return;
        }
    }
}

void match(sqlite3_context* context, Pattern const& pattern, sqlite3_value* text) {
    std::optional<bool> const answer = pattern.matches(textOf(text), clockOf(context));
    if (!answer) {
        throw TimeIsOver();
    }
    sqlite3_result_int(context, *answer ? 1 : 0);
}

// A blob is like nothing.
bool isNoMatch(sqlite3_context* context, Values values) {
    bool const isBlob = sqlite3_value_type(values[0]) == SQLITE_BLOB ||
                        sqlite3_value_type(values[1]) == SQLITE_BLOB;
    if (isBlob) {
        sqlite3_result_int(context, 0);
    } else if (textOf(values[0]).size() > longestPattern) {
        fail(context, "LIKE or GLOB pattern too complex");
    } else {
        return false;
    }
    return true;
}

void like(sqlite3_context* context, int count, Values values) {
    if (isNoMatch(context, values)) {
        return;
    }
    std::optional<char32_t> escape;
    if (count == 3) {
        if (isNull(values[2])) {
            return;
        }
        std::string_view const text = textOf(values[2]);
        std::size_t end = 0;
        escape = text.empty() ? U'\0' : nextCharacter(text, end);
        if (text.empty() || end != text.size()) {
            fail(context, "ESCAPE expression must be a single character");
            return;
        }
    }
    if (!isNull(values[0]) && !isNull(values[1])) {
        match(context, Pattern::like(textOf(values[0]), escape), values[1]);
    }
}

void glob(sqlite3_context* context, int, Values values) {
    if (!isNoMatch(context, values) && !isNull(values[0]) && !isNull(values[1])) {
        match(context, Pattern::glob(textOf(values[0])), values[1]);
    }
}

// In a time that grows with both lengths, not with their product.
std::size_t placeOf(std::string_view text, std::string_view part, std::size_t from) {
    if (text.empty() || part.empty() || part.size() > text.size() - from) {
        return std::string_view::npos;
    }
    void const* const found =
        memmem(text.data() + from, text.size() - from, part.data(), part.size());
    return found ? static_cast<std::size_t>(static_cast<char const*>(found) - text.data())
                 : std::string_view::npos;
}

// Of two blobs the place in bytes, of everything else in characters.
void instr(sqlite3_context* context, int, Values values) {
    if (isNull(values[0]) || isNull(values[1])) {
        return;
    }
    bool const areBlobs = sqlite3_value_type(values[0]) == SQLITE_BLOB &&
                          sqlite3_value_type(values[1]) == SQLITE_BLOB;
    std::string_view const text = areBlobs ? bytesOf(values[0]) : textOf(values[0]);
    std::string_view const part = areBlobs ? bytesOf(values[1]) : textOf(values[1]);
    std::size_t const at = part.empty() ? 0 : placeOf(text, part, 0);
    if (at == std::string_view::npos) {
        sqlite3_result_int(context, 0);
        return;
    }
    auto const isBeginning = [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xc0) != 0x80;
    };
    auto const before = text.substr(0, at);
    auto const count = areBlobs ? static_cast<std::ptrdiff_t>(at)
                                : std::count_if(before.begin(), before.end(), isBeginning);
    sqlite3_result_int64(context, count + 1);
}

void replace(sqlite3_context* context, int, Values values) {
    if (isNull(values[0]) || isNull(values[1]) || isNull(values[2])) {
        return;
    }
    std::string_view const text = textOf(values[0]);
    std::string_view const part = textOf(values[1]);
    std::string_view const other = textOf(values[2]);
    if (part.empty()) {
        sqlite3_result_value(context, values[0]);
        return;
    }
    auto const longest = static_cast<std::size_t>(
        sqlite3_limit(sqlite3_context_db_handle(context), SQLITE_LIMIT_LENGTH, -1));
    std::string made;
    std::size_t begin = 0;
    std::size_t looked = 0;
    for (std::size_t at = placeOf(text, part, 0); at != std::string_view::npos;
         at = placeOf(text, part, begin)) {
        made.append(text, begin, at - begin).append(other);
        begin = at + part.size();
        if (made.size() > longest) {
            sqlite3_result_error_toobig(context);
            return;
        }
        if (made.size() + begin - looked > bytesBetweenLooks) {
            looked = made.size() + begin;
            look(context);
        }
    }
    give(context, begin == 0 ? text : std::string_view(made.append(text, begin)));
}

// How many bytes at one end of the text are characters of the set.
std::size_t countAtEnd(sqlite3_context* context, std::string_view text, std::string_view set,
                       bool atEnd) {
    std::size_t count = 0;
    for (std::size_t steps = 1; count < text.size(); ++steps) {
        if (steps % (bytesBetweenLooks / longestTrimmed) == 0) {
            look(context);
        }
        std::size_t matched = 0;
        for (std::size_t at = 0; at < set.size() && matched == 0;) {
            std::size_t const begin = at;
            nextCharacter(set, at);
            std::string_view const character = set.substr(begin, at - begin);
            std::string_view const left =
                atEnd ? text.substr(0, text.size() - count) : text.substr(count);
            bool const fits = atEnd ? left.ends_with(character) : left.starts_with(character);
            matched = fits ? character.size() : 0;
        }
        if (matched == 0) {
            break;
        }
        count += matched;
    }
    return count;
}

template <bool atBegin, bool atEnd>
void trim(sqlite3_context* context, int count, Values values) {
    if (isNull(values[0]) || (count == 2 && isNull(values[1]))) {
        return;
    }
    std::string_view const set = count == 2 ? textOf(values[1]) : " ";
    if (set.size() > longestTrimmed) {
        fail(context, "trim takes away one of at most 1000 bytes of characters");
        return;
    }
    std::string_view text = textOf(values[0]);
    if (atBegin) {
        text.remove_prefix(countAtEnd(context, text, set, false));
    }
    if (atEnd) {
        text.remove_suffix(countAtEnd(context, text, set, true));
    }
    give(context, text);
}

// A width or a precision makes a large text out of nothing.
bool isTooWide(std::string_view format) {
    constexpr std::string_view flags = "-+ #!,.l";
    for (std::size_t at = format.find('%'); at < format.size(); at = format.find('%', at + 1)) {
        int number = 0;
        for (++at; at < format.size(); ++at) {
            char const c = format[at];
            bool const isDigit = c >= '0' && c <= '9';
            number = isDigit ? number * 10 + (c - '0') : 0;
            if (c == '*' || number > widestFormat) {
                return true;
            }
            if (!isDigit && flags.find(c) == std::string_view::npos) {
                break;
            }
        }
    }
    return false;
}

// SQLite's own printf, which can be reached in another database only.
void print(sqlite3_context* context, int count, Values values) {
    if (count > 0 && isTooWide(textOf(values[0]))) {
        fail(context, "a format has widths up to 9999 and no '*'");
        return;
    }
    thread_local Database other = Database::inMemory();
    sqlite3* const ours = sqlite3_context_db_handle(context);
    sqlite3_limit(other.handle(), SQLITE_LIMIT_LENGTH,
                  sqlite3_limit(ours, SQLITE_LIMIT_LENGTH, -1));
    std::string sql = "SELECT printf(";
    for (int index = 0; index < count; ++index) {
        sql += index == 0 ? "?" : ",?";
    }
    Statement statement(other, sql + ")");
    for (int index = 0; index < count; ++index) {
        sqlite3_bind_value(statement.handle(), index + 1, values[index]);
    }
    statement.step();
    sqlite3_result_value(context, sqlite3_column_value(statement.handle(), 0));
}

// Nothing may be thrown through SQLite.
template <void (*function)(sqlite3_context*, int, Values)>
void bounded(sqlite3_context* context, int count, Values values) {
    try {
        look(context);
        function(context, count, values);
    } catch (TimeIsOver const&) {
        sqlite3_result_error_code(context, SQLITE_INTERRUPT);
    } catch (std::bad_alloc const&) {
        sqlite3_result_error_nomem(context);
    } catch (LogFailure const& failure) {
        sqlite3_result_error(context, failure.what(), -1);
    }
}

using Function = void (*)(sqlite3_context*, int, Values);

struct Named {
    char const* name;
    int values;
    Function function;
};

constexpr Named all[] = {
    {"seen", 1, bounded<seen>},
    {"tag", 2, bounded<tagOf>},
    {"like", 2, bounded<like>},
    {"like", 3, bounded<like>},
    {"glob", 2, bounded<glob>},
    {"instr", 2, bounded<instr>},
    {"replace", 3, bounded<replace>},
    {"trim", 1, bounded<trim<true, true>>},
    {"trim", 2, bounded<trim<true, true>>},
    {"ltrim", 1, bounded<trim<true, false>>},
    {"ltrim", 2, bounded<trim<true, false>>},
    {"rtrim", 1, bounded<trim<false, true>>},
    {"rtrim", 2, bounded<trim<false, true>>},
    {"printf", -1, bounded<print>},
    {"format", -1, bounded<print>},
};

} // namespace

void addBoundedFunctions(Database const& database, SearchClock const& clock) {
    constexpr int flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    for (Named const& each : all) {
        if (sqlite3_create_function_v2(database.handle(), each.name, each.values, flags,
                                       const_cast<SearchClock*>(&clock), each.function, nullptr,
                                       nullptr, nullptr) != SQLITE_OK) {
            database.fail();
        }
    }
}

} // namespace zan::server
