#include "server/sessions/ResendSlices.h"

#include <algorithm>
#include <cstdlib>

namespace zan {
namespace server {

namespace {

// 0 where there is no number.
int numberIn(FIX::Message const& message, int tag) {
    return message.isSetField(tag) ? std::atoi(message.getFieldRef(tag).getString().c_str()) : 0;
}

// Where the request ends: a number beyond the newest one, 0, and up to FIX 4.2 999999, too, ask for
// everything.
int lastIn(FIX::Message const& request, int nextOut) {
    int const last = numberIn(request, FIX::FIELD::EndSeqNo);
    std::string const& begin = request.getHeader().getField(FIX::FIELD::BeginString);
    bool const isOpen = last == 0 || (last == 999999 && begin <= FIX::BeginString_FIX42);
    return isOpen ? nextOut - 1 : std::min(last, nextOut - 1);
}

void ask(FIX::Message& request, int first, int last) {
    request.setField(FIX::BeginSeqNo(first));
    request.setField(FIX::EndSeqNo(last));
}

} // namespace

int const ResendSlices::sliceLength;
std::size_t const ResendSlices::mostWaiting;

void ResendSlices::shorten(FIX::Message& request, int nextOut) {
    int const first = numberIn(request, FIX::FIELD::BeginSeqNo);
    if (first <= 0 || !request.isSetField(FIX::FIELD::EndSeqNo))
        return;
    int const last = lastIn(request, nextOut);
    // QuickFIX would answer numbers that were never sent, and a range that ends before it begins,
    // with a gap that goes backwards.
    if (last < first)
        ask(request, nextOut, -1);
    if (last - first < sliceLength)
        return;
    if (waiting_.size() == mostWaiting)
        waiting_.pop_front();
    waiting_.push_back({request, first + sliceLength, last});
    ask(request, first, first + sliceLength - 1);
}

// The time is a new one, because the first time may be long ago when the last slice is taken.
FIX::Message ResendSlices::take() {
    Rest& rest = waiting_.front();
    FIX::Message request = rest.request;
    request.getHeader().setField(FIX::MsgSeqNum(0));
    request.getHeader().setField(FIX::SendingTime(FIX::UtcTimeStamp()));
    ask(request, rest.first, std::min(rest.last, rest.first + sliceLength - 1));
    rest.first += sliceLength;
    if (rest.first > rest.last)
        waiting_.pop_front();
    return request;
}

} // namespace server
} // namespace zan
