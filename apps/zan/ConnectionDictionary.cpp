#include "apps/zan/ConnectionDictionary.h"

#include "apps/zan/Properties.h"

#include <exception>
#include <fstream>

namespace zan::cli {

namespace {

// Empty when the engine names none. That it tells nothing of the connection must not keep a command
// from its work, which says better what is wrong.
std::string fileOf(Session const& session, std::string const& connection) {
    try {
        std::string const forMessages = propertyOf(session, connection, "AppDataDictionary");
        return forMessages.empty() ? propertyOf(session, connection, "DataDictionary")
                                   : forMessages;
    } catch (std::exception const&) {
        return {};
    }
}

} // namespace

void useDictionaryOf(Session const& session, std::string const& connection, Names& names) {
    std::string const file = fileOf(session, connection);
    if (std::ifstream(file)) {
        names.useUnlessGiven(file);
    }
}

} // namespace zan::cli
