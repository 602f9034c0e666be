#include "server/sessions/QuickFixSession.h"

#include "server/sessions/QuickFixMessages.h"
#include "server/sessions/SessionSetup.h"

#include <chrono>
#include <mutex>
#include <stdexcept>

#include <quickfix/FileStore.h>
#include <quickfix/SessionFactory.h>

namespace zan {
namespace server {

namespace {

long long nowMillis() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

// What became of the message that this thread is sending for the application right now.
struct OwnSend {
    OwnSend() : outer(current) { current = this; }
    ~OwnSend() { current = outer; }
    OwnSend(OwnSend const&) = delete;
    OwnSend& operator=(OwnSend const&) = delete;

    bool written = false;
    OwnSend* const outer;
    static thread_local OwnSend* current;
};

thread_local OwnSend* OwnSend::current = nullptr;

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
        if (event.compare(0, std::string(beginning).size(), beginning) == 0)
            return true;
    return false;
}

FixTrouble kindOf(std::string const& event) {
    return event.compare(0, 9, "Timed out") == 0 ? FixTrouble::timedOut : FixTrouble::session;
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
    : events_(events), link_(link), logs_(new Logs(*this)) {
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
    if (keys.has(FIX::FILE_STORE_PATH))
        stores_.reset(new FIX::FileStoreFactory(keys.getString(FIX::FILE_STORE_PATH)));
    else
        stores_.reset(new FIX::MemoryStoreFactory);
    // Two session objects with one id would share an entry of QuickFIX's table.
    static std::mutex creating;
    std::lock_guard<std::mutex> lock(creating);
    if (FIX::Session::doesSessionExist(id_))
        throw std::runtime_error("the session " + id_.toString() +
                                 " is already live in this process");
    session_.reset(FIX::SessionFactory(*this, *stores_, logs_.get()).create(id_, keys));
    session_->setDataDictionaryProvider(
        makeDictionaries(id_.getBeginString().getValue(), settings.groups));
}

bool QuickFixSession::isOpeningTime() const {
    FIX::UtcTimeStamp const now;
    return session_->isSessionTime(now) && session_->isLogonTime(now);
}

template <typename Action>
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
    events_.trouble(FixTrouble::session, reason);
    link_.end();
}

void QuickFixSession::attach() {
    guarded([this] {
        session_->logon();
        session_->setResponder(this);
        session_->next();
    });
}

void QuickFixSession::take(std::string const& text) {
    guarded([this, &text] {
        readMessage(text, incoming_);
        session_->next(incoming_, FIX::UtcTimeStamp());
    });
}

void QuickFixSession::tick() {
    guarded([this] { session_->next(); });
}

void QuickFixSession::tickWithoutReading() {
    guarded([this] {
        long long const interval = 1000LL * session_->getHeartBtInt().getValue();
        if (!isLoggedOn() || interval == 0 || nowMillis() - lastSentMillis_ < interval)
            return;
        FIX::Message heartbeat;
        heartbeat.getHeader().setField(FIX::MsgType(FIX::MsgType_Heartbeat));
        session_->send(heartbeat);
    });
}

bool QuickFixSession::sayLogout(std::string const& text) {
    bool const answerExpected = isLoggedOn();
    guarded([this, &text] {
        session_->logout(text);
        session_->next();
    });
    return answerExpected;
}

void QuickFixSession::detach() {
    guarded([this] { session_->disconnect(); });
}

FixSendResult QuickFixSession::send(std::string const& msgType, FixFields const& body) {
    OwnSend own;
    try {
        FIX::Message message;
        message.getHeader().setField(FIX::MsgType(msgType));
        writeBody(body, message);
        session_->send(message);
    } catch (FIX::DoNotSend const&) {
        return FixSendResult::notLoggedOn;
    } catch (std::exception const& error) {
        events_.trouble(FixTrouble::session, error.what());
        return FixSendResult::refused;
    }
    if (own.written)
        return FixSendResult::sent;
    return isLoggedOn() ? FixSendResult::refused : FixSendResult::notLoggedOn;
}

int QuickFixSession::nextSenderNumber() const {
    return session_->getExpectedSenderNum();
}

int QuickFixSession::nextTargetNumber() const {
    return session_->getExpectedTargetNum();
}

void QuickFixSession::onLogon(FIX::SessionID const&) {
    loggedOn_.store(true, std::memory_order_release);
    events_.loggedOn(session_->getHeartBtInt());
}

// Comes also for a logon that was never answered.
void QuickFixSession::onLogout(FIX::SessionID const&) {
    if (loggedOn_.exchange(false))
        events_.loggedOff();
}

void QuickFixSession::toAdmin(FIX::Message& message, FIX::SessionID const&) {
    refuseWhenLoggedOff();
    if (message.getHeader().getField(FIX::FIELD::MsgType) == FIX::MsgType_Logon)
        addLogonFields(message);
}

void QuickFixSession::toApp(FIX::Message&, FIX::SessionID const&) throw(FIX::DoNotSend) {
    refuseWhenLoggedOff();
}

// QuickFIX would keep the message for the next logon. It holds the session's lock here, so that
// the session cannot log off between the question and the sending.
void QuickFixSession::refuseWhenLoggedOff() const {
    if (OwnSend::current != nullptr && !isLoggedOn())
        throw FIX::DoNotSend();
}

// The fields that the session looks at itself have to stand alone.
void QuickFixSession::addLogonFields(FIX::Message& logon) const {
    FixFields others;
    for (FixField const& field : logonFields_) {
        if (logon.isSetField(field.tag) || field.tag == FIX::FIELD::ResetSeqNumFlag)
            logon.setField(FIX::FieldBase(field.tag, field.value));
        else
            others.push_back(field);
    }
    writeBody(others, logon);
}

void QuickFixSession::fromAdmin(FIX::Message const& message,
                                FIX::SessionID const&) throw(FIX::IncorrectDataFormat) {
    checkFields(message);
    events_.received(textOf(message), true);
}

void QuickFixSession::fromApp(FIX::Message const& message,
                              FIX::SessionID const&) throw(FIX::IncorrectDataFormat) {
    checkFields(message);
    events_.received(textOf(message), false);
}

void QuickFixSession::onOutgoing(std::string const& text) {
    if (OwnSend::current != nullptr)
        OwnSend::current->written = true;
    lastSentMillis_ = nowMillis();
    events_.sent(text, isAdminText(text));
}

void QuickFixSession::onEvent(std::string const& text) {
    if (!isOrdinary(text))
        events_.trouble(kindOf(text), text);
}

bool QuickFixSession::send(std::string const& bytes) {
    return link_.write(bytes);
}

void QuickFixSession::disconnect() {
    link_.end();
}

} // namespace server
} // namespace zan
