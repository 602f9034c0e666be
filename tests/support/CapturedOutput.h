#ifndef ZANENGINE_TESTS_SUPPORT_CAPTUREDOUTPUT_H
#define ZANENGINE_TESTS_SUPPORT_CAPTUREDOUTPUT_H

#include <iostream>
#include <sstream>
#include <streambuf>
#include <string>

/// Catches what is written to `std::cout` as long as it lives, and tells how much of it was
/// flushed.
class CapturedOutput {
public:
    CapturedOutput() : before_(std::cout.rdbuf(&buffer_)) {}
    CapturedOutput(CapturedOutput const&) = delete;
    CapturedOutput& operator=(CapturedOutput const&) = delete;
    ~CapturedOutput() { std::cout.rdbuf(before_); }

    std::string text() const { return buffer_.str(); }

    /// What had been written when the stream was flushed last.
    std::string flushedText() const { return buffer_.flushed; }

private:
    struct Buffer : std::stringbuf {
        std::string flushed;
        int sync() override {
            flushed = str();
            return 0;
        }
    };

    Buffer buffer_;
    std::streambuf* before_;
};

#endif
