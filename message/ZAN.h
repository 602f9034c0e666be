/// `ZAN`: the message types that the system knows, by name. A message's type (tag 35) is compared
/// with them as text, case included: `MSGTYPE_BOOK_REQUEST` is not `MSGTYPE_QUOTE_REQUEST`.
///
/// Threads: constants; they may be read from any thread between load and unload of the library, but
/// not by static initialisers and destructors of other modules.
#ifndef ZANENGINE_MESSAGE_ZAN_H
#define ZANENGINE_MESSAGE_ZAN_H

#include "infra/Export.h"

#include <string>

/// Holds constants only. It is not built on its own, but may be a base of a class that adds types.
class ZAN_API ZAN {
public:
    // FIX types of one digit, and the logon. "6" to "9" are application messages, the others belong
    // to the session.

    static std::string const MSGTYPE_HEARTBEAT;
    static std::string const MSGTYPE_TEST_REQUEST;
    static std::string const MSGTYPE_RESEND_REQUEST;
    static std::string const MSGTYPE_REJECT;
    static std::string const MSGTYPE_SEQUENCE_RESET;
    static std::string const MSGTYPE_LOGOUT;
    static std::string const MSGTYPE_INDICATION_OF_INTEREST;
    static std::string const MSGTYPE_ADVERTISEMENT;
    static std::string const MSGTYPE_EXECUTION_REPORT;
    static std::string const MSGTYPE_ORDER_CANCEL_REJECT;
    static std::string const MSGTYPE_LOGON;

    // FIX application messages of one letter; I and O have no constant.

    static std::string const MSGTYPE_NEWS;
    static std::string const MSGTYPE_EMAIL;
    static std::string const MSGTYPE_NEW_ORDER_SINGLE;
    static std::string const MSGTYPE_ORDER_LIST;
    static std::string const MSGTYPE_ORDER_CANCEL_REQUEST;
    static std::string const MSGTYPE_ORDER_CANCEL_REPLACE_REQUEST;
    static std::string const MSGTYPE_ORDER_STATUS_REQUEST;
    static std::string const MSGTYPE_ALLOCATION;
    static std::string const MSGTYPE_LIST_CANCEL_REQUEST;
    static std::string const MSGTYPE_LIST_EXECUTE;
    static std::string const MSGTYPE_LIST_STATUS_REQUEST;
    static std::string const MSGTYPE_LIST_STATUS;
    static std::string const MSGTYPE_ALLOCATION_ACK;
    static std::string const MSGTYPE_DONT_KNOW_TRADE;
    static std::string const MSGTYPE_QUOTE_REQUEST;
    static std::string const MSGTYPE_QUOTE;
    static std::string const MSGTYPE_SETTLEMENT_INSTRUCTIONS;

    // The system's own: order books in small letters, and user-defined types that begin with U.

    static std::string const MSGTYPE_BOOK_REQUEST;
    static std::string const MSGTYPE_BOOK_FULL;
    static std::string const MSGTYPE_BOOK_INCREMENTAL;
    static std::string const MSGTYPE_BOOK_REQUESTREJECT;
    static std::string const MSGTYPE_ACCOUNT_ALLOCATION;
    static std::string const MSGTYPE_COMMAND;

    ZAN(ZAN const&) = default;
    ZAN& operator=(ZAN const&) = default;
    virtual ~ZAN();

protected:
    ZAN() = default;
};

#endif
