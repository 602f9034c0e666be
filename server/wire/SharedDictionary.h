/// Dictionaries that are compiled once a process, however many connections use them.
///
/// Threads: any.
#ifndef ZANENGINE_SERVER_WIRE_SHAREDDICTIONARY_H
#define ZANENGINE_SERVER_WIRE_SHAREDDICTIONARY_H

#include "server/wire/CompiledDictionary.h"

#include <memory>
#include <string>

namespace zan::server {

struct DictionaryText {
    std::string xml;
    std::string name; ///< as errors call it
};

/// The dictionary of this text, and of the transport's, which may be null: the one that is in use
/// already where there is one, whatever its name. It lives as long as anybody holds it. Throws
/// `BadDictionary`.
std::shared_ptr<CompiledDictionary const> sharedDictionary(DictionaryText const& messages,
                                                           DictionaryText const* transport);

} // namespace zan::server

#endif
