/// A data dictionary in QuickFIX's XML format as it is written, before anything is made of it.
///
/// Threads: values and functions without shared state.
#ifndef ZANENGINE_SERVER_DICTIONARIES_DICTIONARYSOURCE_H
#define ZANENGINE_SERVER_DICTIONARIES_DICTIONARYSOURCE_H

#include <cstddef>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace zan::server {

/// A dictionary that cannot be used; the text tells the file, the line, the element, and why.
class BadDictionary : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What a dictionary may cost at most. The largest ones of the standard need a tenth of it.
struct DictionaryLimits {
    static constexpr std::size_t bytes = std::size_t{16} * 1024 * 1024;
    static constexpr std::size_t elements = 500'000;
    /// Groups and components inside each other.
    static constexpr int depth = 24;
    /// Tags of all messages, groups and components together.
    static constexpr std::size_t places = 4'000'000;
};

/// A field, a group or a component where it is used.
struct SourceItem {
    enum class Kind { Field, Group, Component };

    Kind kind = Kind::Field;
    bool isRequired = false;
    int line = 0;
    std::string name;
    /// The items inside it stand from the next one on to here.
    std::size_t end = 0;
};

/// The items of a message, a component, the header or the trailer.
struct SourceList {
    std::string name;
    int line = 0;
    std::size_t first = 0;
    std::size_t end = 0;
};

struct SourceMessage {
    std::string type; ///< the value of tag 35
    bool isAdmin = false;
    SourceList list;
};

struct SourceField {
    int tag = 0;
    std::string name;
    std::string type;                ///< `INT`, `STRING` and so on
    std::vector<std::string> values; ///< the allowed ones; empty for all
};

struct DictionarySource {
    std::string file; ///< as errors call it
    /// The version that the dictionary declares, for example `FIX.4.4`.
    std::string beginString;
    std::vector<SourceItem> items;
    SourceList header;
    SourceList trailer;
    std::vector<SourceMessage> messages;
    std::map<std::string, SourceList> components;
    std::map<std::string, SourceField> fields; ///< by name
};

/// Reads the text of a dictionary; `file` stands for its path in errors. Throws `BadDictionary`.
DictionarySource parseDictionary(std::string_view xml, std::string const& file);

/// The text of a file. Throws `BadDictionary` when it cannot be read or is too large.
std::string readDictionaryFile(std::string const& path);

} // namespace zan::server

#endif
