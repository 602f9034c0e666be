// Messages of one order, followed through its ids.
#include "server/log/LogFixture.h"

#include "server/log/OrderKeys.h"

#include <chrono>
#include <fstream>
#include <thread>

namespace {

using namespace logtest;

using Ids = std::vector<long>;

TEST(OrderKeysOf, AMessageAreTheIdsOfItsOrder) {
    EXPECT_EQ(ordersOf(wire("35=8|37=X|11=B|41=A|")), (std::vector<OrderKeys>{{"OX", "CB", "CA"}}));
    EXPECT_EQ(ordersOf(wire("35=0|49=ME|")), std::vector<OrderKeys>());
}

TEST(OrderKeysOf, AMessageAreNotThoseThatNameNoOrder) {
    EXPECT_EQ(ordersOf(wire("35=8|37=NONE|11=B|41=|")), (std::vector<OrderKeys>{{"CB"}}));
    EXPECT_EQ(ordersOf(wire("35=9|37=|")), std::vector<OrderKeys>());
}

TEST(OrderKeysOf, AListAreThoseOfEachOrder) {
    EXPECT_EQ(ordersOf(wire("35=E|66=L|73=2|11=A|55=X|11=B|55=Y|")),
              (std::vector<OrderKeys>{{"CA"}, {"CB"}}));
    EXPECT_EQ(ordersOf(wire("35=J|73=2|11=A|37=1|11=B|37=2|")),
              (std::vector<OrderKeys>{{"CA", "O1"}, {"CB", "O2"}}));
}

class Chains : public LogTest {
protected:
    Ids chain(std::vector<int> const& ids, std::vector<std::string> const& clientOrderIds,
              bool newestFirst = false) {
        Ids found;
        log().readChain(ids, clientOrderIds, newestFirst,
                        [&](FixEntry&& each) { found.push_back(each.id); });
        return found;
    }

    void addOrders() {
        send("11=A|");                // 1
        send("11=OTHER|");            // 2
        receive("37=X|11=A|");        // 3
        send("11=B|41=A|");           // 4
        receive("37=X|11=B|41=A|");   // 5
        receive("37=Y|11=OTHER|");    // 6
        receive("37=X|");             // 7
        receive("58=no order|", "B"); // 8
    }
};

TEST_F(Chains, FollowAnOrderBothWays) {
    addOrders();
    Ids const expected{1, 3, 4, 5, 7};
    for (char const* name : {"A", "B"}) {
        EXPECT_EQ(chain({}, {name}), expected) << name;
    }
    for (int const id : {1, 3, 4, 5, 7}) {
        EXPECT_EQ(chain({id}, {}), expected) << id;
    }
    EXPECT_EQ(chain({1}, {}, true), (Ids{7, 5, 4, 3, 1}));
    EXPECT_EQ(chain({2}, {}), (Ids{2, 6}));
    EXPECT_EQ(chain({2, 1}, {"B"}), (Ids{1, 2, 3, 4, 5, 6, 7}));
}

TEST_F(Chains, AreEmptyForWhatIsNoOrder) {
    addOrders();
    EXPECT_EQ(chain({8}, {}), Ids());
    EXPECT_EQ(chain({99, -1}, {"NOBODY", ""}), Ids());
    EXPECT_EQ(chain({}, {}), Ids());
    EXPECT_EQ(chain({}, {"X"}), Ids());
}

TEST_F(Chains, DoNotGoFromOneOrderOfAListToTheNext) {
    send("11=A|55=I|11=B|55=J|"); // 1
    receive("37=1|11=A|");        // 2
    receive("37=2|11=B|");        // 3
    EXPECT_EQ(chain({}, {"A"}), (Ids{1, 2}));
    EXPECT_EQ(chain({3}, {}), (Ids{1, 3}));
    EXPECT_EQ(chain({1}, {}), (Ids{1, 2, 3}));
}

TEST_F(Chains, GrowWithTheLog) {
    addOrders();
    EXPECT_EQ(chain({1}, {}).size(), 5u);
    long const late = receive("37=X|58=late|");
    EXPECT_EQ(chain({1}, {}).back(), late);
    open();
    long const later = receive("37=X|58=later|");
    EXPECT_EQ(chain({1}, {}).back(), later);
}

TEST_F(Chains, FollowTheTextAsItIsAfterAnEdit) {
    addOrders();
    EXPECT_EQ(chain({2}, {}), (Ids{2, 6}));
    log().update(-1, "text = replace(text, '37=X', '37=Y')", "id = 7", "ann");
    EXPECT_EQ(chain({2}, {}), (Ids{2, 6, 7}));
    EXPECT_EQ(chain({1}, {}), (Ids{1, 3, 4, 5}));
    log().update(-1, "text = replace(text, '11=OTHER', '11=NEW')", "id IN (2, 6)", "ann");
    EXPECT_EQ(chain({}, {"NEW"}), (Ids{2, 6, 7}));
    EXPECT_EQ(chain({}, {"OTHER"}), Ids());
    log().remove(-1, "id = 3", "ann");
    EXPECT_EQ(chain({1}, {}), (Ids{1, 4, 5}));
    log().insert({entry(FixStream::appIn, 0, "35=8|11=A|")}, "ann");
    EXPECT_EQ(chain({1}, {}), (Ids{1, 4, 5, 9}));
}

TEST_F(Chains, KnowEditsWhenTheLogIsOpenedAgain) {
    addOrders();
    chain({1}, {});
    log().update(-1, "text = replace(text, '37=X', '37=Y')", "id = 7", "ann");
    open();
    EXPECT_EQ(chain({2}, {}), (Ids{2, 6, 7}));
}

TEST_F(Chains, AreReadyAfterMaintenance) {
    addOrders();
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    log().maintain();
    EXPECT_GT(std::filesystem::file_size(folder_.file() + ".orders"), 0u);
    EXPECT_EQ(chain({1}, {}).size(), 5u);
}

class IndexOfChains : public Chains {
protected:
    std::string index() const { return folder_.file() + ".orders"; }

    void damageIndex(std::string const& content) {
        addOrders();
        chain({1}, {});
        log_.reset();
        std::ofstream(index(), std::ios::binary | std::ios::trunc) << content;
        open();
        EXPECT_EQ(chain({1}, {}), (Ids{1, 3, 4, 5, 7}));
    }
};

TEST_F(IndexOfChains, IsMadeAnewWhenItIsMissing) {
    addOrders();
    chain({1}, {});
    log_.reset();
    std::filesystem::remove(index());
    open();
    EXPECT_EQ(chain({1}, {}), (Ids{1, 3, 4, 5, 7}));
}

TEST_F(IndexOfChains, IsMadeAnewWhenItIsNoDatabase) {
    damageIndex("this is no database, but it is long enough to be read as the head of one: " +
                std::string(8192, 'x'));
}

TEST_F(IndexOfChains, IsMadeAnewWhenItIsEmpty) {
    damageIndex("");
}

TEST_F(IndexOfChains, IsMadeAnewWhenItsPagesAreOverwritten) {
    for (int i = 0; i < 300; ++i) {
        send("11=FILL" + std::to_string(i) + "|");
    }
    addOrders();
    Ids const expected = chain({}, {"A"});
    log_.reset();
    std::fstream file(index(), std::ios::binary | std::ios::in | std::ios::out);
    auto const size = std::filesystem::file_size(index());
    for (std::size_t at = 4096; at < size; at += 4096) {
        file.seekp(static_cast<std::streamoff>(at));
        file << std::string(4096, '\x55');
    }
    file.close();
    open();
    EXPECT_EQ(chain({}, {"A"}), expected);
}

TEST_F(IndexOfChains, IsMadeAnewWhenItIsOfAnotherLog) {
    addOrders();
    chain({1}, {});
    log_.reset();
    for (char const* suffix : {"", "-wal", ".last"}) {
        std::filesystem::remove(folder_.file() + suffix);
    }
    open();
    for (int i = 0; i < 9; ++i) {
        send("11=NEW|");
    }
    EXPECT_EQ(chain({}, {"A"}), Ids());
    EXPECT_EQ(chain({}, {"NEW"}).size(), 9u);
}

TEST_F(IndexOfChains, IsMadeAnewWhenItKnowsMoreThanTheLog) {
    addOrders();
    log_.reset();
    std::string const copy = folder_.file("copy");
    std::filesystem::copy_file(folder_.file(), copy);
    open();
    send("11=LOST|");
    chain({1}, {});
    log_.reset();
    std::filesystem::copy_file(copy, folder_.file(),
                               std::filesystem::copy_options::overwrite_existing);
    std::filesystem::remove(folder_.file() + ".last");
    open();
    long const id = send("11=FOUND|");
    EXPECT_EQ(chain({}, {"FOUND"}), Ids{id});
    EXPECT_EQ(chain({}, {"LOST"}), Ids());
}

} // namespace
