// The operations that need a message log, which this engine does not have.
#include "errors/ZANEngineException.h"
#include "transports/embedded/EmbeddedEngineAdapter.h"

namespace zan::embedded {

namespace {

[[noreturn]] void refuse(std::string const& operation) {
    throw ZANEngineException(operation + ": this engine keeps no message log");
}

} // namespace

void EmbeddedEngineAdapter::subscribeDirect(Ticket, Name, bool, bool, bool, GuaranteedListener) {
    refuse("subscribeDirect");
}

void EmbeddedEngineAdapter::unsubscribeDirect(Ticket, Name, bool, bool, bool, GuaranteedListener) {
    refuse("unsubscribeDirect");
}

void EmbeddedEngineAdapter::destroyDirectSubscriber(GuaranteedListener) {
    refuse("destroyDirectSubscriber");
}

void EmbeddedEngineAdapter::resetConnection(Ticket, Name) {
    refuse("resetConnection");
}

long EmbeddedEngineAdapter::resendMessages(Ticket, Name, infra::Time const&, infra::Time const&,
                                           std::string const&) {
    refuse("resendMessages");
}

EmbeddedEngineAdapter::Messages&
EmbeddedEngineAdapter::retrieveMessagesByDateRange(Ticket, Name, Messages&, long,
                                                   infra::Time const&, infra::Time const&,
                                                   std::string const&, bool) {
    refuse("retrieveMessagesByDateRange");
}

EmbeddedEngineAdapter::Messages&
EmbeddedEngineAdapter::retrieveMessagesByDateRange(Ticket, Name, Messages&, infra::Time const&,
                                                   infra::Time const&, std::string const&, bool) {
    refuse("retrieveMessagesByDateRange");
}

EmbeddedEngineAdapter::Messages&
EmbeddedEngineAdapter::retrieveMessagesByIdRange(Ticket, Name, Messages&, long, long, long,
                                                 std::string const&, bool) {
    refuse("retrieveMessagesByIdRange");
}

EmbeddedEngineAdapter::Messages&
EmbeddedEngineAdapter::retrieveMessagesByIdSet(Ticket, Name, Messages&, long,
                                               std::vector<int> const&, std::string const&, bool) {
    refuse("retrieveMessagesByIdSet");
}

EmbeddedEngineAdapter::Messages&
EmbeddedEngineAdapter::retrieveMessagesByQuery(Ticket, Name, Messages&, long, std::string const&,
                                               std::string const&, bool) {
    refuse("retrieveMessagesByQuery");
}

EmbeddedEngineAdapter::Messages&
EmbeddedEngineAdapter::retrieveMessageChain(Ticket, Name, Messages&, std::vector<int> const&,
                                            std::vector<std::string> const&, bool) {
    refuse("retrieveMessageChain");
}

EmbeddedEngineAdapter::Messages&
EmbeddedEngineAdapter::retrieveMessagesForResend(Ticket, Name, Messages&, long, long,
                                                 std::string const&) {
    refuse("retrieveMessagesForResend");
}

EmbeddedEngineAdapter::Table&
EmbeddedEngineAdapter::retrieveMessageLogData(Ticket, Name, long, std::string const&,
                                              std::string const&, std::string const&, Table&) {
    refuse("retrieveMessageLogData");
}

long EmbeddedEngineAdapter::updateMessageLogData(Ticket, Name, long, std::string const&,
                                                 std::string const&) {
    refuse("updateMessageLogData");
}

long EmbeddedEngineAdapter::insertMessageLogData(Ticket, Name, Messages const&) {
    refuse("insertMessageLogData");
}

long EmbeddedEngineAdapter::deleteMessageLogData(Ticket, Name, long, std::string const&) {
    refuse("deleteMessageLogData");
}

std::vector<int> EmbeddedEngineAdapter::getMessageIds(Ticket, Name, long, bool) {
    refuse("getMessageIds");
}

void EmbeddedEngineAdapter::sendMultipleMessages(Ticket, Name, Messages const&) {
    refuse("sendMultipleMessages");
}

long EmbeddedEngineAdapter::postInternalMessage(Ticket, Name, std::string const&) {
    refuse("postInternalMessage");
}

long EmbeddedEngineAdapter::postInternalMessage(Ticket, Name, Message) {
    refuse("postInternalMessage");
}

void EmbeddedEngineAdapter::postMultipleInternalMessages(Ticket, Name, Messages const&) {
    refuse("postMultipleInternalMessages");
}

} // namespace zan::embedded
