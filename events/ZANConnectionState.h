/// `ZANConnectionState`: how one named connection stands: link, session and messaging as flag bits,
/// the addresses of both ends, the heartbeat setting, the last error and the time of the last
/// change.
///
/// Threads: no locks. The adapter fills a record before it publishes it in an event; from then on
/// it is read only. The names are constants; static initialisers and destructors of other modules
/// must not use them or print a record.
#ifndef ZANENGINE_EVENTS_ZANCONNECTIONSTATE_H
#define ZANENGINE_EVENTS_ZANCONNECTIONSTATE_H

#include "infra/Export.h"

#include <cstdint>
#include <iosfwd>
#include <string>

// The flag bits of the state word. A record keeps every other bit and gives it no meaning.

/// The session has been logged out.
inline constexpr long FLAG_LOGGED_OUT = 0x10;
/// The transport link is connected.
inline constexpr long FLAG_LINK_ACTIVE = 0x20;
/// The session is logged on.
inline constexpr long FLAG_SESSION_ACTIVE = 0x40;
/// Messaging is idle; shown only while logged on.
inline constexpr long FLAG_MESSAGING_IDLE = 0x80;
/// The connection has been closed.
inline constexpr long FLAG_DISCONNECTED = 0x100;
/// Messaging timed out.
inline constexpr long FLAG_TIMED_OUT = 0x200;
/// Messaging is broken.
inline constexpr long FLAG_BROKEN = 0x400;
/// Messaging failed on a database error.
inline constexpr long FLAG_DB_ERROR = 0x800;
/// Messaging failed on an encryption error.
inline constexpr long FLAG_CRYPT_ERROR = 0x1000;
/// The engine is unreachable.
inline constexpr long FLAG_UNREACHABLE = 0x2000;
/// The connection is unavailable.
inline constexpr long FLAG_UNAVAILABLE = 0x4000;
/// The connection is on hold.
inline constexpr long FLAG_ON_HOLD = 0x20000;

class ZAN_API ZANConnectionState {
public:
    // Display names of states. The text form uses some of them; adapters and applications may use
    // all of them.

    static std::string const STATE_CONNECTED;
    /// Reads "disconnected": a link that is down is shown the same whether it was ever up or not.
    static std::string const STATE_NOT_CONNECTED;
    static std::string const STATE_AUTHORIZING;
    /// Shown among the states of messaging.
    static std::string const STATE_UNAVAILABLE;
    static std::string const STATE_AVAILABLE;
    static std::string const STATE_CONNECTING;
    static std::string const STATE_DISCONNECTING;
    static std::string const STATE_ON_HOLD;
    static std::string const MSGING_STATE_ACTIVE;
    static std::string const MSGING_STATE_IDLE;
    static std::string const MSGING_STATE_TIMED_OUT;
    static std::string const MSGING_STATE_BROKEN;
    static std::string const MSGING_STATE_LOGGED_OUT;
    static std::string const MSGING_STATE_UNREACHABLE;
    static std::string const MSGING_STATE_REJECTED;
    static std::string const MSGING_STATE_DB_ERROR;
    static std::string const MSGING_STATE_CRYPT_ERROR;

    /// An empty record. Only this constructor sets the heartbeats to -1, "not set"; the others
    /// leave them 0, and whoever builds a record with them calls `setHeartbeats`.
    ZANConnectionState();
    explicit ZANConnectionState(long state);
    ZANConnectionState(long state, double timeLastStateChange);
    ZANConnectionState(long state, double timeLastStateChange, std::string const& lastError);
    ZANConnectionState(ZANConnectionState const&) = default;
    ZANConnectionState& operator=(ZANConnectionState const&) = default;
    virtual ~ZANConnectionState();

    /// The state word, 32 bits with sign: of a wider `long` the low 32 bits are kept. `setState`
    /// replaces the whole word and leaves the time alone.
    long getState() const;
    void setState(long state);

    /// Milliseconds since 1970-01-01 00:00:00 UTC.
    double getTimeLastStateChange() const;
    void setTimeLastStateChange(double millis);

    /// The heartbeat setting as the adapter reports it, kept like the state word; -1 when not set.
    long getHeartbeats() const;
    void setHeartbeats(long heartbeats);

    /// References into the record, valid until the text is set again or the record ends.
    std::string const& getLastError() const;
    std::string const& getLocalAddress() const;
    std::string const& getRemoteAddress() const;
    void setLastError(std::string const& lastError);
    void setLocalAddress(std::string const& localAddress);
    void setRemoteAddress(std::string const& remoteAddress);

    /// Set or clear the bits of `mask` and stamp the time with the current second. The time is that
    /// of the last call, even when no bit changed.
    void enterState(long mask);
    void leaveState(long mask);
    void changeState(long mask, bool on);

    /// True when the common bits of word and mask, as a signed 32-bit number, are greater than
    /// zero; so never when bit 31 is among them.
    bool isStateActive(long mask) const;

    bool isLinkActive() const;
    bool isSessionActive() const;
    bool isLoggedOut() const;
    bool isMessagingIdle() const;
    bool hasDisconnected() const;
    bool isUnavailable() const;
    bool isOnHold() const;

private:
    friend ZAN_API std::ostream& operator<<(std::ostream& os, ZANConnectionState const& record);

    void saveCurrentTime();
    std::ostream& outState(std::ostream& os, bool& first, long mask, std::string const& name) const;
    void outMessaging(std::ostream& os) const;

    std::string lastError_;
    std::string remoteAddress_;
    std::string localAddress_;
    double timeLastStateChange_ = 0;
    std::int32_t state_ = 0;
    std::int32_t heartbeats_ = 0;
};

/// Writes the record on one line, without a line end; the time is local, in the form of the
/// process's locale. Texts of 2048 characters or more are shown by their length only.
ZAN_API std::ostream& operator<<(std::ostream& os, ZANConnectionState const& record);

#endif
