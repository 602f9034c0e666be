#include "UnsupportedOperations.h"

#include "errors/ZANEngineException.h"

namespace {

[[noreturn]] void refuse(char const* operation) {
    throw ZANEngineException(std::string(operation) + ": this engine does not offer it");
}

} // namespace

void UnsupportedOperations::connect(UserTicket const&, Name const&, counted_ptr<ZANFieldGroup>) {
    refuse("connect");
}

void UnsupportedOperations::connect(UserTicket const&, Name const&) {
    refuse("connect");
}

void UnsupportedOperations::disconnect(UserTicket const&, Name const&, Text const&) {
    refuse("disconnect");
}

void UnsupportedOperations::resetConnection(UserTicket const&, Name const&) {
    refuse("resetConnection");
}

bool UnsupportedOperations::pingConnection(UserTicket const&, Name const&, long) {
    refuse("pingConnection");
}

bool UnsupportedOperations::isConnected(UserTicket const&, Name const&) {
    refuse("isConnected");
}

void UnsupportedOperations::getConnectionNameList(UserTicket const&, std::vector<std::string>&) {
    refuse("getConnectionNameList");
}

void UnsupportedOperations::subscribeDirect(UserTicket const&, Name const&, bool, bool, bool,
                                            GuaranteedListener&) {
    refuse("subscribeDirect");
}

void UnsupportedOperations::subscribeDirect(UserTicket const&, Name const&, bool, bool, bool,
                                            Listener&) {
    refuse("subscribeDirect");
}

void UnsupportedOperations::unsubscribeDirect(UserTicket const&, Name const&, bool, bool, bool,
                                              GuaranteedListener&) {
    refuse("unsubscribeDirect");
}

void UnsupportedOperations::unsubscribeDirect(UserTicket const&, Name const&, bool, bool, bool,
                                              Listener&) {
    refuse("unsubscribeDirect");
}

void UnsupportedOperations::destroyDirectSubscriber(GuaranteedListener&) {
    refuse("destroyDirectSubscriber");
}

void UnsupportedOperations::destroyDirectSubscriber(Listener&) {
    refuse("destroyDirectSubscriber");
}

long UnsupportedOperations::sendAdminMessage(UserTicket const&, Name const&, Text const&) {
    refuse("sendAdminMessage");
}

long UnsupportedOperations::sendAdminMessage(UserTicket const&, Name const&,
                                             counted_ptr<ZANMessage>) {
    refuse("sendAdminMessage");
}

long UnsupportedOperations::resendMessages(UserTicket const&, Name const&, infra::Time const&,
                                           infra::Time const&, Text const&) {
    refuse("resendMessages");
}

UnsupportedOperations::Messages&
UnsupportedOperations::retrieveMessagesByDateRange(UserTicket const&, Name const&, Messages&, long,
                                                   infra::Time const&, infra::Time const&,
                                                   Text const&, bool) {
    refuse("retrieveMessagesByDateRange");
}

UnsupportedOperations::Messages&
UnsupportedOperations::retrieveMessagesByDateRange(UserTicket const&, Name const&, Messages&,
                                                   infra::Time const&, infra::Time const&,
                                                   Text const&, bool) {
    refuse("retrieveMessagesByDateRange");
}

UnsupportedOperations::Messages&
UnsupportedOperations::retrieveMessagesByIdRange(UserTicket const&, Name const&, Messages&, long,
                                                 long, long, Text const&, bool) {
    refuse("retrieveMessagesByIdRange");
}

UnsupportedOperations::Messages&
UnsupportedOperations::retrieveMessagesByIdSet(UserTicket const&, Name const&, Messages&, long,
                                               std::vector<int> const&, Text const&, bool) {
    refuse("retrieveMessagesByIdSet");
}

UnsupportedOperations::Messages&
UnsupportedOperations::retrieveMessagesByQuery(UserTicket const&, Name const&, Messages&, long,
                                               Text const&, Text const&, bool) {
    refuse("retrieveMessagesByQuery");
}

UnsupportedOperations::Messages&
UnsupportedOperations::retrieveMessageChain(UserTicket const&, Name const&, Messages&,
                                            std::vector<int> const&,
                                            std::vector<std::string> const&, bool) {
    refuse("retrieveMessageChain");
}

UnsupportedOperations::Messages&
UnsupportedOperations::retrieveMessagesForResend(UserTicket const&, Name const&, Messages&, long,
                                                 long, Text const&) {
    refuse("retrieveMessagesForResend");
}

UnsupportedOperations::Table&
UnsupportedOperations::retrieveMessageLogData(UserTicket const&, Name const&, long, Text const&,
                                              Text const&, Text const&, Table&) {
    refuse("retrieveMessageLogData");
}

long UnsupportedOperations::updateMessageLogData(UserTicket const&, Name const&, long, Text const&,
                                                 Text const&) {
    refuse("updateMessageLogData");
}

long UnsupportedOperations::insertMessageLogData(UserTicket const&, Name const&, Messages const&) {
    refuse("insertMessageLogData");
}

long UnsupportedOperations::deleteMessageLogData(UserTicket const&, Name const&, long,
                                                 Text const&) {
    refuse("deleteMessageLogData");
}

counted_ptr<ZANConnectionState> UnsupportedOperations::getConnectionState(UserTicket const&,
                                                                          Name const&) const {
    refuse("getConnectionState");
}

std::vector<int> UnsupportedOperations::getMessageIds(UserTicket const&, Name const&, long, bool) {
    refuse("getMessageIds");
}

std::string UnsupportedOperations::getConnectionProperties(UserTicket const&, Name const&) {
    refuse("getConnectionProperties");
}

long UnsupportedOperations::sendMessage(UserTicket const&, Name const&, Text const&) {
    refuse("sendMessage");
}

long UnsupportedOperations::sendMessage(UserTicket const&, Name const&, counted_ptr<ZANMessage>) {
    refuse("sendMessage");
}

void UnsupportedOperations::sendMultipleMessages(UserTicket const&, Name const&, Messages const&) {
    refuse("sendMultipleMessages");
}

long UnsupportedOperations::postInternalMessage(UserTicket const&, Name const&, Text const&) {
    refuse("postInternalMessage");
}

long UnsupportedOperations::postInternalMessage(UserTicket const&, Name const&,
                                                counted_ptr<ZANMessage>) {
    refuse("postInternalMessage");
}

void UnsupportedOperations::postMultipleInternalMessages(UserTicket const&, Name const&,
                                                         Messages const&) {
    refuse("postMultipleInternalMessages");
}

std::int64_t UnsupportedOperations::getMillisTime(UserTicket const&) {
    refuse("getMillisTime");
}
