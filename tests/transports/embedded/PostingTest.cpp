// What applications tell each other through the log, and what is sent several at a time or again.
#include "EmbeddedFixture.h"

#include "errors/ZANInvalidMessageException.h"
#include "infra/Time.h"

#include <algorithm>
#include <set>

namespace {

using PostingTest = EmbeddedTest;

TEST_F(PostingTest, RefusesAWholeBatchForOneBadMessage) {
    startAndConnect();
    auto const bad = orderOf("bad");
    bad->getFieldGroup()->setFieldValue(58, "");
    std::string const text = failureOf<ZANInvalidMessageException>([&] {
        engine().postMultipleInternalMessages(me, "C", {orderOf("a"), bad});
    });
    EXPECT_NE(text.find("message 2 of 2: tag 58 has an empty value"), std::string::npos) << text;
    EXPECT_EQ(query("type = 'D'").size(), 0u);
}

TEST_F(PostingTest, SendsABatchInItsOrder) {
    startAndConnect();
    EventRecorder& recorder = record();
    Messages batch;
    for (int i = 0; i < 50; ++i) {
        batch.push_back(orderOf("b" + std::to_string(i)));
    }
    engine().sendMultipleMessages(me, "C", batch);
    ASSERT_TRUE(recorder.waitFor(isReport, 50));
    Messages const sent = query("", "", false, 3);
    ASSERT_EQ(sent.size(), 50u);
    for (std::size_t i = 0; i < sent.size(); ++i) {
        EXPECT_EQ(fieldOf(sent[i], 11), "b" + std::to_string(i));
        EXPECT_EQ(fieldOf(sent[i], 34), std::to_string(i + 2));
    }
}

TEST_F(PostingTest, SendsNothingOfABatchWithOneBadMessage) {
    startAndConnect();
    auto const admin = orderOf("x");
    admin->getFieldGroup()->setFieldValue(35, "0");
    std::string const text = failureOf<ZANInvalidMessageException>([&] {
        engine().sendMultipleMessages(me, "C", {orderOf("a"), admin});
    });
    EXPECT_NE(text.find("sendAdminMessage would be right"), std::string::npos) << text;
    EXPECT_EQ(query("type = 'D'").size(), 0u);
    EXPECT_NO_THROW(engine().sendMultipleMessages(me, "C", {}));
}

TEST_F(PostingTest, KeepsBatchesOfManyThreadsApart) {
    startAndConnect();
    EventRecorder& recorder = record();
    std::vector<std::thread> threads;
    for (char const name : {'a', 'b', 'c', 'd'}) {
        threads.emplace_back([name] {
            for (int i = 0; i < 5; ++i) {
                Messages batch;
                for (int j = 0; j < 4; ++j) {
                    batch.push_back(orderOf(name + std::to_string(i * 4 + j)));
                }
                engine().sendMultipleMessages(me, "C", batch);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    ASSERT_TRUE(recorder.waitFor(isReport, 80));
    Messages const sent = query("", "", false, 3);
    ASSERT_EQ(sent.size(), 80u);
    for (std::size_t i = 0; i < sent.size(); i += 4) {
        std::string const first = fieldOf(sent[i], 11);
        int const number = std::stoi(first.substr(1));
        for (int j = 1; j < 4; ++j) {
            EXPECT_EQ(fieldOf(sent[i + static_cast<std::size_t>(j)], 11),
                      first[0] + std::to_string(number + j));
        }
    }
}

TEST_F(PostingTest, SendsAgainWhatWasSentInATime) {
    startAndConnect();
    EventRecorder& recorder = record();
    infra::Time const from(engine().getMillisTime(me));
    engine().sendMessage(me, "C", order("one"));
    engine().sendMessage(me, "C", order("two"));
    engine().sendMessage(me, "C", order("three"));
    ASSERT_TRUE(recorder.waitFor(isReport, 3));
    infra::Time const to(engine().getMillisTime(me));
    EXPECT_EQ(engine().resendMessages(me, "C", from, to, "tag(11) <> 'two'"), 2);
    ASSERT_TRUE(recorder.waitFor(isReport, 5));
    Messages const again = query("", "", false, 4);
    EXPECT_EQ(fieldsOf(again, 11), "one three");
    EXPECT_EQ(fieldsOf(again, 34), "5 6");
    EXPECT_EQ(fieldsOf(again, 97), "Y Y");
    EXPECT_EQ(engine().resendMessages(me, "C", infra::Time(0), infra::Time(1), ""), 0);
}

TEST_F(PostingTest, ResetsTheNumbersOfBothSides) {
    startAndConnect();
    EventRecorder& recorder = record();
    engine().sendMessage(me, "C", order("one"));
    ASSERT_TRUE(recorder.waitFor(isReport));
    engine().resetConnection(me, "C");
    EXPECT_TRUE(isConnected());
    engine().sendMessage(me, "C", order("two"));
    ASSERT_TRUE(recorder.waitFor(isReport, 2));
    EXPECT_EQ(fieldsOf(query("type = 'D'"), 34), "2 2");
    Table const notes = table("note", "note LIKE '%reset%tester%'");
    EXPECT_EQ(notes.size(), 2u);
    std::vector<int> const ids = engine().getMessageIds(me, "C", -1, false);
    EXPECT_TRUE(std::ranges::is_sorted(ids));
    EXPECT_EQ(std::set<int>(ids.begin(), ids.end()).size(), ids.size());
}

TEST_F(PostingTest, ResetsTheNumbersOfAConnectionThatIsNotConnected) {
    startAndConnect();
    engine().disconnect(me, "C", "");
    engine().resetConnection(me, "C");
    EXPECT_FALSE(isConnected());
    engine().connect(me, "C");
    EXPECT_EQ(fieldOf(query("type = 'A'", "", true, 1).front(), 34), "1");
    EXPECT_EQ(fieldOf(query("type = 'A'", "", true, 1).front(), 141), "Y");
}

} // namespace
