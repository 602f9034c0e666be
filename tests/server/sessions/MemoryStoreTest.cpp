#include "server/sessions/MemoryStore.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using namespace zan::server;

FixEntry sentEntry(int seq) {
    FixEntry entry;
    entry.stream = FixStream::appOut;
    entry.seq = seq;
    entry.text = "text " + std::to_string(seq);
    return entry;
}

std::vector<int> numbersOf(std::vector<FixEntry> const& entries) {
    std::vector<int> numbers;
    for (FixEntry const& entry : entries)
        numbers.push_back(entry.seq);
    return numbers;
}

class MemoryStores : public testing::Test {
protected:
    MemoryStores() { store.lock(); }
    ~MemoryStores() override { store.unlock(); }

    void send(int seq) {
        store.append(sentEntry(seq));
        store.setNumbers({seq + 1, 1});
    }

    MemoryStore store;
};

TEST_F(MemoryStores, BeginWithOne) {
    EXPECT_EQ(store.numbers().nextOut, 1);
    EXPECT_EQ(store.numbers().nextIn, 1);
    EXPECT_TRUE(store.sent(1, 100).empty());
    EXPECT_TRUE(store.commit().empty());
}

TEST_F(MemoryStores, GiveRisingIdsAndHandCommittedEntriesOut) {
    EXPECT_EQ(store.append(sentEntry(1)), 1);
    EXPECT_EQ(store.append(sentEntry(2)), 2);
    std::vector<FixEntry> const entries = store.commit();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[1].id, 2);
    EXPECT_EQ(entries[1].text, "text 2");
    EXPECT_GE(entries[1].millis, entries[0].millis);
    EXPECT_EQ(store.append(sentEntry(3)), 3);
}

TEST_F(MemoryStores, AreAsBeforeWhenTheyAreRolledBack) {
    send(1);
    store.commit();
    send(2);
    store.rollBack();
    EXPECT_EQ(store.numbers().nextOut, 2);
    EXPECT_EQ(numbersOf(store.sent(1, 9)), std::vector<int>{1});
    EXPECT_EQ(store.append(sentEntry(2)), 2);
}

TEST_F(MemoryStores, RollBackWhatIsOpenWhenTheTurnEnds) {
    send(1);
    store.unlock();
    store.lock();
    EXPECT_EQ(store.numbers().nextOut, 1);
    EXPECT_TRUE(store.commit().empty());
}

TEST_F(MemoryStores, FindWhatWasSentAlsoInTheOpenTransaction) {
    send(1);
    send(2);
    store.commit();
    send(3);
    EXPECT_EQ(numbersOf(store.sent(2, 3)), (std::vector<int>{2, 3}));
}

TEST_F(MemoryStores, CountOnlyFirstSendingsAsSent) {
    FixEntry again = sentEntry(1);
    again.origin = FixOrigin::again;
    FixEntry in = sentEntry(1);
    in.stream = FixStream::appIn;
    store.append(again);
    store.append(in);
    EXPECT_TRUE(store.sent(1, 1).empty());
    store.commit();
    EXPECT_TRUE(store.sent(1, 1).empty());
}

TEST_F(MemoryStores, ForgetWhatWasSentWhenANumberingBegins) {
    send(1);
    store.commit();
    send(2);
    store.reset();
    EXPECT_EQ(store.numbers().nextOut, 1);
    EXPECT_TRUE(store.sent(1, 9).empty());
    send(1);
    EXPECT_EQ(numbersOf(store.sent(1, 9)), std::vector<int>{1});
    store.commit();
    EXPECT_EQ(numbersOf(store.sent(1, 9)), std::vector<int>{1});
    EXPECT_EQ(store.numbers().nextOut, 2);
}

TEST_F(MemoryStores, KeepTheNewestTenThousandSent) {
    for (int seq = 1; seq <= 10'010; ++seq)
        send(seq);
    store.commit();
    std::vector<FixEntry> const sent = store.sent(1, 20'000);
    ASSERT_EQ(sent.size(), 10'000u);
    EXPECT_EQ(sent.front().seq, 11);
    EXPECT_EQ(sent.back().seq, 10'010);
}

TEST_F(MemoryStores, ShowTheirNumbersToEveryThread) {
    store.setNumbers({7, 9});
    FixNumbers seen;
    std::thread([&] { seen = store.numbers(); }).join();
    EXPECT_EQ(seen.nextOut, 7);
    EXPECT_EQ(seen.nextIn, 9);
}

} // namespace
