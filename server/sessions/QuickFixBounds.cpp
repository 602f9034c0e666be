// How a session takes what comes in, and what keeps it within its bounds, whatever the counterparty
// sends and asks for.
#include "server/sessions/FixScanner.h"
#include "server/sessions/QuickFixMessages.h"
#include "server/sessions/QuickFixSession.h"
#include "server/sessions/QuickFixTurn.h"
#include "server/sessions/SequenceNumbers.h"

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

bool isOf(FIX::Message const& message, char const* type) {
    return message.getHeader().isSetField(FIX::FIELD::MsgType) &&
           message.getHeader().getField(FIX::FIELD::MsgType) == type;
}

// A SequenceReset does its work under any number.
bool isRepetition(FIX::Message const& message) {
    return isPossDup(message) && !isOf(message, FIX::MsgType_SequenceReset);
}

// QuickFIX obeys a Logout whatever its number, and a Reject that comes early: they take the place
// of no other message.
QuickFixStore::Held heldFor(FIX::Message const& message, int distance) {
    bool const isElsewhere = (distance != 0 && isOf(message, FIX::MsgType_Logout)) ||
                             (distance > 0 && isOf(message, FIX::MsgType_Reject));
    return isElsewhere ? QuickFixStore::Held::incoming : QuickFixStore::Held::nothing;
}

// What a gap fill that is sent again says is the next number after it; 0 for another message.
int fillsGapUpTo(FIX::Message const& message) {
    bool const isGapFill = isOf(message, FIX::MsgType_SequenceReset) &&
                           message.isSetField(FIX::FIELD::GapFillFlag) &&
                           message.isSetField(FIX::FIELD::NewSeqNo) &&
                           message.getField(FIX::FIELD::GapFillFlag) == "Y";
    return isGapFill && isPossDup(message)
               ? sequenceNumberIn(message.getField(FIX::FIELD::NewSeqNo))
               : 0;
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

// While there is a gap, a gap fill that begins below it still fills what it covers: what came in
// early may have led beyond its beginning.
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
    else if (distance < 0 && waiting_.bytes() > 0 && fillsGapUpTo(incoming_) > expected)
        incoming_.getHeader().setField(FIX::MsgSeqNum(expected));
    {
        QuickFixStore::Hold const hold(store_, heldFor(incoming_, distance));
        guarded([this] { session_->next(incoming_, stamp()); });
    }
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
        NumberRange const slice = nextSlice();
        if (slice.last < slice.first)
            return;
        makeRequest(slice, id_, slice_);
        session_->next(slice_, stamp());
    });
}

// The first slice of a request goes out at once, where nothing else waits before it.
void QuickFixSession::beginToResend() {
    NumberRange range;
    int const nextOut = store_.current().nextOut;
    if (!rangeAskedFor(incoming_, nextOut, range))
        return;
    bool const isFirst = resends_.isEmpty();
    if (range.first <= range.last)
        resends_.want(range);
    bool const isNow = isFirst && hasMoreToResend() && link_.hasRoom();
    askFor(isNow ? nextSlice() : nothing(), incoming_);
}

// A range that ends before it begins keeps QuickFIX from answering.
NumberRange QuickFixSession::nothing() const {
    return {store_.current().nextOut, -1};
}

// As much of what is due as is to be held in memory; nothing while the end of a gap is not found.
NumberRange QuickFixSession::nextSlice() {
    NumberRange slice = resends_.slice();
    hasResent_ = true;
    int const covered = store_.fetch(slice, resends_.firstToRead(), ResendPlan::sliceBytes);
    slice.last = resends_.isEnd(covered) ? covered : store_.dropTail();
    if (slice.last < slice.first) {
        resends_.gapTo(covered);
        return nothing();
    }
    resends_.sent(slice, FairLock::Clock::now());
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

void QuickFixSession::accept(FIX::Message const& message, FixStream stream) {
    FixEntry entry;
    entry.stream = stream;
    entry.seq = sequenceNumber(message);
    bool const isTakenAgain = entry.seq < store_.current().nextIn && isRepetition(message);
    entry.text = takeText(message);
    if (isOf(message, FIX::MsgType_SequenceReset))
        entry.seq = sequenceNumberIn(fixValue(entry.text, FIX::FIELD::MsgSeqNum));
    fault_ = faultOf(message);
    if (fault_) {
        refuse(std::move(entry.text), describe(fault_));
        if (fault_.reason == RejectReason::unsupportedType && stream == FixStream::appIn)
            throw FIX::UnsupportedMessageType();
        throw FIX::IncorrectDataFormat(fault_.tag, textOf(fault_.reason));
    }
    if (!isTakenAgain)
        store_.append(std::move(entry));
}

// The text of the message that came in right now, or of one that had to wait.
std::string QuickFixSession::takeText(FIX::Message const& message) {
    if (current_ != nullptr && &message == &incoming_) {
        std::string text;
        text.swap(current_->text);
        current_ = nullptr;
        return text;
    }
    std::string const* const kept = keptText(message);
    return kept != nullptr ? *kept : message.toString();
}

// The message waits for the ones before it, in QuickFIX's memory.
void QuickFixSession::keepForLater() {
    if (current_ == nullptr)
        return;
    waiting_.keep(sequenceNumber(incoming_), current_->text.size(), isAdminText(current_->text));
    current_ = nullptr;
    isHeard_ = true;
    if (!waiting_.isTooMuch())
        return;
    FixEntry remark;
    remark.origin = FixOrigin::remark;
    remark.note = waiting_.reason(store_.current().nextIn);
    reports_.trouble(FixTrouble::session, remark.note);
    store_.append(std::move(remark));
    closing_ = true;
}

// QuickFIX takes what it keeps for no sign of life, unlike a resend request.
void QuickFixSession::countKeptAsHeard() {
    if (!isHeard_ || !session_->isLoggedOn())
        return;
    isHeard_ = false;
    makeRequest(nothing(), id_, slice_);
    session_->next(slice_, stamp());
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
