/// Makes the tables of a dictionary out of what is written in it.
///
/// Threads: one at a time.
#ifndef ZANENGINE_SERVER_WIRE_DICTIONARYCOMPILER_H
#define ZANENGINE_SERVER_WIRE_DICTIONARYCOMPILER_H

#include "server/wire/CompiledDictionary.h"

#include <map>
#include <string>
#include <unordered_set>
#include <vector>

namespace zan::server {

class DictionaryCompiler {
public:
    explicit DictionaryCompiler(CompiledDictionary& result) : result_(result) {}

    /// Takes the header, the trailer and the administrative messages.
    void addTransport(DictionarySource const& source);
    /// Takes the messages, and with `withTransport` everything.
    void addMessages(DictionarySource const& source, bool withTransport);
    /// To be called last.
    void finish();

private:
    /// A tag of a list whose components are taken apart.
    struct Place {
        int tag;
        int group; ///< which it counts, or `PlacedTag::noGroup`
        bool isRequired;
    };
    using Places = std::vector<Place>;

    struct List {
        Places places;
        int height = 0; ///< how deep groups and components are nested in it
    };

    struct Component {
        bool isOpen = true;
        List list;
    };

    void begin(DictionarySource const& source);
    List listOf(SourceList const& list, int depth);
    List listOf(std::size_t first, std::size_t end, int depth);
    List const& component(SourceItem const& item, int depth);
    int compileGroup(std::size_t index, int countTag, int depth, int& height);
    void checkDepth(int depth, SourceItem const& item, char const* element) const;
    int tagOf(SourceItem const& item) const;
    void addFields();
    void addType(SourceMessage const& message);
    TypeGroups typeOf(Places const& places, std::string const& element);

    /// The members of all groups in a list, at any depth.
    struct Members {
        std::vector<int> tags;
        std::unordered_set<int> seen;
        std::unordered_set<int> groups;
        std::size_t visited = 0;
    };
    void collect(Places const& places, Members& members) const;
    void spend(std::size_t places, int line, std::string const& element);
    [[noreturn]] void fail(int line, std::string const& element, std::string const& what) const;

    CompiledDictionary& result_;
    DictionarySource const* source_ = nullptr;
    std::map<std::string, Component> components_;
    std::vector<Places> groupPlaces_; ///< by the number of the group
    Places headerPlaces_;
    Places trailerPlaces_;
    std::map<std::string, Places> types_;
    std::map<int, CompiledField> fields_;
    std::size_t spent_ = 0;
};

} // namespace zan::server

#endif
