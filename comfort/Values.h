/// What the values of some fields stand for, by name: `zan::Side::Buy` is 1 in tag 54. A value that
/// has no name here is written as `zan::Side{'Z'}`; those of text are plain text.
///
/// Threads: constants.
// Written by scripts/lib/make_names.py; to change a name, change the dictionaries.
#ifndef ZANENGINE_COMFORT_VALUES_H
#define ZANENGINE_COMFORT_VALUES_H

#include <string_view>

namespace zan {

enum class AllocStatus : int {
    Accepted = 0,
    BlockLevelReject = 1,
    AccountLevelReject = 2,
    Received = 3,
};

enum class AllocTransType : char {
    New = '0',
    Replace = '1',
    Cancel = '2',
};

enum class CxlRejReason : int {
    TooLateToCancel = 0,
    UnknownOrder = 1,
    BrokerOption = 2,
    AlreadyPending = 3,
    DuplicateClOrdID = 6,
    Other = 99,
};

enum class CxlRejResponseTo : char {
    CancelRequest = '1',
    CancelReplaceRequest = '2',
};

enum class DKReason : char {
    UnknownSymbol = 'A',
    WrongSide = 'B',
    QuantityExceedsOrder = 'C',
    NoMatchingOrder = 'D',
    PriceExceedsLimit = 'E',
    Other = 'Z',
};

enum class EncryptMethod : int {
    None = 0,
};

namespace ExecInst {
inline constexpr std::string_view NotHeld = "1";
inline constexpr std::string_view Work = "2";
inline constexpr std::string_view ParticipateDoNotInitiate = "6";
inline constexpr std::string_view AllOrNone = "G";
} // namespace ExecInst

enum class ExecTransType : char {
    New = '0',
    Cancel = '1',
    Correct = '2',
    Status = '3',
};

enum class ExecType : char {
    New = '0',
    PartialFill = '1',
    Fill = '2',
    DoneForDay = '3',
    Cancelled = '4',
    Replaced = '5',
    PendingCancel = '6',
    Stopped = '7',
    Rejected = '8',
    Suspended = '9',
    PendingNew = 'A',
    Calculated = 'B',
    Expired = 'C',
    Restated = 'D',
    PendingReplace = 'E',
    Trade = 'F',
    TradeCorrect = 'G',
    TradeCancel = 'H',
    OrderStatus = 'I',
};

enum class HandlInst : char {
    AutomatedNoBroker = '1',
    AutomatedBrokerMayStepIn = '2',
    Manual = '3',
};

enum class MDEntryType : char {
    Bid = '0',
    Offer = '1',
    Trade = '2',
    IndexValue = '3',
    OpeningPrice = '4',
    ClosingPrice = '5',
    SettlementPrice = '6',
};

enum class MDUpdateAction : char {
    New = '0',
    Change = '1',
    Delete = '2',
};

namespace MsgType {
inline constexpr std::string_view AccountAllocation = "UAJ";
inline constexpr std::string_view Advertisement = "7";
inline constexpr std::string_view Allocation = "J";
inline constexpr std::string_view AllocationAck = "P";
inline constexpr std::string_view BookFull = "s";
inline constexpr std::string_view BookIncremental = "t";
inline constexpr std::string_view BookRequest = "r";
inline constexpr std::string_view BookRequestReject = "u";
inline constexpr std::string_view Command = "UCC";
inline constexpr std::string_view DontKnowTrade = "Q";
inline constexpr std::string_view Email = "C";
inline constexpr std::string_view ExecutionReport = "8";
inline constexpr std::string_view Heartbeat = "0";
inline constexpr std::string_view IndicationOfInterest = "6";
inline constexpr std::string_view ListCancelRequest = "K";
inline constexpr std::string_view ListExecute = "L";
inline constexpr std::string_view ListStatus = "N";
inline constexpr std::string_view ListStatusRequest = "M";
inline constexpr std::string_view Logon = "A";
inline constexpr std::string_view Logout = "5";
inline constexpr std::string_view NewOrderSingle = "D";
inline constexpr std::string_view News = "B";
inline constexpr std::string_view OrderCancelReject = "9";
inline constexpr std::string_view OrderCancelReplaceRequest = "G";
inline constexpr std::string_view OrderCancelRequest = "F";
inline constexpr std::string_view OrderList = "E";
inline constexpr std::string_view OrderStatusRequest = "H";
inline constexpr std::string_view Quote = "S";
inline constexpr std::string_view QuoteRequest = "R";
inline constexpr std::string_view Reject = "3";
inline constexpr std::string_view ResendRequest = "2";
inline constexpr std::string_view SequenceReset = "4";
inline constexpr std::string_view SettlementInstructions = "T";
inline constexpr std::string_view TestRequest = "1";
} // namespace MsgType

enum class OrdRejReason : int {
    BrokerOption = 0,
    UnknownSymbol = 1,
    ExchangeClosed = 2,
    OrderExceedsLimit = 3,
    TooLateToEnter = 4,
    UnknownOrder = 5,
    DuplicateOrder = 6,
    UnsupportedOrderCharacteristic = 11,
    IncorrectQuantity = 13,
    Other = 99,
};

enum class OrdStatus : char {
    New = '0',
    PartiallyFilled = '1',
    Filled = '2',
    DoneForDay = '3',
    Cancelled = '4',
    Replaced = '5',
    PendingCancel = '6',
    Stopped = '7',
    Rejected = '8',
    Suspended = '9',
    PendingNew = 'A',
    Calculated = 'B',
    Expired = 'C',
    AcceptedForBidding = 'D',
    PendingReplace = 'E',
};

enum class OrdType : char {
    Market = '1',
    Limit = '2',
    Stop = '3',
    StopLimit = '4',
    MarketOnClose = '5',
    WithOrWithout = '6',
    LimitOrBetter = '7',
    PreviouslyQuoted = 'D',
    Pegged = 'P',
};

enum class PartyIDSource : char {
    BIC = 'B',
    GenerallyAcceptedIdentifier = 'C',
    Proprietary = 'D',
    ISOCountryCode = 'E',
    MarketIdentifier = 'G',
};

enum class PartyRole : int {
    ExecutingFirm = 1,
    ClientID = 3,
    ClearingFirm = 4,
    InvestorID = 5,
    EnteringFirm = 7,
    OrderOriginationTrader = 11,
    ExecutingTrader = 12,
    OrderOriginationFirm = 13,
    ContraFirm = 17,
    CustomerAccount = 24,
    EnteringTrader = 36,
};

namespace SecurityIDSource {
inline constexpr std::string_view CUSIP = "1";
inline constexpr std::string_view SEDOL = "2";
inline constexpr std::string_view QUIK = "3";
inline constexpr std::string_view ISIN = "4";
inline constexpr std::string_view RIC = "5";
inline constexpr std::string_view ExchangeSymbol = "8";
inline constexpr std::string_view BloombergSymbol = "A";
} // namespace SecurityIDSource

namespace SecurityType {
inline constexpr std::string_view CommonStock = "CS";
inline constexpr std::string_view Future = "FUT";
inline constexpr std::string_view Option = "OPT";
inline constexpr std::string_view PreferredStock = "PS";
inline constexpr std::string_view CorporateBond = "CORP";
inline constexpr std::string_view MultiLegInstrument = "MLEG";
} // namespace SecurityType

enum class SessionRejectReason : int {
    InvalidTagNumber = 0,
    RequiredTagMissing = 1,
    TagNotDefinedForThisMessageType = 2,
    UndefinedTag = 3,
    TagWithoutAValue = 4,
    ValueOutOfRange = 5,
    WrongFormatOfTheValue = 6,
    DecryptionProblem = 7,
    SignatureProblem = 8,
    CompIDProblem = 9,
    SendingTimeProblem = 10,
    InvalidMsgType = 11,
    TagAppearsMoreThanOnce = 13,
    TagOutOfOrder = 14,
    GroupFieldsOutOfOrder = 15,
    WrongCountOfAGroup = 16,
    SeparatorInsideOfAValue = 17,
    Other = 99,
};

namespace SettlType {
inline constexpr std::string_view Regular = "0";
inline constexpr std::string_view Cash = "1";
inline constexpr std::string_view NextDay = "2";
inline constexpr std::string_view TPlus2 = "3";
inline constexpr std::string_view TPlus3 = "4";
} // namespace SettlType

enum class Side : char {
    Buy = '1',
    Sell = '2',
    BuyMinus = '3',
    SellPlus = '4',
    SellShort = '5',
    SellShortExempt = '6',
    Undisclosed = '7',
    Cross = '8',
    CrossShort = '9',
};

enum class SubscriptionRequestType : char {
    Snapshot = '0',
    SnapshotAndUpdates = '1',
    StopUpdates = '2',
};

enum class TimeInForce : char {
    Day = '0',
    GoodTillCancel = '1',
    AtTheOpening = '2',
    ImmediateOrCancel = '3',
    FillOrKill = '4',
    GoodTillCrossing = '5',
    GoodTillDate = '6',
    AtTheClose = '7',
};

} // namespace zan

#endif
