#include "infra/TextLine.h"

#include "infra/ValueText.h"

#include <algorithm>
#include <charconv>
#include <ostream>

namespace zan {

TextLine& TextLine::add(std::string_view text) {
    if (text.size() > sizeof text_ - size_) {
        write();
        if (text.size() > sizeof text_) {
            os_.write(text.data(), static_cast<std::streamsize>(text.size()));
            return *this;
        }
    }
    size_ += text.copy(text_ + size_, text.size());
    return *this;
}

TextLine& TextLine::add(int number) {
    DigitBuffer digits;
    auto const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    return add(std::string_view(digits, static_cast<std::size_t>(end - digits)));
}

TextLine& TextLine::add(Value const& value) {
    if (usesDefaultText()) {
        DigitBuffer digits;
        return add(defaultText(value, digits));
    }
    // Written first: what the application's presentation does comes after it, also when it throws.
    write();
    return add(std::string_view(value.asString()));
}

TextLine& TextLine::addBlanks(std::size_t count) {
    constexpr std::string_view blanks = "                                ";
    for (; count > blanks.size(); count -= blanks.size()) {
        add(blanks);
    }
    return add(blanks.substr(0, count));
}

void TextLine::end() {
    add("\n");
    write();
    os_.flush();
}

void TextLine::write() {
    os_.write(text_, static_cast<std::streamsize>(size_));
    size_ = 0;
}

} // namespace zan
