// How a session takes what comes in, and what keeps it within its bounds, whatever the counterparty
// sends and asks for.
#include "server/sessions/QuickFixMessages.h"
#include "server/sessions/QuickFixSession.h"
#include "server/sessions/QuickFixTurn.h"

#include <chrono>

namespace zan {
namespace server {

namespace {

// More bytes than this do not wait for the rest of what is taken at once.
std::size_t const mostHeld = 1024 * 1024;

// Others get a turn after this time.
std::chrono::milliseconds const longestTurn(20);

// Somebody who sends nothing but garbage is no counterparty.
int const mostGarbageInARow = 16;

bool isLogout(FIX::Message const& message) {
    return message.getHeader().isSetField(FIX::FIELD::MsgType) &&
           message.getHeader().getField(FIX::FIELD::MsgType) == FIX::MsgType_Logout;
}

} // namespace

// A logon is reported before the messages that follow it.
void QuickFixSession::take(std::vector<Incoming>& messages) {
    for (std::size_t taken = 0; taken < messages.size() && !link_.ending();) {
        Turn const turn(*this);
        hasResent_ = false;
        auto const end = FairLock::Clock::now() + longestTurn;
        while (taken < messages.size() && !closing_ && !link_.ending()) {
            takeOne(messages[taken++]);
            if (reports_.hasLogon() || hasResent_ || held_.size() > mostHeld ||
                FairLock::Clock::now() >= end)
                break;
        }
        settle();
    }
}

void QuickFixSession::takeOne(Incoming& incoming) {
    if (incoming.fault.empty() && !beginsInOrder(incoming.text))
        incoming.fault = "the third field is no MsgType (35)";
    if (!incoming.fault.empty()) {
        takeGarbage(incoming);
        return;
    }
    garbageInARow_ = 0;
    lastEvent_.clear();
    current_ = &incoming;
    readMessage(incoming.text, expected_, incoming_);
    std::string const badNumber = numberFault(incoming_);
    if (!badNumber.empty()) {
        endOver(incoming, badNumber);
        return;
    }
    boundEnd(incoming_);
    int const expected = store_.current().nextIn;
    int const distance = sequenceNumber(incoming_) - expected;
    if (distance > 0)
        keepText(incoming.text, incoming_);
    guarded([this] { session_->next(incoming_, stamp()); });
    // A Logout is obeyed whatever its number, and takes the place of no other message.
    FixNumbers const after = store_.current();
    if (distance != 0 && after.nextIn == expected + 1 && isLogout(incoming_))
        store_.setNumbers({after.nextOut, expected});
    // A repetition of what was taken is passed over without a word.
    if (current_ != nullptr && !(distance < 0 && isPossDup(incoming_)))
        refuse(std::move(incoming.text), lastEvent_);
    current_ = nullptr;
    if (fault_ || isUnread_)
        finishRefusal();
}

// A garbled message is dropped, the gap in the numbers brings it back.
void QuickFixSession::takeGarbage(Incoming& incoming) {
    reports_.trouble(FixTrouble::badBytes, incoming.fault);
    refuse(std::move(incoming.text), incoming.fault);
    if (!session_->isLoggedOn() || ++garbageInARow_ > mostGarbageInARow)
        closing_ = true;
}

void QuickFixSession::resendMore() {
    work([this] {
        resends_.forgetFrom(store_.current().nextOut);
        if (!hasMoreToResend())
            return;
        makeRequest(nextSlice(), id_, slice_);
        session_->next(slice_, stamp());
    });
}

// The first slice of a request goes out at once, where nothing else waits before it. A range that
// ends before it begins keeps QuickFIX from answering.
void QuickFixSession::beginToResend() {
    NumberRange range;
    int const nextOut = store_.current().nextOut;
    if (!rangeAskedFor(incoming_, nextOut, range))
        return;
    bool const isFirst = resends_.isEmpty();
    if (range.first <= range.last)
        resends_.want(range);
    bool const isNow = isFirst && hasMoreToResend() && link_.hasRoom();
    askFor(isNow ? nextSlice() : NumberRange{nextOut, -1}, incoming_);
}

// As much of what is due as is to be held in memory.
NumberRange QuickFixSession::nextSlice() {
    NumberRange slice = resends_.slice();
    slice.last = store_.fetch(slice, ResendPlan::sliceBytes);
    resends_.sent(slice, FairLock::Clock::now());
    hasResent_ = true;
    return slice;
}

// QuickFIX's callbacks may throw what they declare and nothing else, or the process ends.
void QuickFixSession::contained(Action const& action) {
    try {
        action();
    } catch (FIX::IncorrectDataFormat const&) {
        throw;
    } catch (FIX::UnsupportedMessageType const&) {
        throw;
    } catch (std::exception const& error) {
        broken_ = error.what();
        closing_ = true;
    }
}

// The message waits for the ones before it, in QuickFIX's memory.
void QuickFixSession::keepForLater() {
    if (current_ == nullptr)
        return;
    waiting_.keep(sequenceNumber(incoming_), current_->text.size(), isAdminText(current_->text));
    current_ = nullptr;
    if (!waiting_.isTooMuch())
        return;
    FixEntry remark;
    remark.origin = FixOrigin::remark;
    remark.note = waiting_.reason(store_.current().nextIn);
    reports_.trouble(FixTrouble::session, remark.note);
    store_.append(std::move(remark));
    closing_ = true;
}

void QuickFixSession::abandon(std::string const& reason) {
    work([this, &reason] {
        current_ = nullptr;
        fault_ = MessageFault();
        closing_ = true;
        fail(FixTrouble::session, reason);
    });
}

} // namespace server
} // namespace zan
