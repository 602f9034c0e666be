// Any bytes as a data dictionary: it is refused with a text, or compiled within its limits, and
// then every message can be read and checked by it.
#include "Demand.h"
#include "server/dictionaries/Dictionaries.h"
#include "server/wire/CompiledDictionary.h"
#include "server/wire/GroupReader.h"
#include "server/wire/MessageRules.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

using namespace zan::server;

void use(CompiledDictionary const& dictionary) {
    std::string const message =
        "8=FIX.4.4|9=5|35=D|49=A|56=B|34=2|52=20261121-09:30:00|453=1|448=a|"
        "447=D|802=1|523=x|11=a|20001=z|10=000|";
    std::string wired = message;
    for (char& c : wired) {
        c = c == '|' ? fieldSeparator : c;
    }
    demand(static_cast<bool>(readMessage(wired, fieldSeparator, Reading::Tolerant, dictionary)),
           "every text has a model");
    ValidationSettings settings;
    settings.useDictionary = settings.fieldsOutOfOrder = true;
    MessageRules(dictionary, settings).check(wired);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string_view const xml(reinterpret_cast<char const*>(data), size);
    try {
        use(compileDictionary(xml, "fuzz"));
        use(compileDictionary(xml, "fuzz", transportDictionary(), "transport"));
    } catch (BadDictionary const& error) {
        demand(std::string_view(error.what()).find("fuzz") != std::string_view::npos,
               "an error names the file");
    }
    return 0;
}
