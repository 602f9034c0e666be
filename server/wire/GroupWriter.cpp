#include "server/wire/GroupWriter.h"

#include "server/wire/ModelWalk.h"

#include <utility>

namespace zan::server {

namespace {

class FixFieldsSink {
public:
    void field(int tag, std::string_view value) {
        if (value.find(fieldSeparator) != std::string_view::npos) {
            refusal::separatorInside(tag);
        }
        data(tag, value);
    }

    void data(int tag, std::string_view value) { fields_.push_back({tag, std::string(value)}); }

    FixFields take() { return std::move(fields_); }

private:
    FixFields fields_;
};

} // namespace

FixFields writeFields(ZANFieldGroup const& message, std::string const& type,
                      CompiledDictionary const& dictionary) {
    if (!GroupAccess::isPlain(message)) {
        return writeFields(ZANFieldGroup(message), type, dictionary);
    }
    FixFieldsSink sink;
    ModelWalk<FixFieldsSink>(type, dictionary, sink).top(message, [](int) { return true; });
    return sink.take();
}

FixFields writeFields(ZANFieldGroup const& message, std::string const& type,
                      GroupDictionary const& dictionary) {
    return writeFields(message, type, CompiledDictionary(dictionary));
}

} // namespace zan::server
