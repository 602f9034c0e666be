// What a session says of a message that it does not take, to the counterparty and in the log.
#include "server/sessions/FixScanner.h"
#include "server/sessions/QuickFixMessages.h"
#include "server/sessions/QuickFixSession.h"
#include "server/sessions/SequenceNumbers.h"

namespace zan {
namespace server {

namespace {

std::string reasonIn(FIX::Message const& answer) {
    std::string reason;
    if (answer.isSetField(FIX::FIELD::Text))
        reason = answer.getField(FIX::FIELD::Text);
    if (answer.isSetField(FIX::FIELD::RefTagID))
        reason += " (tag " + answer.getField(FIX::FIELD::RefTagID) + ")";
    return reason;
}

} // namespace

// Without a number a message can be neither taken nor asked for again.
void QuickFixSession::endOver(Incoming& incoming, std::string const& reason) {
    current_ = nullptr;
    reports_.trouble(FixTrouble::badBytes, reason);
    refuse(std::move(incoming.text), reason);
    if (session_->isLoggedOn())
        guarded([this, &reason] {
            FIX::Message logout;
            logout.getHeader().setField(FIX::MsgType(FIX::MsgType_Logout));
            logout.setField(FIX::Text(reason));
            session_->send(logout);
        });
    closing_ = true;
}

// QuickFIX lets a link wait whose Logon it cannot reject, and would ask for a gap fill that it has
// refused again and again.
void QuickFixSession::finishRefusal() {
    FIX::Header const& header = incoming_.getHeader();
    bool const isGapFill = header.isSetField(FIX::FIELD::MsgType) &&
                           header.getField(FIX::FIELD::MsgType) == FIX::MsgType_SequenceReset;
    if (fault_ && !session_->isLoggedOn()) {
        reports_.trouble(FixTrouble::badBytes, describe(fault_));
        closing_ = true;
    } else if (isGapFill && sequenceNumber(incoming_) == store_.current().nextIn) {
        guarded([this] { session_->setNextTargetMsgSeqNum(store_.current().nextIn + 1); });
    }
    fault_ = MessageFault();
    isUnread_ = false;
}

// QuickFIX knows one kind of fault that a callback finds; what it says is made right. FIX 4.0
// and 4.1 have words only, and the reasons of FIX 4.2 end with that of the type.
void QuickFixSession::tellFault(FIX::Message& reject) {
    std::string const& version = id_.getBeginString().getValue();
    int const reason = static_cast<int>(fault_.reason);
    bool const hasTag = fault_.tag != FixScanner::noNumber;
    std::string text = textOf(fault_.reason);
    reject.removeField(FIX::FIELD::RefTagID);
    reject.removeField(FIX::FIELD::SessionRejectReason);
    if (version < FIX::BeginString_FIX42 && hasTag)
        text += " (" + std::to_string(fault_.tag) + ")";
    reject.setField(FIX::Text(text));
    if (version < FIX::BeginString_FIX42 || fault_.reason == RejectReason::unsupportedType)
        return;
    if (hasTag)
        reject.setField(FIX::RefTagID(fault_.tag));
    if (version > FIX::BeginString_FIX42 || fault_.reason <= RejectReason::invalidType)
        reject.setField(FIX::SessionRejectReason(reason));
}

void QuickFixSession::refuseAsAnswered(FIX::Message const& answer) {
    if (current_ == nullptr)
        return;
    std::string const reason = reasonIn(answer);
    refuse(std::move(current_->text), reason.empty() ? lastEvent_ : reason);
    current_ = nullptr;
    isUnread_ = answer.getHeader().getField(FIX::FIELD::MsgType) == FIX::MsgType_Reject;
}

void QuickFixSession::refuse(std::string text, std::string const& reason) {
    FixEntry entry;
    entry.stream = isAdminText(text) || fixValue(text, FIX::FIELD::MsgType).empty()
                       ? FixStream::adminIn
                       : FixStream::appIn;
    entry.origin = FixOrigin::remark;
    entry.seq = sequenceNumberIn(fixValue(text, FIX::FIELD::MsgSeqNum));
    entry.text = std::move(text);
    entry.note = "refused: " + reason;
    store_.append(std::move(entry));
}

} // namespace server
} // namespace zan
