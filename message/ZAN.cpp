#include "message/ZAN.h"

std::string const ZAN::MSGTYPE_HEARTBEAT = "0";
std::string const ZAN::MSGTYPE_TEST_REQUEST = "1";
std::string const ZAN::MSGTYPE_RESEND_REQUEST = "2";
std::string const ZAN::MSGTYPE_REJECT = "3";
std::string const ZAN::MSGTYPE_SEQUENCE_RESET = "4";
std::string const ZAN::MSGTYPE_LOGOUT = "5";
std::string const ZAN::MSGTYPE_INDICATION_OF_INTEREST = "6";
std::string const ZAN::MSGTYPE_ADVERTISEMENT = "7";
std::string const ZAN::MSGTYPE_EXECUTION_REPORT = "8";
std::string const ZAN::MSGTYPE_ORDER_CANCEL_REJECT = "9";
std::string const ZAN::MSGTYPE_LOGON = "A";
std::string const ZAN::MSGTYPE_NEWS = "B";
std::string const ZAN::MSGTYPE_EMAIL = "C";
std::string const ZAN::MSGTYPE_NEW_ORDER_SINGLE = "D";
std::string const ZAN::MSGTYPE_ORDER_LIST = "E";
std::string const ZAN::MSGTYPE_ORDER_CANCEL_REQUEST = "F";
std::string const ZAN::MSGTYPE_ORDER_CANCEL_REPLACE_REQUEST = "G";
std::string const ZAN::MSGTYPE_ORDER_STATUS_REQUEST = "H";
std::string const ZAN::MSGTYPE_ALLOCATION = "J";
std::string const ZAN::MSGTYPE_LIST_CANCEL_REQUEST = "K";
std::string const ZAN::MSGTYPE_LIST_EXECUTE = "L";
std::string const ZAN::MSGTYPE_LIST_STATUS_REQUEST = "M";
std::string const ZAN::MSGTYPE_LIST_STATUS = "N";
std::string const ZAN::MSGTYPE_ALLOCATION_ACK = "P";
std::string const ZAN::MSGTYPE_DONT_KNOW_TRADE = "Q";
std::string const ZAN::MSGTYPE_QUOTE_REQUEST = "R";
std::string const ZAN::MSGTYPE_QUOTE = "S";
std::string const ZAN::MSGTYPE_SETTLEMENT_INSTRUCTIONS = "T";
std::string const ZAN::MSGTYPE_BOOK_REQUEST = "r";
std::string const ZAN::MSGTYPE_BOOK_FULL = "s";
std::string const ZAN::MSGTYPE_BOOK_INCREMENTAL = "t";
std::string const ZAN::MSGTYPE_BOOK_REQUESTREJECT = "u";
std::string const ZAN::MSGTYPE_ACCOUNT_ALLOCATION = "UAJ";
std::string const ZAN::MSGTYPE_COMMAND = "UCC";

ZAN::~ZAN() = default;
