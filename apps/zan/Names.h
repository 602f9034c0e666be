/// What the dictionaries know about messages: names of tags, types and values, and the groups.
///
/// Threads: one at a time.
#ifndef ZANENGINE_APPS_ZAN_NAMES_H
#define ZANENGINE_APPS_ZAN_NAMES_H

#include "server/dictionaries/FieldNames.h"
#include "server/wire/CompiledDictionary.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace zan::cli {

/// One dictionary: the names in it, and the groups to read messages with.
struct Dictionary {
    server::FieldNames names;
    server::CompiledDictionary compiled;
};

class Names {
public:
    /// With a file, in QuickFIX's XML format, its groups serve every version, and so do its names
    /// before those that are built in; else those alone do. They are read when they are asked for.
    explicit Names(std::string dictionaryFile);

    /// The same with this file from now on, unless there was one from the beginning.
    void useUnlessGiven(std::string const& dictionaryFile);

    /// For a protocol version such as `FIX.4.4`, which may be empty. The reference lives as long as
    /// this object. Throws `WrongConfigurationException` for a file that is no dictionary.
    Dictionary const& of(std::string_view beginString);

    /// `Logon` for `A`; the type itself when it has no name.
    std::string typeName(std::string_view type, std::string_view beginString = {});

    /// The tag for a number or a name; 0 for anything else.
    int tagOf(std::string const& numberOrName);

private:
    std::string const given_;
    std::string file_;
    std::map<std::pair<std::string, std::size_t>, std::unique_ptr<Dictionary>> dictionaries_;
};

} // namespace zan::cli

#endif
