// What the message log holds, as applications ask for it.
#include "EmbeddedFixture.h"

#include "errors/ZANConnectionUnknownException.h"
#include "errors/ZANInvalidMessageException.h"
#include "infra/Time.h"

#include <algorithm>
#include <map>
#include <set>

namespace {

class RetrievalTest : public EmbeddedTest {
protected:
    /// Three orders, each with the report that answers it.
    void trade() {
        startAndConnect();
        EventRecorder& recorder = record();
        for (char const* id : {"one", "two", "three"}) {
            ids[id] = engine().sendMessage(me, "C", order(id));
        }
        ASSERT_TRUE(recorder.waitFor(isReport, 3));
    }

    std::map<std::string, long> ids;
};

TEST_F(RetrievalTest, FindsMessagesByTheirStream) {
    trade();
    EXPECT_EQ(fieldsOf(query("", "", false, 3), 11), "one two three");
    EXPECT_EQ(fieldsOf(query("", "", false, 2), 11), "one two three");
    EXPECT_EQ(fieldsOf(query("", "", false, 0), 35), "A");
    EXPECT_EQ(fieldsOf(query("", "", false, 1), 35), "A");
    EXPECT_EQ(query("", "", false, 4).size(), 0u);
    EXPECT_EQ(query("").size(), 8u);
}

TEST_F(RetrievalTest, KeepsTheNumbersThatSendingReturned) {
    trade();
    for (auto const& [name, id] : ids) {
        Messages messages;
        engine().retrieveMessagesByIdRange(me, "C", messages, 3, id, id, "", false);
        ASSERT_EQ(messages.size(), 1u) << name;
        EXPECT_EQ(messages.front()->getConnectionMessageId(), id);
        EXPECT_EQ(fieldOf(messages.front(), 11), name);
        EXPECT_GT(messages.front()->getTimeStamp(), 0);
    }
}

TEST_F(RetrievalTest, AppendsToTheVectorAndReturnsIt) {
    trade();
    Messages messages(1);
    Messages& result =
        engine().retrieveMessagesByIdRange(me, "C", messages, -1, 0, 1000, "type = 'D'", false);
    EXPECT_EQ(&result, &messages);
    EXPECT_EQ(messages.size(), 4u);
    EXPECT_FALSE(messages.front());
}

TEST_F(RetrievalTest, FindsMessagesBetweenTwoTimes) {
    startAndConnect();
    EventRecorder& recorder = record();
    engine().sendMessage(me, "C", order("before"));
    ASSERT_TRUE(recorder.waitFor(isReport));
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    infra::Time const from(engine().getMillisTime(me));
    engine().sendMessage(me, "C", order("within"));
    ASSERT_TRUE(recorder.waitFor(isReport, 2));
    infra::Time const to(engine().getMillisTime(me));
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    engine().sendMessage(me, "C", order("after"));
    ASSERT_TRUE(recorder.waitFor(isReport, 3));
    Messages sent;
    engine().retrieveMessagesByDateRange(me, "C", sent, 3, from, to, "", false);
    EXPECT_EQ(fieldsOf(sent, 11), "within");
    Messages all;
    engine().retrieveMessagesByDateRange(me, "C", all, from, to, "", true);
    EXPECT_EQ(fieldsOf(all, 35), "8 D");
}

TEST_F(RetrievalTest, FindsMessagesOfASetOfIds) {
    trade();
    Messages messages;
    std::vector<int> const wanted = {static_cast<int>(ids["three"]), static_cast<int>(ids["one"]),
                                     999999};
    engine().retrieveMessagesByIdSet(me, "C", messages, -1, wanted, "", false);
    EXPECT_EQ(fieldsOf(messages, 11), "one three");
    messages.clear();
    engine().retrieveMessagesByIdSet(me, "C", messages, -1, wanted, "tag(11) = 'one'", true);
    EXPECT_EQ(fieldsOf(messages, 11), "one");
}

TEST_F(RetrievalTest, OrdersByExpressions) {
    trade();
    EXPECT_EQ(fieldsOf(query("type = 'D'", "tag(11)"), 11), "one three two");
    EXPECT_EQ(fieldsOf(query("type = 'D'", "tag(11)", true), 11), "two three one");
    EXPECT_EQ(fieldsOf(query("type = 'D'", "", true), 11), "three two one");
}

TEST_F(RetrievalTest, FollowsTheChainOfAnOrder) {
    trade();
    Messages messages;
    engine().retrieveMessageChain(me, "C", messages, {static_cast<int>(ids["two"])}, {}, false);
    EXPECT_EQ(fieldsOf(messages, 35), "D 8");
    EXPECT_EQ(fieldsOf(messages, 11), "two two");
    messages.clear();
    engine().retrieveMessageChain(me, "C", messages, {}, {"one", "three"}, true);
    EXPECT_EQ(messages.size(), 4u);
    EXPECT_EQ(fieldOf(messages.back(), 11), "one");
}

TEST_F(RetrievalTest, ShowsWhatAResendRequestWouldGet) {
    trade();
    Messages messages;
    engine().retrieveMessagesForResend(me, "C", messages, 1, 0, "");
    EXPECT_EQ(fieldsOf(messages, 34), "2 3 4") << "the Logon is filled over";
    EXPECT_EQ(fieldsOf(messages, 43), "Y Y Y");
    messages.clear();
    engine().retrieveMessagesForResend(me, "C", messages, 3, 3, "");
    EXPECT_EQ(fieldsOf(messages, 11), "two");
    messages.clear();
    engine().retrieveMessagesForResend(me, "C", messages, 1, 0, "tag(11) = 'three'");
    EXPECT_EQ(fieldsOf(messages, 11), "three");
}

TEST_F(RetrievalTest, ShowsTheLogAsATable) {
    trade();
    Table const all = table("");
    ASSERT_EQ(all.size(), 9u);
    EXPECT_EQ(all.front(), (std::vector<std::string>{"id", "time", "stream", "type", "seq",
                                                     "sender", "target", "text", "note"}));
    Table const some = table("seq, type,sender", "stream = 3 AND tag(11) = 'two'");
    ASSERT_EQ(some.size(), 2u);
    EXPECT_EQ(some[0], (std::vector<std::string>{"seq", "type", "sender"}));
    EXPECT_EQ(some[1], (std::vector<std::string>{"3", "D", "US"}));
}

TEST_F(RetrievalTest, GivesTheIdsOfAStream) {
    trade();
    std::vector<int> const sent = engine().getMessageIds(me, "C", 3, false);
    EXPECT_EQ(sent, (std::vector<int>{static_cast<int>(ids["one"]), static_cast<int>(ids["two"]),
                                      static_cast<int>(ids["three"])}));
    std::vector<int> all = engine().getMessageIds(me, "C", -1, true);
    EXPECT_EQ(all.size(), 8u);
    EXPECT_TRUE(std::ranges::is_sorted(all, std::ranges::greater()));
}

TEST_F(RetrievalTest, KeepsTheBytesOfTheWire) {
    trade();
    std::string const seen = acceptor_->waitForLine("|11=two|");
    Table rows = table("text", "stream = 3 AND tag(11) = 'two'");
    ASSERT_EQ(rows.size(), 2u);
    std::ranges::replace(rows[1][0], '\x01', '|');
    EXPECT_NE(seen.find(rows[1][0]), std::string::npos) << seen << "\n" << rows[1][0];
}

TEST_F(RetrievalTest, ShowsNestedGroups) {
    startAndConnect();
    EventRecorder& recorder = record();
    engine().sendMessage(
        me, "C", order("g") + "|453=2|448=A|447=D|452=1|802=1|523=X|803=2|448=B|447=D|452=3");
    ASSERT_TRUE(recorder.waitFor(isReport));
    Messages const messages = query("type = 'D'");
    ASSERT_EQ(messages.size(), 1u);
    auto const fields = messages.front()->getFieldGroup();
    ASSERT_EQ(fields->getGroupCount(453), 2);
    EXPECT_EQ(fields->getGroup(453, 0)->getGroup(802, 0)->getField(523)->getValue().asString(),
              "X");
}

TEST_F(RetrievalTest, OutlivesTheEngine) {
    trade();
    std::vector<int> const before = engine().getMessageIds(me, "C", -1, false);
    ZANEngineProxy::uninitialize();
    startEngine();
    std::vector<int> const after = engine().getMessageIds(me, "C", -1, false);
    // Both Logouts came after the first look.
    ASSERT_EQ(after.size(), before.size() + 2);
    EXPECT_TRUE(std::equal(before.begin(), before.end(), after.begin()));
    EXPECT_EQ(fieldsOf(query("type = 'D'"), 11), "one two three");
}

TEST_F(RetrievalTest, StreamsAHundredThousandMessages) {
    startAcceptor();
    startEngine();
    Messages const batch(1000, orderOf("posted"));
    for (int i = 0; i < 100; ++i) {
        engine().postMultipleInternalMessages(me, "C", batch);
    }
    Messages messages;
    engine().retrieveMessagesByIdRange(me, "C", messages, 2, 0, 2147483647, "", false);
    ASSERT_EQ(messages.size(), 100000u);
    for (std::size_t i = 0; i < messages.size(); i += 997) {
        ASSERT_EQ(messages[i]->getConnectionMessageId(), static_cast<int>(i + 1));
    }
}

struct BadCall {
    char const* name;
    long stream;
    char const* where;
    char const* text;
};

class RetrievalFaultTest : public RetrievalTest, public testing::WithParamInterface<BadCall> {};

TEST_P(RetrievalFaultTest, IsToldWithItsReason) {
    startAcceptor();
    startEngine();
    BadCall const& bad = GetParam();
    std::string const text =
        failureOf<ZANInvalidMessageException>([&] { query(bad.where, "", false, bad.stream); });
    EXPECT_NE(text.find(bad.text), std::string::npos) << text;
}

INSTANTIATE_TEST_SUITE_P(
    Faults, RetrievalFaultTest,
    testing::Values(BadCall{"StreamTooHigh", 5, "", "stream 5: there is no such stream"},
                    BadCall{"StreamTooLow", -2, "", "stream -2: there is no such stream"},
                    BadCall{"NoExpression", -1, "type =", "position"},
                    BadCall{"UnknownColumn", -1, "colour = 'red'", "colour"},
                    BadCall{"SecondStatement", -1, "1); DELETE FROM messages; --", ""},
                    BadCall{"OtherTables", -1, "1 IN (SELECT 1 FROM sqlite_master)", ""},
                    BadCall{"TagWithoutNumber", -1, "tag('x') = '1'", ""}),
    [](auto const& one) { return one.param.name; });

TEST_F(RetrievalTest, KnowsItsConnections) {
    startAcceptor();
    startEngine();
    Messages messages;
    EXPECT_THROW(engine().retrieveMessagesByQuery(me, "X", messages, -1, "", "", false),
                 ZANConnectionUnknownException);
    EXPECT_THROW(engine().getMessageIds(me, "X", -1, false), ZANConnectionUnknownException);
}

} // namespace
