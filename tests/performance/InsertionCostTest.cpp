// How many comparisons and moves it takes to fill a table of tags, in any order.
#include "message/TagTable.h"

#include "infra/counted_ptr.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace {

struct CountingProbe {
    static inline std::size_t comparisons = 0;
    static inline std::size_t moves = 0;

    static void compared(std::size_t count) { comparisons += count; }
    static void moved(std::size_t count) { moves += count; }
};

using Table = zan::TagTable<counted_ptr<int>, CountingProbe>;

// A search halves a run of 256 entries four times and looks at the 16 that are left at once; the
// run itself is found among the 80 of 10,000 fields by at most seven comparisons more.
constexpr std::size_t comparisonsPerInsertion = 4 + 16 + 7;

// In a random order half a run has to give way on average, in the worst order, descending, a whole
// one of up to 256, half of which is split off each time it is full: 192 on average. One move is
// the share of each entry in the splits.
constexpr std::size_t movesPerInsertion = 192 + 1;

// A group of the usual size is one run, and at worst each entry moves all that were there before.
constexpr std::size_t usualFields = 16;
constexpr std::size_t movesOfUsualFields = usualFields * (usualFields - 1) / 2;

std::vector<int> ascendingTags(std::size_t count) {
    std::vector<int> tags(count);
    std::iota(tags.begin(), tags.end(), 1);
    return tags;
}

struct Order {
    char const* name;
    void (*arrange)(std::vector<int>&);
};

// Ends first: each tag lies in the middle of those that are there already.
void fromTheEndsInwards(std::vector<int>& tags) {
    std::vector<int> arranged;
    for (std::size_t low = 0, high = tags.size(); low < high; ++low) {
        arranged.push_back(tags[low]);
        if (low < --high) {
            arranged.push_back(tags[high]);
        }
    }
    tags = arranged;
}

constexpr Order orders[] = {
    {"ascending", [](std::vector<int>&) {}},
    {"descending", [](std::vector<int>& tags) { std::reverse(tags.begin(), tags.end()); }},
    {"random",
     [](std::vector<int>& tags) {
         std::shuffle(tags.begin(), tags.end(), std::mt19937(20261121));
     }},
    {"from the ends inwards", fromTheEndsInwards},
};

void fill(Table& table, std::vector<int> const& tags) {
    CountingProbe::comparisons = 0;
    CountingProbe::moves = 0;
    for (int const tag : tags) {
        table.insert(table.locate(tag), tag, counted_ptr<int>(new int(tag)));
    }
}

void expectAllInOrder(Table const& table, std::size_t count) {
    int expected = 1;
    for (Table::Cursor cursor(table); cursor.hasNext(); cursor.next()) {
        ASSERT_EQ(cursor.tag(), expected);
        ASSERT_EQ(*cursor.pointer(), expected);
        ++expected;
    }
    EXPECT_EQ(static_cast<std::size_t>(expected), count + 1);
}

template <class Check>
void forEachOrder(std::size_t count, Check check) {
    for (auto const& order : orders) {
        SCOPED_TRACE(std::string(order.name) + ", " + std::to_string(count) + " fields");
        auto tags = ascendingTags(count);
        order.arrange(tags);
        Table table;
        fill(table, tags);
        expectAllInOrder(table, count);
        check();
    }
}

} // namespace

TEST(InsertionCost, OfAUsualMessageIsBoundedInAnyOrder) {
    forEachOrder(usualFields, [] {
        EXPECT_LE(CountingProbe::comparisons, usualFields * usualFields);
        EXPECT_LE(CountingProbe::moves, movesOfUsualFields);
    });
}

TEST(InsertionCost, GrowsNoFasterThanTheNumberOfFieldsInAnyOrder) {
    for (std::size_t const count : {100U, 1'000U, 10'000U}) {
        forEachOrder(count, [count] {
            EXPECT_LE(CountingProbe::comparisons, count * comparisonsPerInsertion);
            EXPECT_LE(CountingProbe::moves, count * movesPerInsertion);
        });
    }
}

TEST(InsertionCost, OfAscendingTagsIsNoMoveAtAll) {
    Table table;
    fill(table, ascendingTags(10'000));
    EXPECT_EQ(CountingProbe::moves, 0U);
}
