/// What is left of resend requests that ask for much.
#ifndef ZANENGINE_SERVER_SESSIONS_RESENDSLICES_H
#define ZANENGINE_SERVER_SESSIONS_RESENDSLICES_H

#include <cstddef>
#include <deque>

#include <quickfix/Message.h>

namespace zan {
namespace server {

/// QuickFIX answers a resend request at once, with all its messages in memory: it gets one slice of
/// the request after the other, when there is room for it. One thread at a time.
class ResendSlices {
public:
    /// So many numbers are one slice.
    static int const sliceLength = 500;
    /// More requests than this do not wait at a time; the oldest one is given up for a new one.
    static std::size_t const mostWaiting = 16;

    /// Leaves the first slice of the request, and keeps the rest; `nextOut` is the number of the
    /// next message out.
    void shorten(FIX::Message& request, int nextOut);

    bool isEmpty() const { return waiting_.empty(); }
    /// A request for the next slice, under a number that the session does not count.
    FIX::Message take();
    void clear() { waiting_.clear(); }

private:
    struct Rest {
        FIX::Message request;
        int first;
        int last;
    };

    std::deque<Rest> waiting_;
};

} // namespace server
} // namespace zan

#endif
