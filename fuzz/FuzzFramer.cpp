// Any bytes of a link: they are cut into the same messages and the same garbage however they come
// in, every byte is accounted for, and what is no message yet is bounded.
#include "Demand.h"
#include "server/sessions/FixFramer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using namespace zan::server;

// The messages that come out when the bytes come in pieces of these lengths, over and over.
std::vector<std::string> cut(std::string const& bytes, std::vector<std::size_t> const& lengths) {
    FixFramer framer;
    std::vector<std::string> messages;
    std::string message;
    std::string fault;
    std::size_t piece = 0;
    for (std::size_t at = 0; at < bytes.size();) {
        std::size_t const length = std::min(lengths[piece++ % lengths.size()], bytes.size() - at);
        framer.append(bytes.data() + at, length);
        at += length;
        for (FixFramer::Result result = framer.next(message, fault);
             result != FixFramer::Result::incomplete; result = framer.next(message, fault)) {
            bool const isMessage = result == FixFramer::Result::message;
            demand(!message.empty(), "what comes out is not empty");
            demand(isMessage || message.size() <= FixFramer::mostShown, "garbage is shown in part");
            if (isMessage) {
                messages.push_back(message);
            }
        }
    }
    return messages;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string bytes(reinterpret_cast<char const*>(data), size);
    std::replace(bytes.begin(), bytes.end(), '|', '\x01');
    std::vector<std::string> const whole = cut(bytes, {bytes.size() + 1});
    demand(cut(bytes, {1}) == whole, "single bytes make the same messages");
    demand(cut(bytes, {3, 7, 1, 40}) == whole, "pieces make the same messages");
    std::size_t from = 0;
    for (std::string const& message : whole) {
        from = bytes.find(message, from);
        demand(from != std::string::npos,
               "a message is part of the bytes, behind the one before it");
        from += message.size();
        demand(cut(message, {message.size()}) == std::vector<std::string>{message},
               "a message alone is the same message");
    }
    return 0;
}
