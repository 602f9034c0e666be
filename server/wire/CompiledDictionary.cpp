#include "server/wire/CompiledDictionary.h"

#include "server/wire/DictionaryCompiler.h"

#include <algorithm>
#include <limits>

namespace zan::server {

namespace {

constexpr auto nowhere = std::numeric_limits<std::uint16_t>::max();

} // namespace

CompiledDictionary::CompiledDictionary(DictionarySource const& source,
                                       DictionarySource const* transport) {
    DictionaryCompiler compiler(*this);
    if (transport) {
        compiler.addTransport(*transport);
    }
    compiler.addMessages(source, transport == nullptr);
    compiler.finish();
    byLetter_.fill(nowhere);
    for (std::size_t i = 0; i < types_.size(); ++i) {
        std::string const& type = types_[i].first;
        if (type.size() == 1 && static_cast<unsigned char>(type[0]) < byLetter_.size()) {
            byLetter_[static_cast<unsigned char>(type[0])] = static_cast<std::uint16_t>(i);
        }
    }
}

TypeGroups const* CompiledDictionary::find(std::string_view type) const {
    if (type.size() == 1 && static_cast<unsigned char>(type[0]) < byLetter_.size()) {
        auto const at = byLetter_[static_cast<unsigned char>(type[0])];
        return at == nowhere ? nullptr : &types_[at].second;
    }
    auto const found = std::ranges::lower_bound(
        types_, type, {}, [](auto const& entry) { return std::string_view(entry.first); });
    return found != types_.end() && found->first == type ? &found->second : nullptr;
}

TagPlace CompiledDictionary::ownPlaceOf(int tag) const {
    if (header_.fields.find(tag) || header_.members.find(tag)) {
        return TagPlace::header;
    }
    return trailer_.fields.find(tag) ? TagPlace::trailer : TagPlace::body;
}

bool CompiledDictionary::allows(CompiledField const& field, std::string_view value) const {
    auto const first = values_.begin() + field.firstValue;
    auto const end = values_.begin() + field.endOfValues;
    return std::binary_search(first, end, value, std::less<>());
}

CompiledDictionary compileDictionary(std::string_view xml, std::string const& name) {
    return CompiledDictionary(parseDictionary(xml, name));
}

CompiledDictionary compileDictionary(std::string_view xml, std::string const& name,
                                     std::string_view transportXml,
                                     std::string const& transportName) {
    DictionarySource const transport = parseDictionary(transportXml, transportName);
    return CompiledDictionary(parseDictionary(xml, name), &transport);
}

} // namespace zan::server
