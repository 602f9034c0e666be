#include "server/sessions/GapCount.h"

namespace zan {
namespace server {

namespace {
// What a message object takes beside the text: the fields of its header, the tables that hold them.
std::size_t const objectSize = 3 * 1024;
} // namespace

std::size_t const GapCount::mostBytes;

// The fields of an administrative message are kept one by one, too, and so once more.
void GapCount::keep(int number, std::size_t textSize, bool isAdmin) {
    release(number);
    std::size_t const size = objectSize + textSize * (isAdmin ? 3 : 1);
    sizes_[number] = size;
    bytes_ += size;
}

void GapCount::release(int number) {
    auto const found = sizes_.find(number);
    if (found == sizes_.end())
        return;
    bytes_ -= found->second;
    sizes_.erase(found);
}

void GapCount::clear() {
    sizes_.clear();
    bytes_ = 0;
}

std::string GapCount::reason(int expected) const {
    return "the message with number " + std::to_string(expected) + " is missing, and the " +
           std::to_string(sizes_.size()) + " that came after it take more than " +
           std::to_string(mostBytes / (1024 * 1024)) + " MiB; the link is ended";
}

} // namespace server
} // namespace zan
