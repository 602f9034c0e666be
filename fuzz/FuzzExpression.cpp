// Any text as an expression over the log's entries: it is refused as one, or it answers, and gives
// the same answer again.
#include "Demand.h"
#include "server/log/MessageLog.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

using namespace zan::server;

FixEntry sampleEntry() {
    FixEntry entry;
    entry.id = 7;
    entry.millis = 1795253400000;
    entry.stream = FixStream::appIn;
    entry.seq = 3;
    entry.text = "8=FIX.4.4|9=70|35=8|34=3|49=BROKER|52=20261121-09:30:00|56=ME|11=A-1|37=X1|39=2|"
                 "55=IBM|10=000|";
    std::ranges::replace(entry.text, '|', '\x01');
    entry.note = "a note";
    return entry;
}

// Whether the answer may be another one each time.
bool isFickle(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text.find("random") != std::string::npos || text.find("now") != std::string::npos ||
           text.find("current") != std::string::npos;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static FixEntry const entry = sampleEntry();
    std::string const expression(reinterpret_cast<char const*>(data), size);
    try {
        EntryFilter filter(expression);
        bool const first = filter.matches(entry);
        bool const second = filter.matches(entry);
        demand(first == second || isFickle(expression), "an answer is the same each time");
        EntryFilter opposite("NOT (" + expression + ")");
        demand(!(first && opposite.matches(entry)) || isFickle(expression),
               "an entry does not match an expression and its opposite");
    } catch (BadExpression const& refusal) {
        demand(!std::string_view(refusal.what()).empty(), "a refusal has a text");
    }
    return 0;
}
