#include "server/wire/DictionaryCompiler.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace zan::server {

namespace {

std::vector<LoneTag> loneTags(std::vector<int> const& tags) {
    std::vector<LoneTag> lone;
    lone.reserve(tags.size());
    std::ranges::transform(tags, std::back_inserter(lone), [](int tag) { return LoneTag{tag}; });
    return lone;
}

// A data field is written with its length in front, so it stands where the length does.
void moveDataToLengths(std::vector<PlacedTag>& members) {
    for (PlacedTag& member : members) {
        int const lengthTag = lengthTagOf(member.tag);
        auto const length =
            lengthTag == 0 ? members.end() : std::ranges::find(members, lengthTag, &PlacedTag::tag);
        if (length != members.end()) {
            member.position = std::min(member.position, length->position);
        }
    }
}

template <class Places>
std::vector<int> requiredOf(Places const& places) {
    std::vector<int> required;
    for (auto const& place : places) {
        if (place.isRequired) {
            required.push_back(place.tag);
        }
    }
    return required;
}

} // namespace

void DictionaryCompiler::fail(int line, std::string const& element, std::string const& what) const {
    throw BadDictionary("cannot read the data dictionary " + source_->file +
                        (line > 0 ? ":" + std::to_string(line) : "") + ": " + element + ": " +
                        what);
}

void DictionaryCompiler::spend(std::size_t places, int line, std::string const& element) {
    spent_ += places;
    if (spent_ > DictionaryLimits::places) {
        fail(line, element,
             "up to here messages, groups and components have more than " +
                 std::to_string(DictionaryLimits::places) + " tags together, which is the limit");
    }
}

void DictionaryCompiler::begin(DictionarySource const& source) {
    source_ = &source;
    components_.clear();
}

int DictionaryCompiler::tagOf(SourceItem const& item) const {
    auto const found = source_->fields.find(item.name);
    if (found == source_->fields.end()) {
        fail(item.line, item.name, "is used, but no field in <fields> has this name");
    }
    return found->second.tag;
}

void DictionaryCompiler::checkDepth(int depth, SourceItem const& item, char const* element) const {
    if (depth > DictionaryLimits::depth) {
        fail(item.line, element + item.name,
             "groups and components may be nested " + std::to_string(DictionaryLimits::depth) +
                 " deep");
    }
}

DictionaryCompiler::List DictionaryCompiler::listOf(SourceList const& list, int depth) {
    return listOf(list.first, list.end, depth);
}

// A tag that stands twice counts where it stands first.
DictionaryCompiler::List DictionaryCompiler::listOf(std::size_t first, std::size_t end, int depth) {
    List list;
    std::map<int, std::size_t> known;
    auto const add = [&](Place const& place) {
        auto const [at, isNew] = known.emplace(place.tag, list.places.size());
        if (isNew) {
            list.places.push_back(place);
        } else {
            list.places[at->second].isRequired |= place.isRequired;
        }
    };
    for (std::size_t i = first; i < end; i = source_->items[i].end) {
        SourceItem const& item = source_->items[i];
        if (item.kind == SourceItem::Kind::Component) {
            List const& inside = component(item, depth + 1);
            spend(inside.places.size(), item.line, "component " + item.name);
            for (Place const& place : inside.places) {
                add({place.tag, place.group, place.isRequired && item.isRequired});
            }
            list.height = std::max(list.height, inside.height + 1);
            continue;
        }
        spend(1, item.line, item.name);
        int const tag = tagOf(item);
        bool const isGroup = item.kind == SourceItem::Kind::Group && !known.contains(tag);
        add({tag, isGroup ? compileGroup(i, tag, depth + 1, list.height) : PlacedTag::noGroup,
             item.isRequired});
    }
    return list;
}

DictionaryCompiler::List const& DictionaryCompiler::component(SourceItem const& item, int depth) {
    std::string const element = "component " + item.name;
    checkDepth(depth, item, "component ");
    auto const found = source_->components.find(item.name);
    if (found == source_->components.end()) {
        fail(item.line, element, "is used, but no component in <components> has this name");
    }
    auto const [at, isNew] = components_.try_emplace(item.name);
    if (isNew) {
        at->second.list = listOf(found->second, depth);
        at->second.isOpen = false;
    } else if (at->second.isOpen) {
        fail(item.line, element, "is used inside itself");
    }
    // It may have been read where it stands less deep.
    checkDepth(at->second.list.height + 1, item, "component ");
    return at->second.list;
}

// Makes `height`, that of the list in which the group stands, great enough.
int DictionaryCompiler::compileGroup(std::size_t index, int countTag, int depth, int& height) {
    SourceItem const& item = source_->items[index];
    checkDepth(depth, item, "group ");
    List list = listOf(index + 1, item.end, depth);
    height = std::max(height, list.height + 1);
    checkDepth(height, item, "group ");
    if (list.places.empty()) {
        fail(item.line, "group " + item.name, "has no fields; the first one begins an instance");
    }
    std::vector<PlacedTag> members;
    for (Place const& place : list.places) {
        members.push_back({place.tag, static_cast<int>(members.size()), place.group});
    }
    moveDataToLengths(members);
    result_.groups_.push_back(
        {countTag, list.places.front().tag, PlacedTags(members), requiredOf(list.places)});
    groupPlaces_.push_back(std::move(list.places));
    return static_cast<int>(result_.groups_.size()) - 1;
}

void DictionaryCompiler::addTransport(DictionarySource const& source) {
    begin(source);
    result_.beginString_ = source.beginString;
    addFields();
    headerPlaces_ = listOf(source.header, 0).places;
    trailerPlaces_ = listOf(source.trailer, 0).places;
    for (SourceMessage const& message : source.messages) {
        if (message.isAdmin) {
            addType(message);
        }
    }
}

void DictionaryCompiler::addMessages(DictionarySource const& source, bool withTransport) {
    if (withTransport) {
        addTransport(source);
    } else {
        begin(source);
        addFields();
    }
    for (SourceMessage const& message : source.messages) {
        if (!message.isAdmin) {
            addType(message);
        }
    }
}

void DictionaryCompiler::addFields() {
    for (auto const& [name, field] : source_->fields) {
        auto const [at, isNew] = fields_.try_emplace(field.tag);
        if (!isNew) {
            continue;
        }
        std::vector<std::string> values = field.values;
        std::ranges::sort(values);
        auto const first = static_cast<std::uint32_t>(result_.values_.size());
        std::ranges::move(values, std::back_inserter(result_.values_));
        // Before FIX 4.2 text of any length was called so.
        bool const isText = field.type == "CHAR" && source_->beginString < "FIX.4.2";
        at->second = {field.tag, isText ? FieldType::Any : fieldTypeOf(field.type), first,
                      static_cast<std::uint32_t>(result_.values_.size())};
    }
}

void DictionaryCompiler::addType(SourceMessage const& message) {
    types_.try_emplace(message.type, listOf(message.list, 0).places);
}

// Every group once, in whatever it stands.
void DictionaryCompiler::collect(Places const& places, Members& members) const {
    for (Place const& place : places) {
        if (place.group == PlacedTag::noGroup || !members.groups.insert(place.group).second) {
            continue;
        }
        Places const& inside = groupPlaces_[static_cast<std::size_t>(place.group)];
        members.visited += inside.size();
        for (Place const& member : inside) {
            if (members.seen.insert(member.tag).second) {
                members.tags.push_back(member.tag);
            }
        }
        collect(inside, members);
    }
}

TypeGroups DictionaryCompiler::typeOf(Places const& places, std::string const& element) {
    std::vector<PlacedTag> counts;
    std::unordered_set<int> counted;
    for (Places const* const part : {&places, &std::as_const(headerPlaces_)}) {
        for (Place const& place : *part) {
            if (place.group != PlacedTag::noGroup && counted.insert(place.tag).second) {
                counts.push_back({place.tag, 0, place.group});
            }
        }
    }
    Members members;
    collect(places, members);
    collect(headerPlaces_, members);
    spend(members.visited, 0, element);
    std::vector<int> fields;
    std::ranges::transform(places, std::back_inserter(fields), &Place::tag);
    return {PlacedTags(counts), TagSet(loneTags(members.tags)), TagSet(loneTags(fields)),
            requiredOf(places)};
}

void DictionaryCompiler::finish() {
    result_.header_ = typeOf(headerPlaces_, "header");
    result_.trailer_ = typeOf(trailerPlaces_, "trailer");
    for (auto const& [type, places] : types_) {
        result_.types_.emplace_back(type, typeOf(places, "message " + type));
    }
    std::vector<CompiledField> fields;
    for (auto const& [tag, field] : fields_) {
        fields.push_back(field);
    }
    result_.fields_ = TagTable<CompiledField>(fields);
    Members inHeader;
    collect(headerPlaces_, inHeader);
    auto const isOwn = [](int tag) { return standardPlaceOf(tag) == TagPlace::body; };
    result_.hasOwnPlaces_ = std::ranges::any_of(headerPlaces_, isOwn, &Place::tag) ||
                            std::ranges::any_of(trailerPlaces_, isOwn, &Place::tag) ||
                            std::ranges::any_of(inHeader.tags, isOwn);
}

} // namespace zan::server
