// Groups that are made in one thread and freed in another, in every way in which one is made.
#include "message/GroupAccess.h"
#include "message/ZANFieldGroup.h"
#include "support/Seed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

constexpr int firstTag = 100;
constexpr std::size_t mostFields = 80;
constexpr std::size_t longestText = 200;
constexpr std::size_t mostInstances = 3;
constexpr std::size_t ways = 4;

using Group = counted_ptr<ZANFieldGroup>;
using Texts = std::vector<std::string>;

std::size_t below(std::mt19937& random, std::size_t end) {
    return random() % end;
}

/// Texts of one length fill one size of blocks, mixed ones all of them.
Texts randomTexts(std::mt19937& random) {
    bool const sameLength = below(random, 2) == 0;
    std::size_t const length = below(random, longestText + 1);
    Texts texts(1 + below(random, mostFields));
    for (std::string& text : texts) {
        text.assign(sameLength ? length : below(random, longestText + 1),
                    static_cast<char>('!' + below(random, 90)));
    }
    return texts;
}

Group built(Texts const& texts) {
    Group group(new ZANFieldGroup(0));
    for (std::size_t i = 0; i < texts.size(); ++i) {
        group->setFieldValue(firstTag + static_cast<int>(i), texts[i]);
    }
    return group;
}

Group filled(Texts const& texts) {
    std::vector<zan::TextField> fields;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        fields.push_back({firstTag + static_cast<int>(i), texts[i]});
    }
    Group group(new ZANFieldGroup(0));
    zan::GroupAccess::fill(*group, fields);
    return group;
}

Group withInstances(Texts const& texts, std::size_t instances) {
    Group const group = built(texts);
    for (std::size_t i = 0; i < instances; ++i) {
        group->addGroup(filled(texts));
    }
    return Group(new ZANFieldGroup(*group));
}

/// What a seed stands for: the same texts and the same instances each time.
struct Order {
    explicit Order(std::uint32_t seed) {
        std::mt19937 random(seed);
        way = below(random, ways);
        instances = way == 3 ? 1 + below(random, mostInstances) : 0;
        texts = randomTexts(random);
    }

    Group make() const {
        switch (way) {
        case 0:
            return built(texts);
        case 1:
            return filled(texts);
        case 2:
            return Group(new ZANFieldGroup(*built(texts)));
        default:
            return withInstances(texts, instances);
        }
    }

    bool isSameAs(ZANFieldGroup const& group) const {
        bool same = hasTexts(group) && group.getGroupCount(0) == static_cast<int>(instances);
        for (int i = 0; same && i < static_cast<int>(instances); ++i) {
            same = hasTexts(*group.getGroup(0, i));
        }
        return same;
    }

    std::size_t way;
    std::size_t instances;
    Texts texts;

private:
    bool hasTexts(ZANFieldGroup const& group) const {
        std::size_t seen = 0;
        auto const fields = group.fieldIterator();
        for (; fields->hasNext() && seen < texts.size(); fields->next(), ++seen) {
            auto const& field = *fields->current();
            if (field.getTag() != firstTag + static_cast<int>(seen) ||
                field.getValue().asStringView() != texts[seen]) {
                return false;
            }
        }
        return seen == texts.size() && !fields->hasNext();
    }
};

struct Parcel {
    std::uint32_t seed = 0;
    Group group;
};

/// Where groups lie between two threads, never more than a few.
class Exchange {
public:
    /// Puts a parcel down and takes another one, chosen at random, when there are many.
    Parcel swap(Parcel parcel, std::size_t random) {
        std::lock_guard const guard(mutex_);
        parcels_.push_back(std::move(parcel));
        if (parcels_.size() <= most) {
            return {};
        }
        std::swap(parcels_[random % most], parcels_.back());
        Parcel taken = std::move(parcels_.back());
        parcels_.pop_back();
        return taken;
    }

    std::vector<Parcel> takeAll() {
        std::lock_guard const guard(mutex_);
        return std::exchange(parcels_, {});
    }

private:
    static constexpr std::size_t most = 60;
    std::mutex mutex_;
    std::vector<Parcel> parcels_;
};

/// Makes groups, hands them over, and looks through the ones that it gets. Returns how many of
/// them were damaged.
int work(Exchange& exchange, std::uint32_t seed, int groups) {
    std::mt19937 random(seed);
    int damaged = 0;
    for (int i = 0; i < groups; ++i) {
        auto const content = static_cast<std::uint32_t>(random());
        Parcel const taken = exchange.swap({content, Order(content).make()}, random());
        if (taken.group && !Order(taken.seed).isSameAs(*taken.group)) {
            ++damaged;
        }
    }
    return damaged;
}

/// Runs `threads` at the same time, `generations` times one after the other.
int damagedAmongThreads(int threads, int generations, int groups) {
    std::mt19937 random(testSeed());
    Exchange exchange;
    std::vector<int> damaged(static_cast<std::size_t>(threads), 0);
    for (int generation = 0; generation < generations; ++generation) {
        std::vector<std::thread> running;
        for (int& count : damaged) {
            running.emplace_back([&exchange, &count, groups, seed = random()] {
                count += work(exchange, static_cast<std::uint32_t>(seed), groups);
            });
        }
        for (std::thread& thread : running) {
            thread.join();
        }
    }
    int total = 0;
    for (int const count : damaged) {
        total += count;
    }
    for (Parcel const& left : exchange.takeAll()) {
        total += Order(left.seed).isSameAs(*left.group) ? 0 : 1;
    }
    return total;
}

} // namespace

TEST(HandOver, KeepsGroupsThatAreMadeInOneThreadAndFreedInAnother) {
    EXPECT_EQ(damagedAmongThreads(4, 1, 1500), 0);
}

TEST(HandOver, KeepsGroupsOfThreadsThatHaveEnded) {
    EXPECT_EQ(damagedAmongThreads(4, 60, 20), 0);
}
