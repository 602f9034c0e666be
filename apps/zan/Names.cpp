#include "apps/zan/Names.h"

#include "infra/WrongConfigurationException.h"
#include "server/dictionaries/Dictionaries.h"

#include <charconv>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace zan::cli {

namespace {

std::string textOf(std::string const& file) {
    std::ifstream input(file);
    if (!input) {
        throw WrongConfigurationException(file + ": cannot be read; a dictionary in QuickFIX's XML "
                                                 "format would be right");
    }
    return {std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>()};
}

std::unique_ptr<Dictionary> parse(std::string const& xml, std::string const& name) {
    try {
        return std::make_unique<Dictionary>(
            Dictionary{server::FieldNames(xml, name), server::compileDictionary(xml, name)});
    } catch (std::runtime_error const& failure) {
        throw WrongConfigurationException(failure.what());
    }
}

std::unique_ptr<Dictionary> load(std::string const& file, std::string_view beginString) {
    auto builtIn = parse(std::string(server::dictionaryFor(beginString)), std::string(beginString));
    if (file.empty()) {
        return builtIn;
    }
    auto own = parse(textOf(file), file);
    own->names.addMissing(builtIn->names);
    return own;
}

} // namespace

Names::Names(std::string dictionaryFile) : given_(std::move(dictionaryFile)), file_(given_) {}

void Names::useUnlessGiven(std::string const& dictionaryFile) {
    if (given_.empty()) {
        file_ = dictionaryFile;
    }
}

Dictionary const& Names::of(std::string_view beginString) {
    // The built-in dictionaries are two; what they are told apart by is their text.
    std::size_t const size = server::dictionaryFor(beginString).size();
    std::unique_ptr<Dictionary>& dictionary = dictionaries_[{file_, size}];
    if (!dictionary) {
        dictionary = load(file_, beginString);
    }
    return *dictionary;
}

std::string Names::typeName(std::string_view type, std::string_view beginString) {
    std::string_view const name = of(beginString).names.ofMessage(type);
    return std::string(name.empty() ? type : name);
}

int Names::tagOf(std::string const& numberOrName) {
    int tag = 0;
    char const* const end = numberOrName.data() + numberOrName.size();
    auto const [stop, error] = std::from_chars(numberOrName.data(), end, tag);
    return error == std::errc() && stop == end && tag > 0 ? tag : of({}).names.tagOf(numberOrName);
}

} // namespace zan::cli
