/// A data dictionary in flat tables, for reading, writing and checking many messages.
///
/// A group and a component are compiled once, however often they are used: the tables grow with the
/// text of the dictionary, not with what it would be written out.
///
/// Threads: it does not change, and may be read from several threads.
#ifndef ZANENGINE_SERVER_WIRE_COMPILEDDICTIONARY_H
#define ZANENGINE_SERVER_WIRE_COMPILEDDICTIONARY_H

#include "server/dictionaries/DictionarySource.h"
#include "server/sessions/StandardTags.h"
#include "server/wire/FieldType.h"
#include "server/wire/TagTables.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zan::server {

/// How the instances of a group are made.
struct CompiledGroup {
    int countTag = 0;
    int delimiter = 0;
    PlacedTags members;
    std::vector<int> required;
};

/// The top level of the messages of a type.
struct TypeGroups {
    /// The counts of its groups, those of the header included.
    PlacedTags counts;
    /// The members of all these groups, at any depth. Behind an instance a reader takes them for
    /// its own.
    TagSet members;
    /// What the dictionary lists for the type itself, counts included.
    TagSet fields;
    std::vector<int> required;
};

/// What a field may hold.
struct CompiledField {
    int tag = 0;
    FieldType type = FieldType::Any;
    /// Where its allowed values stand, in their order; all are allowed where there are none.
    std::uint32_t firstValue = 0;
    std::uint32_t endOfValues = 0;
};

class CompiledDictionary {
public:
    /// With a second dictionary that one tells the version, the header, the trailer and the
    /// administrative messages, as FIXT.1.1 has it. Throws `BadDictionary`.
    explicit CompiledDictionary(DictionarySource const& source,
                                DictionarySource const* transport = nullptr);

    std::string const& beginString() const { return beginString_; }

    TypeGroups const& groupsOf(std::string_view type) const {
        TypeGroups const* const found = find(type);
        return found ? *found : header_;
    }

    /// Null for a type that the dictionary does not know.
    TypeGroups const* find(std::string_view type) const;

    /// The group that a placed tag counts.
    CompiledGroup const& group(PlacedTag const& count) const {
        return groups_[static_cast<std::size_t>(count.group)];
    }

    /// Where a tag stands: by the standard, and else by the dictionary's own header and trailer.
    TagPlace placeOf(int tag) const {
        TagPlace const place = standardPlaceOf(tag);
        return place != TagPlace::body || !hasOwnPlaces_ ? place : ownPlaceOf(tag);
    }

    TypeGroups const& header() const { return header_; }
    std::vector<int> const& requiredInTrailer() const { return trailer_.required; }

    /// Null for a tag that the dictionary does not know.
    CompiledField const* field(int tag) const { return fields_.find(tag); }
    bool allows(CompiledField const& field, std::string_view value) const;

private:
    friend class DictionaryCompiler;

    TagPlace ownPlaceOf(int tag) const;

    std::string beginString_;
    std::vector<CompiledGroup> groups_;
    TypeGroups header_;
    TypeGroups trailer_;
    bool hasOwnPlaces_ = false;
    std::vector<std::pair<std::string, TypeGroups>> types_;
    /// Where the types of one letter stand in `types_`, and nowhere: behind the last.
    std::array<std::uint16_t, 128> byLetter_;
    TagTable<CompiledField> fields_;
    std::vector<std::string> values_;
};

/// The dictionary of this text, and of the transport's where there is one, from XML. `name` stands
/// for its path in errors. Throws `BadDictionary`.
CompiledDictionary compileDictionary(std::string_view xml, std::string const& name);
CompiledDictionary compileDictionary(std::string_view xml, std::string const& name,
                                     std::string_view transportXml,
                                     std::string const& transportName);

} // namespace zan::server

#endif
