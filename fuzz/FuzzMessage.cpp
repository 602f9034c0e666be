// Any bytes as the text of a message: they have a model, and what goes out comes back the same.
//
// The first byte chooses the dictionary and the separator, the others are the text.
#include "Demand.h"
#include "server/dictionaries/Dictionaries.h"
#include "server/sessions/FixFramer.h"
#include "server/wire/GroupReader.h"
#include "server/wire/GroupWriter.h"
#include "server/wire/OutgoingMessage.h"
#include "server/wire/WireText.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace zan::server;

CompiledDictionary dictionaryOf(char const* version) {
    return compileDictionary(dictionaryFor(version), version);
}

// Frames do not depend on how the bytes come in.
std::vector<std::string> framesOf(std::string_view bytes, std::size_t chunk) {
    FixFramer framer;
    std::vector<std::string> frames;
    for (; !bytes.empty(); bytes.remove_prefix(std::min(chunk, bytes.size()))) {
        framer.append(bytes.data(), std::min(chunk, bytes.size()));
        std::string message;
        std::string fault;
        FixFramer::Result result;
        while ((result = framer.next(message, fault)) != FixFramer::Result::incomplete) {
            if (result == FixFramer::Result::message) {
                frames.push_back(message);
            }
        }
    }
    return frames;
}

void checkPrinted(std::string const& printed, CompiledDictionary const& dictionary) {
    auto const again = readMessage(printed, fieldSeparator, Reading::Strict, dictionary);
    demand(wireText(*again, dictionary) == printed, "print of parse is the identity");
    auto const tolerant = readMessage(printed, fieldSeparator, Reading::Tolerant, dictionary);
    demand(wireText(*tolerant, dictionary) == printed, "a good text is read alike in both ways");
    // A session has nothing to do with other versions than its own.
    if (valueOf(printed, 8) == dictionary.beginString()) {
        auto const frames = framesOf(printed, printed.size());
        demand(frames.size() == 1 && frames[0] == printed, "what is printed is one good frame");
    }
}

void checkModel(ZANFieldGroup const& model, CompiledDictionary const& dictionary) {
    std::string printed;
    try {
        printed = wireText(model, dictionary);
    } catch (MalformedMessage const&) {
        return;
    }
    checkPrinted(printed, dictionary);
    outgoingFromModel(model, dictionary);
}

void checkOutgoing(std::string_view text, CompiledDictionary const& dictionary) {
    try {
        outgoingFromText(text, dictionary);
    } catch (MalformedMessage const&) {
        return;
    }
    char const separator =
        text.find(fieldSeparator) == std::string_view::npos ? '|' : fieldSeparator;
    readMessage(text, separator, Reading::Strict, dictionary);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static CompiledDictionary const dictionaries[] = {dictionaryOf("FIX.4.2"),
                                                      dictionaryOf("FIX.4.4")};
    if (size == 0) {
        return 0;
    }
    CompiledDictionary const& dictionary = dictionaries[data[0] & 1];
    char const separator = (data[0] & 2) != 0 ? '|' : fieldSeparator;
    std::string_view const text(reinterpret_cast<char const*>(data) + 1, size - 1);

    auto const model = readMessage(text, separator, Reading::Tolerant, dictionary);
    demand(static_cast<bool>(model), "every text has a model");
    checkModel(*model, dictionary);
    checkOutgoing(text, dictionary);
    valueOf(text, 58);
    demand(framesOf(text, 7) == framesOf(text, size), "frames do not depend on the pieces");
    return 0;
}
