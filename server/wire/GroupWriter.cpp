#include "server/wire/GroupWriter.h"

#include "server/wire/ModelWalk.h"

#include <utility>

namespace zan::server {

namespace {

class FixFieldsSink {
public:
    explicit FixFieldsSink(CompiledDictionary const& dictionary) : dictionary_(dictionary) {}

    bool field(int tag, std::string_view text) {
        if (text.find(fieldSeparator) != std::string_view::npos) {
            refusal::separatorInside(tag);
        }
        data(tag, text);
        return !text.empty();
    }

    bool field(int tag, Value const& value) {
        DigitBuffer digits;
        return field(tag, defaultText(value, digits));
    }

    void data(int tag, std::string_view text) {
        fields_.emplace_back(tag, std::string(text), dictionary_.placeOf(tag));
    }

    FixFields take() { return std::move(fields_); }

private:
    CompiledDictionary const& dictionary_;
    FixFields fields_;
};

} // namespace

FixFields writeFields(ZANFieldGroup const& message, std::string const& type,
                      CompiledDictionary const& dictionary) {
    return writeFields(message, type, dictionary, [](int) { return true; });
}

FixFields writeFields(ZANFieldGroup const& message, std::string const& type,
                      CompiledDictionary const& dictionary, bool (*isWanted)(int tag)) {
    if (!GroupAccess::isPlain(message)) {
        return writeFields(ZANFieldGroup(message), type, dictionary, isWanted);
    }
    FixFieldsSink sink(dictionary);
    ModelWalk<FixFieldsSink> walk(dictionary, sink);
    walk.setType(type);
    walk.top(message, isWanted);
    return sink.take();
}

} // namespace zan::server
