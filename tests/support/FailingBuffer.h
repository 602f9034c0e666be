/// A stream's buffer that takes a number of characters and then no more.
#ifndef ZANENGINE_TESTS_SUPPORT_FAILINGBUFFER_H
#define ZANENGINE_TESTS_SUPPORT_FAILINGBUFFER_H

#include <cstddef>
#include <stdexcept>
#include <streambuf>
#include <string>

/// Beyond its room it refuses, or throws `Full`.
class FailingBuffer : public std::streambuf {
public:
    struct Full : std::runtime_error {
        Full() : std::runtime_error("the buffer is full") {}
    };

    FailingBuffer(std::size_t room, bool throws) : room_(room), throws_(throws) {}

    std::string const& text() const { return text_; }

protected:
    int_type overflow(int_type character) override {
        if (text_.size() < room_) {
            text_ += traits_type::to_char_type(character);
            return character;
        }
        if (throws_) {
            throw Full();
        }
        return traits_type::eof();
    }

private:
    std::size_t room_;
    bool throws_;
    std::string text_;
};

#endif
