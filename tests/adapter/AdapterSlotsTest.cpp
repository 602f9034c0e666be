#include "adapter/IZANEngineAdapterFactory.h"
#include "adapter/ZANEngineAdapterBase.h"
#include "support/Slots.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using Engine = IZANEngine;
using Ticket = UserTicket const&;
using Text = std::string const&;
using Time = infra::Time const&;
using Ids = std::vector<int> const&;
using Texts = std::vector<std::string> const&;
using Group = counted_ptr<ZANFieldGroup>;
using Message = counted_ptr<ZANMessage>;
using Messages = std::vector<Message>&;
using GivenMessages = std::vector<Message> const&;
using Table = std::vector<std::vector<std::string>>&;
using Listener = counted_ptr<IZANEventListener>&;
using GMLListener = counted_ptr<ZANGuaranteedEngineMessageListener>&;

/// The operations in the order that adapters were built with; the destructor, which fills two
/// entries, stands before them.
std::vector<std::size_t> connectionEntries() {
    return {
        slotOf<void, Engine, Ticket, Text, Group>(&Engine::connect),
        slotOf<void, Engine, Ticket, Text>(&Engine::connect),
        slotOf<void, Engine, Ticket, Text, Text>(&Engine::disconnect),
        slotOf<void, Engine, Ticket, Text>(&Engine::resetConnection),
        slotOf<bool, Engine, Ticket, Text, long>(&Engine::pingConnection),
        slotOf<bool, Engine, Ticket, Text>(&Engine::isConnected),
        slotOf<void, Engine, Ticket, std::vector<std::string>&>(&Engine::getConnectionNameList),
        slotOf<void, Engine, Ticket, Text, bool, bool, bool, GMLListener>(&Engine::subscribeDirect),
        slotOf<void, Engine, Ticket, Text, bool, bool, bool, Listener>(&Engine::subscribeDirect),
        slotOf<void, Engine, Ticket, Text, bool, bool, bool, GMLListener>(
            &Engine::unsubscribeDirect),
        slotOf<void, Engine, Ticket, Text, bool, bool, bool, Listener>(&Engine::unsubscribeDirect),
        slotOf<void, Engine, GMLListener>(&Engine::destroyDirectSubscriber),
        slotOf<void, Engine, Listener>(&Engine::destroyDirectSubscriber),
        slotOf<void, Engine, Ticket, Listener, Text, Text>(&Engine::subscribe),
        slotOf<void, Engine, Ticket, Listener, Text, Text>(&Engine::unsubscribe),
    };
}

std::vector<std::size_t> messageEntries() {
    return {
        slotOf<long, Engine, Ticket, Text, Text>(&Engine::sendAdminMessage),
        slotOf<long, Engine, Ticket, Text, Message>(&Engine::sendAdminMessage),
        slotOf<long, Engine, Ticket, Text, Time, Time, Text>(&Engine::resendMessages),
        slotOf<Messages, Engine, Ticket, Text, Messages, long, Time, Time, Text, bool>(
            &Engine::retrieveMessagesByDateRange),
        slotOf<Messages, Engine, Ticket, Text, Messages, Time, Time, Text, bool>(
            &Engine::retrieveMessagesByDateRange),
        slotOf<Messages, Engine, Ticket, Text, Messages, long, long, long, Text, bool>(
            &Engine::retrieveMessagesByIdRange),
        slotOf<Messages, Engine, Ticket, Text, Messages, long, Ids, Text, bool>(
            &Engine::retrieveMessagesByIdSet),
        slotOf<Messages, Engine, Ticket, Text, Messages, long, Text, Text, bool>(
            &Engine::retrieveMessagesByQuery),
        slotOf<Messages, Engine, Ticket, Text, Messages, Ids, Texts, bool>(
            &Engine::retrieveMessageChain),
        slotOf<Messages, Engine, Ticket, Text, Messages, long, long, Text>(
            &Engine::retrieveMessagesForResend),
        slotOf<Table, Engine, Ticket, Text, long, Text, Text, Text, Table>(
            &Engine::retrieveMessageLogData),
        slotOf<long, Engine, Ticket, Text, long, Text, Text>(&Engine::updateMessageLogData),
        slotOf<long, Engine, Ticket, Text, GivenMessages>(&Engine::insertMessageLogData),
        slotOf<long, Engine, Ticket, Text, long, Text>(&Engine::deleteMessageLogData),
        slotOf<counted_ptr<ZANConnectionState>, Engine, Ticket, Text>(&Engine::getConnectionState),
        slotOf<std::vector<int>, Engine, Ticket, Text, long, bool>(&Engine::getMessageIds),
        slotOf<std::string, Engine, Ticket, Text>(&Engine::getConnectionProperties),
        slotOf<long, Engine, Ticket, Text, Text>(&Engine::sendMessage),
        slotOf<long, Engine, Ticket, Text, Message>(&Engine::sendMessage),
        slotOf<void, Engine, Ticket, Text, GivenMessages>(&Engine::sendMultipleMessages),
        slotOf<long, Engine, Ticket, Text, Text>(&Engine::postInternalMessage),
        slotOf<long, Engine, Ticket, Text, Message>(&Engine::postInternalMessage),
        slotOf<void, Engine, Ticket, Text, GivenMessages>(&Engine::postMultipleInternalMessages),
        slotOf<std::int64_t, Engine, Ticket>(&Engine::getMillisTime),
    };
}

void expectConsecutive(std::vector<std::size_t> const& entries, std::size_t first) {
    for (std::size_t i = 0; i < entries.size(); ++i) {
        EXPECT_EQ(entries[i], first + i) << "operation " << i;
    }
}

TEST(EngineSlots, StandInTheOrderThatAdaptersWereBuiltWith) {
    auto const connections = connectionEntries();
    auto const messages = messageEntries();
    expectConsecutive(connections, 2);
    expectConsecutive(messages, 2 + connections.size());
    EXPECT_EQ(connections.size() + messages.size(), 39u);
}

TEST(EngineSlots, OnlyAskingForTheStateIsConst) {
    EXPECT_TRUE((std::is_same_v<decltype(&Engine::getConnectionState),
                                counted_ptr<ZANConnectionState> (Engine::*)(Ticket, Text) const>));
    EXPECT_TRUE((std::is_same_v<decltype(&Engine::isConnected), bool (Engine::*)(Ticket, Text)>));
    EXPECT_TRUE(
        (std::is_same_v<decltype(&Engine::getMillisTime), std::int64_t (Engine::*)(Ticket)>));
}

struct OpenAdapter : IZANEngineAdapter {
    using IZANEngineAdapter::eventReceived;
    using IZANEngineAdapter::setConfigProvider;
};

TEST(AdapterSlots, FollowThoseOfTheEngine) {
    expectConsecutive(
        {slotOf(&IZANEngineAdapter::getConfigProvider), slotOf(&IZANEngineAdapter::initialize),
         slotOf(&IZANEngineAdapter::uninitialize), slotOf(&IZANEngineAdapter::isThreadSafe),
         slotOf(&IZANEngineAdapter::getGMLAdapterFactory), slotOf(&OpenAdapter::setConfigProvider),
         slotOf(&OpenAdapter::eventReceived)},
        41);
}

TEST(AdapterSlots, TheBaseOverridesInPlace) {
    EXPECT_EQ(slotOf(&ZANEngineAdapterBase::subscribe), slotOf(&IZANEngine::subscribe));
    EXPECT_EQ(slotOf(&ZANEngineAdapterBase::unsubscribe), slotOf(&IZANEngine::unsubscribe));
}

TEST(AdapterSlots, FactoryProviderAndListenerHaveTheirs) {
    EXPECT_EQ(slotOf(&IZANEngineAdapterFactory::createAdapter), 2u);
    EXPECT_EQ(slotOf(&IZANEngineConfigProvider::getProperty), 2u);
    EXPECT_EQ(slotOf(&IZANEventListener::processEvent), 2u);
    EXPECT_EQ(slotOf(&IZANEventListener::processStateEvent), 3u);
}

} // namespace
