/// What people call the tags, the message types and the values of FIX messages.
///
/// Threads: it does not change, and may be read from several threads.
#ifndef ZANENGINE_SERVER_DICTIONARIES_FIELDNAMES_H
#define ZANENGINE_SERVER_DICTIONARIES_FIELDNAMES_H

#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace zan::server {

class FieldNames {
public:
    /// Reads a dictionary in QuickFIX's XML format; `name` stands for its path in the text of an
    /// error. Values that it does not describe have the names that are built in. Throws
    /// std::runtime_error for text that is no such dictionary.
    FieldNames(std::string_view xml, std::string const& name);

    /// Takes over what others name and this does not.
    void addMissing(FieldNames const& others);

    // Empty for what has no name.

    std::string_view ofTag(int tag) const;
    /// By the value of tag 35.
    std::string_view ofMessage(std::string_view type) const;
    /// What a value of a tag stands for: `Buy` for 1 in tag 54.
    std::string_view ofValue(int tag, std::string_view value) const;

    /// The tag of that name, in whatever case it is written; 0 when there is none.
    int tagOf(std::string_view name) const;

    /// The names of all tags, in small letters, with their tags.
    std::map<std::string, int, std::less<>> const& tags() const { return tags_; }

private:
    using TagAndValue = std::pair<int, std::string>;

    std::map<int, std::string> fields_;
    std::map<std::string, int, std::less<>> tags_;
    std::map<std::string, std::string, std::less<>> messages_;
    std::map<TagAndValue, std::string> values_;

    friend class NamesReader;
};

} // namespace zan::server

#endif
