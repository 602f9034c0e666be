// Random logs and random questions: every answer is what a filter by hand gives.
#include "server/log/LogFixture.h"

#include "server/log/OrderKeys.h"
#include "server/wire/FieldText.h"

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <thread>
#include <tuple>

namespace {

using namespace logtest;

using Ids = std::vector<long>;

std::optional<std::string> fieldOf(FixEntry const& entry, int tag) {
    FieldCursor cursor(entry.text, fieldSeparator, Reading::Tolerant);
    while (cursor.next()) {
        if (cursor.field().tag == tag) {
            return std::string(cursor.field().value);
        }
    }
    return std::nullopt;
}

// One condition twice: for the log, and as a function.
struct Condition {
    std::string sql;
    std::function<bool(FixEntry const&)> holds;
};

class RandomLog : public LogTest, public testing::WithParamInterface<unsigned> {
protected:
    RandomLog() : random_(GetParam()) { fill(); }

    int pick(int below) { return std::uniform_int_distribution<int>(0, below - 1)(random_); }

    std::string order() { return std::string(1, static_cast<char>('A' + pick(8))); }

    std::string randomText() {
        std::string text = "8=FIX.4.4|35=";
        text += "D8G9F"[pick(5)];
        text += pick(2) ? "|49=ME|56=YOU|" : "|49=YOU|56=ME|";
        if (pick(3)) {
            text += "11=" + order() + "|";
        }
        if (pick(4) == 0) {
            text += "41=" + order() + "|";
        }
        if (pick(3) == 0) {
            text += "37=X" + order() + "|";
        }
        if (pick(5) == 0) {
            text += "95=7|96=1|11=Z|x|";
        }
        text += "55=" + std::string(pick(2) ? "IBM" : "MSFT") + "|38=" + std::to_string(pick(300)) +
                "|";
        return text;
    }

    void fill() {
        int const commits = 40 + pick(40);
        for (int commit = 0; commit < commits; ++commit) {
            Turn const turn(log());
            int const size = 1 + pick(6);
            for (int i = 0; i < size; ++i) {
                appendOne();
            }
            if (pick(15) == 0) {
                log().reset();
                sent_.clear();
            }
            bool const isKept = pick(8) != 0;
            if (isKept) {
                for (FixEntry& each : log().commit()) {
                    model_.push_back(std::move(each));
                }
                keptSent_ = sent_;
            } else {
                log().rollBack();
                sent_ = keptSent_;
            }
            if (pick(6) == 0) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        }
    }

    void appendOne() {
        FixNumbers numbers = log().numbers();
        FixEntry made = entry(static_cast<FixStream>(pick(5)), 0, randomText(),
                              pick(5) ? FixOrigin::wire : static_cast<FixOrigin>(1 + pick(4)));
        if (made.origin == FixOrigin::remark && pick(2)) {
            made.text.clear();
        }
        made.note = pick(3) ? "" : "note " + std::to_string(pick(5));
        bool const isOut = made.stream != FixStream::adminIn && made.stream != FixStream::appIn;
        bool const isNumbered = made.origin == FixOrigin::wire;
        made.seq = isNumbered ? (isOut ? numbers.nextOut : numbers.nextIn) : pick(50);
        long const id = log().append(std::move(made));
        if (isNumbered) {
            if (isOut) {
                sent_[numbers.nextOut] = id;
            }
            ++(isOut ? numbers.nextOut : numbers.nextIn);
            log().setNumbers(numbers);
        }
    }

    Condition condition() {
        std::string const value = order();
        int const number = pick(300);
        switch (pick(9)) {
        case 0:
            return {"tag(11) = '" + value + "'",
                    [=](FixEntry const& e) { return fieldOf(e, 11) == value; }};
        case 1:
            return {"CAST(tag(38) AS INTEGER) < " + std::to_string(number),
                    [=](FixEntry const& e) { return std::stoi(*fieldOf(e, 38)) < number; }};
        case 2:
            return {"sender = 'ME'", [](FixEntry const& e) { return fieldOf(e, 49) == "ME"; }};
        case 3:
            return {"type IN ('D', 'F')", [](FixEntry const& e) {
                        return fieldOf(e, 35) == "D" || fieldOf(e, 35) == "F";
                    }};
        case 4:
            return {"note LIKE '%3%'",
                    [](FixEntry const& e) { return e.note.find('3') != std::string::npos; }};
        case 5:
            return {"tag(41) IS NULL", [](FixEntry const& e) { return !fieldOf(e, 41); }};
        case 6:
            return {"seq % 3 = 1", [](FixEntry const& e) { return e.seq % 3 == 1; }};
        case 7:
            return {"instr(text, '=MSFT') > 0",
                    [](FixEntry const& e) { return e.text.find("=MSFT") != std::string::npos; }};
        default:
            return {"stream BETWEEN 1 AND 3", [](FixEntry const& e) {
                        int const stream = static_cast<int>(e.stream);
                        return stream >= 1 && stream <= 3;
                    }};
        }
    }

    Condition conditions() {
        Condition const one = condition();
        if (pick(2)) {
            return one;
        }
        Condition const two = condition();
        bool const isBoth = pick(2) != 0;
        return {one.sql + (isBoth ? " AND " : " OR ") + two.sql, [=](FixEntry const& e) {
                    return isBoth ? one.holds(e) && two.holds(e) : one.holds(e) || two.holds(e);
                }};
    }

    std::vector<FixEntry> messages() const {
        std::vector<FixEntry> all;
        for (FixEntry const& each : model_) {
            if (!each.text.empty()) {
                all.push_back(each);
            }
        }
        return all;
    }

    // The answer by hand.
    Ids expected(LogQuery const& query, std::function<bool(FixEntry const&)> const& holds,
                 std::function<bool(FixEntry const&, FixEntry const&)> const& isBefore) const {
        std::vector<FixEntry> fitting;
        for (FixEntry const& each : messages()) {
            bool const fits =
                (query.stream < 0 || static_cast<int>(each.stream) == query.stream) &&
                (!query.ids || (each.id >= query.ids->first && each.id <= query.ids->second)) &&
                (!query.millis ||
                 (each.millis >= query.millis->first && each.millis <= query.millis->second)) &&
                (!query.idSet || std::ranges::count(*query.idSet, each.id) > 0) && holds(each);
            if (fits) {
                fitting.push_back(each);
            }
        }
        std::ranges::stable_sort(fitting, isBefore);
        if (query.newestFirst) {
            std::ranges::reverse(fitting);
        }
        Ids ids;
        for (FixEntry const& each : fitting) {
            ids.push_back(each.id);
        }
        return ids;
    }

    std::mt19937 random_;
    std::vector<FixEntry> model_;
    std::map<int, long> sent_;
    std::map<int, long> keptSent_;
};

bool byId(FixEntry const& left, FixEntry const& right) {
    return left.id < right.id;
}

bool byTypeThenSeqDown(FixEntry const& left, FixEntry const& right) {
    auto const keyOf = [](FixEntry const& e) {
        return std::tuple(fieldOf(e, 35).value_or(""), -e.seq, e.id);
    };
    return keyOf(left) < keyOf(right);
}

TEST_P(RandomLog, KeepsEveryEntryAsItWasCommitted) {
    std::vector<FixEntry> const found = read();
    std::vector<FixEntry> const all = messages();
    ASSERT_EQ(found.size(), all.size());
    for (std::size_t at = 0; at < all.size(); ++at) {
        EXPECT_EQ(found[at].id, all[at].id);
        EXPECT_EQ(found[at].millis, all[at].millis);
        EXPECT_EQ(found[at].stream, all[at].stream);
        EXPECT_EQ(found[at].origin, all[at].origin);
        EXPECT_EQ(found[at].seq, all[at].seq);
        EXPECT_EQ(found[at].text, all[at].text);
        EXPECT_EQ(found[at].note, all[at].note);
    }
}

TEST_P(RandomLog, AnswersEveryQuestionLikeAFilterByHand) {
    for (int question = 0; question < 150; ++question) {
        LogQuery query;
        query.stream = pick(3) ? -1 : pick(5);
        query.newestFirst = pick(2) != 0;
        int const last = static_cast<int>(log().lastId());
        if (pick(3) == 0) {
            query.ids = std::pair<long, long>(pick(last + 5), pick(last + 5));
        }
        if (pick(3) == 0) {
            query.millis = std::pair<std::int64_t, std::int64_t>(
                model_[static_cast<std::size_t>(pick(static_cast<int>(model_.size())))].millis,
                model_[static_cast<std::size_t>(pick(static_cast<int>(model_.size())))].millis);
        }
        if (pick(4) == 0) {
            query.idSet.emplace();
            for (int i = pick(40); i > 0; --i) {
                query.idSet->push_back(pick(last + 5));
            }
        }
        Condition asked{"", [](FixEntry const&) { return true; }};
        if (pick(3)) {
            asked = conditions();
        }
        query.where = asked.sql;
        bool const isOrdered = pick(3) == 0;
        query.orderBy = isOrdered ? "type, seq DESC" : "";
        EXPECT_EQ(readIds(query),
                  expected(query, asked.holds, isOrdered ? byTypeThenSeqDown : byId))
            << query.where << " ordered by " << query.orderBy;
    }
}

TEST_P(RandomLog, GivesWhatWasSentUnderEachNumber) {
    for (int round = 0; round < 2; ++round) {
        for (int question = 0; question < 30; ++question) {
            int const first = 1 + pick(60);
            int const last = pick(5) ? first + pick(20) : 0;
            Ids expectedIds;
            for (auto const& [seq, id] : keptSent_) {
                if (seq >= first && (last == 0 || seq <= last)) {
                    expectedIds.push_back(id);
                }
            }
            Ids found;
            {
                Turn const turn(log());
                for (FixEntry const& each : log().sent(first, last)) {
                    found.push_back(each.id);
                }
            }
            EXPECT_EQ(found, expectedIds) << first << " to " << last;
        }
        log().remove(-1, conditions().sql, "ann");
        log().update(-1, "text = text || 'x'", conditions().sql, "ann");
        open();
    }
}

TEST_P(RandomLog, FollowsChainsLikeASearchByHand) {
    // Orders that share a key in one message belong together.
    auto const chainByHand = [&](std::string const& start) {
        std::set<std::string> known{clientOrderKey(start)};
        std::set<long> found;
        for (bool isGrowing = true; isGrowing;) {
            isGrowing = false;
            for (FixEntry const& each : messages()) {
                for (OrderKeys const& order : ordersOf(each.text)) {
                    bool const isPart = std::ranges::any_of(
                        order, [&](std::string const& key) { return known.contains(key); });
                    if (isPart) {
                        isGrowing |= found.insert(each.id).second;
                        known.insert(order.begin(), order.end());
                    }
                }
            }
        }
        return Ids(found.begin(), found.end());
    };
    for (char name = 'A'; name <= 'I'; ++name) {
        Ids found;
        log().readChain({}, {std::string(1, name)}, false,
                        [&](FixEntry&& each) { found.push_back(each.id); });
        EXPECT_EQ(found, chainByHand(std::string(1, name))) << name;
    }
}

TEST_P(RandomLog, FiltersSingleEntriesLikeTheLog) {
    for (int question = 0; question < 20; ++question) {
        Condition const asked = conditions();
        EntryFilter filter(asked.sql);
        for (FixEntry const& each : messages()) {
            EXPECT_EQ(filter.matches(each), asked.holds(each)) << asked.sql;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomLog, testing::Range(1u, 9u));

} // namespace
