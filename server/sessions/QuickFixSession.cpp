#include "server/sessions/QuickFixSession.h"

#include "server/sessions/FixScanner.h"
#include "server/sessions/MemoryStore.h"
#include "server/sessions/QuickFixMessages.h"
#include "server/sessions/QuickFixTurn.h"
#include "server/sessions/SequenceNumbers.h"
#include "server/sessions/SessionSetup.h"

#include <chrono>
#include <cstring>
#include <mutex>
#include <stdexcept>

#include <quickfix/SessionFactory.h>

namespace zan {
namespace server {

namespace {

char const* const queuedEvent = "Processing QUEUED message: ";

char const* const hoursOver = "the session's hours are over";

long long steadyMillis() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

bool beginsWith(std::string const& text, char const* beginning) {
    return std::strncmp(text.c_str(), beginning, std::strlen(beginning)) == 0;
}

// QuickFIX tells everything that it does; these are the beginnings of what is no trouble.
bool isOrdinary(std::string const& event) {
    static char const* const beginnings[] = {
        "Created session",    "Initiated logo",    "Received logon re",
        "Received logout re", "Sending logout",    "Responding to logon",
        "Disconnecting",      "Sent test request", "Sent ResendRequest",
        "Sent SequenceReset", "Received Sequence", "Received ResendRequest",
        "Resending Message",  "Processing QUEUED", "Already sent Resend",
        "MsgSeqNum too high", "ResendRequest for", "Logon contains ResetSeqNumFlag",
    };
    for (char const* beginning : beginnings)
        if (beginsWith(event, beginning))
            return true;
    return false;
}

FixTrouble kindOf(std::string const& event) {
    return beginsWith(event, "Timed out") ? FixTrouble::timedOut : FixTrouble::session;
}

std::function<long long()> clockOr(std::function<long long()> const& clock) {
    using namespace std::chrono;
    if (clock)
        return clock;
    return [] {
        return static_cast<long long>(
            duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count());
    };
}

} // namespace

// QuickFIX wants to destroy the logs that it was given; ours is the session itself.
class QuickFixSession::Logs : public FIX::LogFactory {
public:
    explicit Logs(FIX::Log& log) : log_(log) {}
    FIX::Log* create() override { return &log_; }
    FIX::Log* create(FIX::SessionID const&) override { return &log_; }
    void destroy(FIX::Log*) override {}

private:
    FIX::Log& log_;
};

QuickFixSession::QuickFixSession(FixSessionSettings const& settings, bool initiator,
                                 FixSessionEvents& events, SocketLink& link)
    : link_(link), expected_{FIX::SessionID(), settings.check, settings.takesEmptyValues},
      ownLog_(settings.store == nullptr ? new MemoryStore : nullptr),
      log_(settings.store == nullptr ? *ownLog_ : *settings.store), logs_(new Logs(*this)),
      hours_(settings.keys), clock_(clockOr(settings.clock)), events_(events), reports_(events),
      store_(log_, clock_) {
    try {
        create(settings, initiator);
    } catch (FIX::Exception const& error) {
        throw std::runtime_error(error.what());
    }
}

QuickFixSession::~QuickFixSession() = default;

void QuickFixSession::create(FixSessionSettings const& settings, bool initiator) {
    FIX::Dictionary const keys = makeDictionary(settings, initiator);
    id_ = makeSessionId(keys);
    expected_.session = id_;
    Turn const turn(*this);
    // Two session objects with one id would share an entry of QuickFIX's table.
    static std::mutex creating;
    std::lock_guard<std::mutex> lock(creating);
    if (FIX::Session::doesSessionExist(id_))
        throw std::runtime_error("the session " + id_.toString() +
                                 " is already live in this process");
    // It looks at the system's clock, and resets the numbers where that finds a new day.
    QuickFixStore::Hold const hold(store_);
    session_.reset(FIX::SessionFactory(*this, store_, logs_.get()).create(id_, keys));
    reports_.forget();
}

// The time for QuickFIX to go by, which for it is never that of another session.
FIX::UtcTimeStamp QuickFixSession::stamp() {
    FIX::UtcTimeStamp now;
    store_.setCreationTime(now);
    return now;
}

void QuickFixSession::work(Action const& action) {
    Turn const turn(*this);
    guarded(action);
    settle();
}

void QuickFixSession::guarded(Action const& action) {
    std::string reason = "an unknown error in the session";
    try {
        action();
        return;
    } catch (std::exception const& error) {
        reason = error.what();
    } catch (...) {
        // Nothing more is known about it.
    }
    lastEvent_ = reason;
    reports_.trouble(FixTrouble::session, reason);
    closing_ = true;
}

// The end of a transaction of the session's own: where it fails the link ends, because what came
// in was not taken and what goes out is missing.
void QuickFixSession::settle() {
    std::vector<FixEntry> entries;
    if (reports_.hasLogon())
        store_.askForReset(false);
    if (broken_.empty() && store_.commit(entries)) {
        letOut(entries);
    } else {
        closing_ = true;
        bool const isStored = store_.failure().empty();
        fail(isStored || store_.isUsedUp() ? FixTrouble::session : FixTrouble::storage,
             isStored ? broken_ : store_.failure());
    }
    if (closing_)
        link_.end();
}

void QuickFixSession::letOut(std::vector<FixEntry>& entries) {
    if (!held_.empty())
        link_.write(held_);
    held_.clear();
    if (!entries.empty())
        events_.logged(entries);
    reports_.deliver();
}

// By value: rolling back clears the store's own text of its failure.
void QuickFixSession::fail(FixTrouble kind, std::string reason) {
    store_.rollBack();
    held_.clear();
    broken_.clear();
    reports_.fail(kind, reason);
}

void QuickFixSession::attach() {
    work([this] {
        closing_ = false;
        garbageInARow_ = 0;
        resends_.clear();
        isHeard_ = false;
        renewNumbering();
        session_->logon();
        {
            QuickFixStore::Hold const hold(store_); // it looks at the system's clock, too
            session_->setResponder(this);
        }
        keepHours();
        if (!closing_)
            session_->next(stamp());
    });
}

void QuickFixSession::tick() {
    work([this] {
        keepHours();
        countKeptAsHeard();
        session_->next(stamp());
    });
}

bool QuickFixSession::hasRunEnded(long long now) const {
    return hours_.endsAt(store_.numbering().began) < hours_.endsAt(now);
}

// Outside the hours nobody stays logged on, and nobody logs on.
void QuickFixSession::keepHours() {
    long long const now = clock_();
    if (hours_.isOpen(now) && !hasRunEnded(now))
        return;
    if (session_->isLoggedOn()) {
        session_->logout(hoursOver);
    } else if (!closing_) {
        reports_.trouble(FixTrouble::closed, hoursOver);
        closing_ = true;
    }
}

// Once for each border that was passed. Numbers that began while the session was closed are those
// of its next run.
void QuickFixSession::renewNumbering() {
    long long const now = clock_();
    FixNumbering const numbering = store_.numbering();
    if (hasRunEnded(now)) {
        store_.beginNumbering();
        addRemark("sequence numbers reset to 1: the session ended at " +
                  utcText(hours_.endsAt(numbering.began)));
    } else if (hours_.endsAt(now) < hours_.never &&
               hours_.endsAt(hours_.endsAt(now)) < hours_.endsAt(numbering.began)) {
        // A clock that was wrong by more than a whole run must not keep the numbers until then.
        store_.setNumbering({now, numbering.asksForReset});
        addRemark("the sequence numbers are said to begin at " + utcText(numbering.began) +
                  ", which is to come; they count from now");
    }
}

std::string QuickFixSession::rest() {
    work([this] { renewNumbering(); });
    return hours_.closedText(clock_());
}

void QuickFixSession::tickWithoutReading() {
    work([this] {
        keepHours();
        long long const interval = 1000LL * session_->getHeartBtInt().getValue();
        if (!session_->isEnabled()) {
            session_->next(stamp());
            return;
        }
        if (!session_->isLoggedOn() || interval == 0 || steadyMillis() - lastSentMillis_ < interval)
            return;
        FIX::Message heartbeat;
        heartbeat.getHeader().setField(FIX::MsgType(FIX::MsgType_Heartbeat));
        session_->send(heartbeat);
    });
}

bool QuickFixSession::sayLogout(std::string const& text) {
    bool const answerExpected = isLoggedOn();
    work([this, &text] {
        session_->logout(text);
        session_->next(stamp());
    });
    return answerExpected;
}

void QuickFixSession::detach() {
    work([this] {
        waiting_.clear();
        session_->disconnect();
        renewNumbering();
    });
}

FixSendResult QuickFixSession::send(std::vector<FixOutgoing> const& messages,
                                    FairLock::Clock::time_point deadline, std::vector<long>& ids) {
    Turn const turn(*this, deadline);
    if (!turn.isHeld())
        return FixSendResult::busy;
    if (closing_ || !session_->isLoggedOn())
        return FixSendResult::notLoggedOn;
    std::string reason = write(messages, ids);
    std::vector<FixEntry> entries;
    if (reason.empty() && store_.commit(entries)) {
        letOut(entries);
        return FixSendResult::sent;
    }
    ids.clear();
    if (!store_.failure().empty())
        reason = store_.failure();
    bool const isStorage = !store_.failure().empty() && !store_.isUsedUp();
    fail(isStorage ? FixTrouble::storage : FixTrouble::session, reason);
    return FixSendResult::refused;
}

// Returns why that failed.
std::string QuickFixSession::write(std::vector<FixOutgoing> const& messages,
                                   std::vector<long>& ids) {
    std::string reason;
    ids_ = &ids;
    try {
        for (FixOutgoing const& each : messages) {
            own_ = &each;
            outgoing_.clear();
            outgoing_.getHeader().setField(FIX::MsgType(each.msgType));
            writeBody(each.body, outgoing_);
            session_->send(outgoing_);
        }
        if (ids.size() != messages.size())
            reason = "the session did not send what it was given";
    } catch (std::exception const& error) {
        reason = error.what();
    }
    own_ = nullptr;
    ids_ = nullptr;
    return reason;
}

void QuickFixSession::resetNumbers(std::string const& note) {
    changeNumbers({note}, [this] {
        store_.beginNumbering();
        store_.askForReset(true);
    });
}

void QuickFixSession::setNumbers(FixNumbers numbers, std::vector<std::string> const& notes) {
    changeNumbers(notes, [this, numbers] {
        renewNumbering();
        FixNumbers const now = store_.current();
        store_.setNumbers({numbers.nextOut > 0 ? numbers.nextOut : now.nextOut,
                           numbers.nextIn > 0 ? numbers.nextIn : now.nextIn});
        store_.askForReset(false);
    });
}

template <typename Change>
void QuickFixSession::changeNumbers(std::vector<std::string> const& notes, Change const& change) {
    Turn const turn(*this);
    change();
    for (std::string const& note : notes)
        addRemark(note);
    std::vector<FixEntry> entries;
    if (!store_.commit(entries)) {
        std::string const reason = store_.failure();
        fail(FixTrouble::storage, reason);
        throw std::runtime_error(reason);
    }
    letOut(entries);
}

void QuickFixSession::addRemark(std::string const& note) {
    FixEntry remark;
    remark.stream = FixStream::adminOut;
    remark.origin = FixOrigin::remark;
    remark.note = note;
    store_.append(std::move(remark));
}

void QuickFixSession::onLogon(FIX::SessionID const&) {
    reports_.loggedOn(session_->getHeartBtInt());
}

void QuickFixSession::onLogout(FIX::SessionID const&) {
    reports_.loggedOff();
}

void QuickFixSession::toAdmin(FIX::Message& message, FIX::SessionID const&) {
    store_.forgetNumber();
    std::string const& type = message.getHeader().getField(FIX::FIELD::MsgType);
    if (type == FIX::MsgType_Logon)
        addLogonFields(message);
    else if (type == FIX::MsgType_Reject || type == FIX::MsgType_Logout)
        refuseAsAnswered(message);
    if (type == FIX::MsgType_Reject && fault_)
        tellFault(message);
}

void QuickFixSession::toApp(FIX::Message& message, FIX::SessionID const&) throw(FIX::DoNotSend) {
    store_.forgetNumber();
    contained([&] {
        if (own_ == nullptr)
            refuseAsAnswered(message);
    });
}

// The fields that the session looks at itself have to stand alone.
void QuickFixSession::addLogonFields(FIX::Message& logon) {
    FixFields others;
    for (FixField const& field : logonFields_) {
        if (logon.isSetField(field.tag) || field.tag == FIX::FIELD::ResetSeqNumFlag)
            logon.setField(FIX::FieldBase(field.tag, field.value));
        else
            others.push_back(field);
    }
    writeBody(others, logon);
    if (!session_->isInitiator())
        return;
    // A counterparty that was asked, and perhaps did not hear it, is asked until it agrees.
    bool const asks = logon.isSetField(FIX::FIELD::ResetSeqNumFlag) &&
                      logon.getField(FIX::FIELD::ResetSeqNumFlag) == "Y";
    if (asks)
        store_.askForReset(true);
    else if (store_.numbering().asksForReset)
        logon.setField(FIX::ResetSeqNumFlag(true));
}

void QuickFixSession::fromAdmin(FIX::Message const& message,
                                FIX::SessionID const&) throw(FIX::IncorrectDataFormat) {
    // The request was accepted with its first slice.
    if (&message == &slice_)
        return;
    contained([&] {
        accept(message, FixStream::adminIn);
        if (&message == &incoming_ && session_->getPersistMessages() &&
            message.getHeader().getField(FIX::FIELD::MsgType) == FIX::MsgType_ResendRequest)
            beginToResend();
    });
}

void QuickFixSession::fromApp(FIX::Message const& message,
                              FIX::SessionID const&) throw(FIX::IncorrectDataFormat,
                                                           FIX::UnsupportedMessageType) {
    contained([&] { accept(message, FixStream::appIn); });
}

void QuickFixSession::onOutgoing(std::string const& text) {
    lastSentMillis_ = steadyMillis();
    bool const isAdmin = isAdminText(text);
    FixEntry entry;
    if (store_.usedNumber()) {
        entry.seq = store_.current().nextOut - 1;
        entry.text = text;
        entry.stream = isAdmin ? FixStream::adminOut : FixStream::appOut;
        if (own_ != nullptr && own_->resent)
            entry.stream = FixStream::resent;
        if (isAdmin && fixValue(text, FIX::FIELD::MsgType) == FIX::MsgType_ResendRequest)
            resends_.asked(entry.seq);
    } else {
        entry.seq = sequenceNumberIn(fixValue(text, FIX::FIELD::MsgSeqNum));
        entry.text = isAdmin ? text : store_.repetition(entry.seq, text);
        entry.stream = isAdmin ? FixStream::adminOut : FixStream::resent;
        entry.origin = FixOrigin::again;
    }
    store_.forgetNumber();
    held_ += entry.text;
    long const id = store_.append(std::move(entry));
    if (ids_ != nullptr)
        ids_->push_back(id);
}

void QuickFixSession::onEvent(std::string const& event) {
    // That QuickFIX cannot reject a Logon is not what is wrong with the Logon.
    bool const isUntold =
        current_ != nullptr && beginsWith(event, "Tried to send a reject while not logged on");
    std::string text = isUntold ? faultOfLogon(current_->text, id_) : event;
    if (fault_ && beginsWith(event, "Tried to send a reject"))
        return; // told when the refusal is finished
    if (fault_ && beginsWith(event, "Message "))
        text = "Message refused: " + describe(fault_);
    if (beginsWith(text, "MsgSeqNum too high"))
        keepForLater();
    else if (beginsWith(text, queuedEvent))
        waiting_.release(std::atoi(text.c_str() + std::strlen(queuedEvent)));
    if (!beginsWith(text, "Disconnecting"))
        lastEvent_ = text;
    if (!isOrdinary(text))
        reports_.trouble(kindOf(text), text);
}

} // namespace server
} // namespace zan
