#include "server/wire/SharedDictionary.h"

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string_view>
#include <tuple>
#include <utility>

namespace zan::server {

namespace {

// Two hashes of different kinds and the size: texts that agree in them are the same.
using Fingerprint = std::tuple<std::size_t, std::size_t, std::uint64_t>;
using Key = std::pair<Fingerprint, Fingerprint>;

Fingerprint fingerprintOf(std::string_view text) {
    std::uint64_t sum = 14695981039346656037U;
    for (char const c : text) {
        sum = (sum ^ static_cast<unsigned char>(c)) * 1099511628211U;
    }
    return {text.size(), std::hash<std::string_view>()(text), sum};
}

struct Known {
    std::mutex mutex;
    std::map<Key, std::weak_ptr<CompiledDictionary const>> dictionaries;
};

// Never destroyed: connections may end after static objects.
Known& known() {
    static Known* const one = new Known;
    return *one;
}

} // namespace

std::shared_ptr<CompiledDictionary const> sharedDictionary(DictionaryText const& messages,
                                                           DictionaryText const* transport) {
    Key const key{fingerprintOf(messages.xml),
                  transport ? fingerprintOf(transport->xml) : Fingerprint{}};
    std::lock_guard<std::mutex> const lock(known().mutex);
    std::erase_if(known().dictionaries, [](auto const& entry) { return entry.second.expired(); });
    if (auto const found = known().dictionaries.find(key); found != known().dictionaries.end()) {
        if (auto dictionary = found->second.lock()) {
            return dictionary;
        }
    }
    auto dictionary = std::make_shared<CompiledDictionary const>(
        transport ? compileDictionary(messages.xml, messages.name, transport->xml, transport->name)
                  : compileDictionary(messages.xml, messages.name));
    known().dictionaries[key] = dictionary;
    return dictionary;
}

} // namespace zan::server
