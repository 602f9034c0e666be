#include "apps/zan/MessageInput.h"

#include "server/wire/FieldText.h"
#include "server/wire/GroupReader.h"

#include <utility>

namespace zan::cli {

MessageInput::MessageInput(std::vector<std::string> messages, std::string const& file,
                           Interrupt const& interrupt)
    : messages_(std::move(messages)), file_(file == "-" ? "standard input" : file),
      lines_(messages_.empty() ? std::make_unique<InputLines>(file, interrupt) : nullptr) {}

bool MessageInput::next(std::string& message) {
    if (!lines_) {
        if (given_ == messages_.size()) {
            return false;
        }
        message = messages_[given_++];
        return true;
    }
    while (lines_->next(message)) {
        if (!message.empty() && message.front() != '#') {
            return true;
        }
    }
    return false;
}

std::string MessageInput::place() const {
    return lines_ ? file_ + ", line " + std::to_string(lines_->number())
                  : "message " + std::to_string(given_);
}

counted_ptr<ZANMessage> modelOf(std::string const& message, Dictionary const& dictionary) {
    char const separator =
        message.find(server::fieldSeparator) == std::string::npos ? '|' : server::fieldSeparator;
    return counted_ptr<ZANMessage>(new ZANMessage(
        server::readMessage(message, separator, server::Reading::Strict, dictionary.compiled)));
}

} // namespace zan::cli
