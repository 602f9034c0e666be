#include "server/wire/Secrets.h"

#include "server/wire/FieldText.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <optional>
#include <string_view>

namespace zan::server {

namespace {

constexpr int rawDataLengthTag = 95;
constexpr int rawDataTag = 96;

bool isWordCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0;
}

// Goes from field to field, wherever one stands in the text.
class FieldSearch {
public:
    explicit FieldSearch(std::string_view text)
        : text_(text),
          separator_(text.find(fieldSeparator) == std::string_view::npos ? '|' : fieldSeparator) {}

    /// False at the end.
    bool next() {
        int const before = tag_;
        for (std::size_t equals = text_.find('=', end_); equals != std::string_view::npos;
             equals = text_.find('=', equals + 1)) {
            if (std::optional<int> const found = tagBefore(equals)) {
                tag_ = *found;
                begin_ = equals + 1;
                end_ = std::min(text_.find(separator_, begin_), text_.size());
                if (tag_ == rawDataTag && before == rawDataLengthTag) {
                    end_ = endByLength();
                } else if (tag_ == rawDataLengthTag) {
                    readLength();
                }
                return true;
            }
        }
        return false;
    }

    int tag() const { return tag_; }
    std::size_t begin() const { return begin_; }
    std::size_t end() const { return end_; }
    std::string_view value() const { return text_.substr(begin_, end_ - begin_); }

private:
    std::optional<int> tagBefore(std::size_t equals) const {
        std::size_t begin = equals;
        while (begin > end_ && isWordCharacter(text_[begin - 1])) {
            --begin;
        }
        int tag = 0;
        auto const [end, error] = std::from_chars(text_.data() + begin, text_.data() + equals, tag);
        bool const isTag = error == std::errc() && end == text_.data() + equals;
        return isTag ? std::optional(tag) : std::nullopt;
    }

    void readLength() {
        length_ = 0;
        std::from_chars(text_.data() + begin_, text_.data() + end_, length_);
    }

    // A length that cannot be right hides all the rest.
    std::size_t endByLength() const {
        bool const isWithin = length_ < text_.size() - begin_;
        return isWithin && text_[begin_ + length_] == separator_ ? begin_ + length_ : text_.size();
    }

    std::string_view const text_;
    char const separator_;
    int tag_ = 0;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    std::size_t length_ = 0;
};

bool holdsLogon(std::string_view text) {
    FieldSearch field(text);
    while (field.next()) {
        if (field.tag() == messageTypeTag && field.value() == "A") {
            return true;
        }
    }
    return false;
}

} // namespace

bool isSecretTag(int tag) {
    return tag == 554 || tag == 925 || tag == rawDataTag;
}

std::string maskSecrets(std::string const& text) {
    bool const isLogon = holdsLogon(text);
    std::string masked;
    std::size_t copied = 0;
    FieldSearch field(text);
    while (field.next()) {
        if (isSecretTag(field.tag()) && (isLogon || field.tag() != rawDataTag)) {
            masked.append(text, copied, field.begin() - copied).append("***");
            copied = field.end();
        }
    }
    return masked.append(text, copied);
}

std::string shownText(std::string const& text) {
    std::string shown = maskSecrets(text);
    std::size_t const size = shown.size();
    if (size <= longestShownText) {
        return shown;
    }
    std::size_t end = longestShownText;
    while (end > 0 && (static_cast<unsigned char>(shown[end]) & 0xc0) == 0x80) {
        --end; // not within a character of UTF-8
    }
    shown.resize(end);
    return shown + " ... (cut, " + std::to_string(size) + " bytes in all)";
}

} // namespace zan::server
