/// Messages as bytes and as people write them: with `|` where the wire has SOH.
#ifndef ZANENGINE_CONFORMANCE_FIXTEXT_H
#define ZANENGINE_CONFORMANCE_FIXTEXT_H

#include <string>
#include <vector>

namespace zan::conformance {

/// Who talks to whom.
struct Identity {
    std::string beginString;
    std::string sender;
    std::string target;
};

/// What stands before the first separator, which is taken away with it; all where there is none.
std::string takeWord(std::string& text, char separator = ' ');

std::string readable(std::string text);
std::string wired(std::string text);

/// The fields, `tag=value` each, of text with this separator.
std::vector<std::string> splitFields(std::string const& text, char separator);

/// The value of a tag's first appearance in a message of the wire; empty when it has none.
std::string valueOf(std::string const& message, std::string const& tag);

bool isAdmin(std::string const& message);

/// Puts in what is written in braces: `{now}` and `{now-60}` (seconds), `{SOH}`, `{x*100}`.
std::string expanded(std::string text);

/// A whole message of this type. The header and the trailer are made up, but for those of their
/// fields with which `fields` begins; `!tag` there leaves one out.
std::string composed(Identity const& identity, int number, std::string const& type,
                     std::string const& fields);

/// Empty when the message is as `wanted` says; otherwise what is missing. `wanted` is a type and
/// after it fields: `tag=value`, `tag=*` for any value, `tag~text` for a value that holds the text,
/// `!tag` for a tag that is not there. A tag that is named twice is looked for twice.
std::string mismatch(std::string const& message, std::string wanted);

unsigned checkSum(std::string const& bytes);

} // namespace zan::conformance

#endif
