/// A map from tag to a counted pointer, kept sorted in flat storage.
#ifndef ZANENGINE_MESSAGE_TAGTABLE_H
#define ZANENGINE_MESSAGE_TAGTABLE_H

#include "infra/Pool.h"
#include "message/TagSearch.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace zan {

/// Counts nothing; a test gives a probe that does.
struct NoTagTableProbe {
    static void compared(std::size_t) {}
    static void moved(std::size_t) {}
};

/// Sorted runs of at most 256 entries: tags and pointers in two parallel arrays of one block.
/// Nearly every message has a single run. A full run is split, so that inserting into the middle
/// of thousands of fields moves few of them.
///
/// A run has room for 4, 16, 64 or 256 entries, the first 4 of them in the table itself, and the
/// tags behind the last entry are the largest there is: a search takes a fixed number of steps and
/// has no branch that depends on a tag, which would be mispredicted when tags are asked for at
/// random.
///
/// `Pointer` is an owning pointer of one word that may be moved in memory byte by byte.
template <class Pointer, class Probe = NoTagTableProbe>
class TagTable {
    struct Run {
        Pointer* pointers = nullptr;
        int* tags = nullptr;
        unsigned size = 0;
        unsigned capacity = 0;
    };

public:
    static constexpr unsigned shortestRun = 4;
    static constexpr unsigned longestRun = 256;

    /// Where a tag stands, or would be inserted.
    struct Place {
        Run* run;
        unsigned index;
        bool found;
    };

    /// Stands on one entry after the other, in the order of the tags. Inserting or removing
    /// entries ends it.
    class Cursor {
    public:
        explicit Cursor(TagTable const& table) : table_(&table), run_(&table.first_) {}

        /// Stands on the first entry whose tag is not lower.
        Cursor(TagTable const& table, int tag) : table_(&table), run_(table.runFor(tag)) {
            index_ = lowerBound(*run_, tag);
            if (index_ == run_->size) {
                toFollowingRun();
            }
        }

        bool hasNext() const { return index_ < run_->size; }
        int tag() const { return run_->tags[index_]; }
        Pointer& pointer() const { return run_->pointers[index_]; }

        void next() {
            if (++index_ == run_->size) {
                toFollowingRun();
            }
        }

    private:
        void toFollowingRun() {
            if (Run const* following = table_->runAfter(*run_)) {
                run_ = following;
                index_ = 0;
            }
        }

        TagTable const* table_;
        Run const* run_;
        unsigned index_ = 0;
    };

    TagTable() noexcept { useEntriesInPlace(); }
    TagTable(TagTable const&) = delete;
    TagTable& operator=(TagTable const&) = delete;
    ~TagTable() { discard(); }

    /// Destroys all entries, which nobody finds any more then, and what their destructors add.
    void discard() noexcept {
        while (first_.size > 0) {
            Run ending = first_;
            alignas(Pointer) unsigned char pointers[sizeof pointersInPlace_];
            if (ending.capacity == shortestRun) {
                std::memcpy(pointers, pointersInPlace_, sizeof pointers);
                ending.pointers = reinterpret_cast<Pointer*>(pointers);
            }
            auto const following = std::move(following_);
            useEntriesInPlace();
            ++changes_;
            releaseRun(ending);
            if (following) {
                for (Run& run : *following) {
                    releaseRun(run);
                }
            }
        }
        freeBlock(first_);
        useEntriesInPlace();
    }

    bool empty() const { return first_.size == 0; }

    /// Another number after each entry that came or went.
    unsigned changes() const { return changes_; }

    void swap(TagTable& other) noexcept {
        std::swap(first_, other.first_);
        std::swap(following_, other.following_);
        std::swap(tagsInPlace_, other.tagsInPlace_);
        std::swap(pointersInPlace_, other.pointersInPlace_);
        for (TagTable* table : {this, &other}) {
            if (table->first_.capacity == shortestRun) {
                table->pointInPlace();
            }
            ++table->changes_;
        }
    }

    /// The entry of the tag, or null.
    [[gnu::always_inline]] Pointer* find(int tag) const {
        Run const& run = *runFor(tag);
        unsigned const index = lowerBound(run, tag);
        return index < run.size && run.tags[index] == tag ? &run.pointers[index] : nullptr;
    }

    [[gnu::always_inline]] Place locate(int tag) const {
        Run* const run = runFor(tag);
        unsigned const index =
            run->size <= scanned ? scanFromEnd(*run, tag) : lowerBound(*run, tag);
        return {run, index, index < run->size && run->tags[index] == tag};
    }

    Pointer& at(Place place) const { return place.run->pointers[place.index]; }

    /// Inserts at a place that `locate(tag)` has just returned and where nothing was found.
    /// Throws `std::bad_alloc` and changes nothing then.
    [[gnu::always_inline]] void insert(Place place, int tag, Pointer&& pointer) {
        if (place.run->size == place.run->capacity) {
            place = makeRoom(place);
        }
        Run& run = *place.run;
        unsigned const behind = run.size - place.index;
        if (behind > 0) {
            Probe::moved(behind);
            openGap(run, place.index, behind);
        }
        run.tags[place.index] = tag;
        ::new (run.pointers + place.index) Pointer(std::move(pointer));
        ++run.size;
        ++changes_;
    }

    /// Adds an entry behind all others: the tag is higher than every tag in the table.
    [[gnu::always_inline]] void append(int tag, Pointer&& pointer) {
        Run& run = following_ ? following_->back() : first_;
        insert({&run, run.size, false}, tag, std::move(pointer));
    }

    /// Takes the tag's entry out and returns its pointer; empty when there is none.
    Pointer remove(int tag) {
        Place const place = locate(tag);
        if (!place.found) {
            return Pointer();
        }
        Run& run = *place.run;
        Pointer removed(std::move(run.pointers[place.index]));
        unsigned const behind = run.size - place.index - 1;
        shift(run.tags + place.index, run.tags + place.index + 1, behind);
        shift(run.pointers + place.index, run.pointers + place.index + 1, behind);
        run.tags[--run.size] = noTag;
        ++changes_;
        if (run.size == 0) {
            dropEmptyRun(run);
        }
        return removed;
    }

    /// All entries side by side; none where they lie in several runs.
    struct Entries {
        int const* tags;
        Pointer const* pointers;
        unsigned size;
    };
    Entries entries() const { return {first_.tags, first_.pointers, following_ ? 0 : first_.size}; }

    /// Makes room for `count` entries at once; only in a table that has had none.
    void reserve(std::size_t count) {
        unsigned capacity = shortestRun;
        while (capacity < count && capacity < longestRun) {
            capacity *= growth;
        }
        if (capacity > first_.capacity) {
            resize(first_, capacity);
        }
    }

    std::size_t size() const {
        std::size_t total = first_.size;
        if (following_) {
            for (Run const& run : *following_) {
                total += run.size;
            }
        }
        return total;
    }

private:
    static constexpr std::size_t entrySize = sizeof(Pointer) + sizeof(int);
    static constexpr unsigned growth = 4;
    static constexpr unsigned scanned = 16;
    static constexpr unsigned movedOneByOne = 16;
    static constexpr int noTag = std::numeric_limits<int>::max();

    template <class Entry>
    static void shift(Entry* to, Entry const* from, std::size_t count) {
        if (count) {
            std::memmove(static_cast<void*>(to), static_cast<void const*>(from),
                         count * sizeof(Entry));
        }
    }

    static unsigned lowerBound(Run const& run, int tag) {
        if (run.capacity == scanned) [[likely]] {
            Probe::compared(scanned);
            return countBelow16(run.tags, tag);
        }
        if (run.capacity == shortestRun) {
            Probe::compared(shortestRun);
            return countBelow4(run.tags, tag);
        }
        int const* base = run.tags;
        for (unsigned half = run.capacity / 2; half >= scanned; half /= 2) {
            Probe::compared(1);
            // A mask, because the compiler would make a branch of a choice.
            base += half & (0U - static_cast<unsigned>(base[half - 1] < tag));
        }
        Probe::compared(scanned);
        return static_cast<unsigned>(base - run.tags) + countBelow16(base, tag);
    }

    // For a table that is being filled: most tags belong near the end, the same message is filled
    // in the same order again and again, and a wide load would have to wait for the narrow stores
    // of the tags that were just inserted.
    static unsigned scanFromEnd(Run const& run, int tag) {
        unsigned index = run.size;
        while (index > 0 && run.tags[index - 1] >= tag) {
            --index;
        }
        Probe::compared(run.size - index + 1);
        return index;
    }

    static void openGap(Run& run, unsigned index, unsigned behind) {
        if (behind > movedOneByOne) {
            shift(run.tags + index + 1, run.tags + index, behind);
            shift(run.pointers + index + 1, run.pointers + index, behind);
            return;
        }
        // One by one: a wide load right behind a narrow store would wait for that store to reach
        // the cache. `volatile` keeps the compiler from making the loop wide again.
        static_assert(sizeof(Pointer) == sizeof(std::uintptr_t));
        int volatile* tag = run.tags + run.size;
        auto* pointer = reinterpret_cast<std::uintptr_t volatile*>(run.pointers + run.size);
        for (; behind > 0; --behind, --tag, --pointer) {
            *tag = tag[-1];
            *pointer = pointer[-1];
        }
    }

    [[gnu::always_inline]] Run* runFor(int tag) const {
        if (!following_) [[likely]] {
            return const_cast<Run*>(&first_);
        }
        return runAmongMany(tag);
    }

    [[gnu::noinline]] Run* runAmongMany(int tag) const {
        Run* const first = const_cast<Run*>(&first_);
        auto const after = std::upper_bound(following_->begin(), following_->end(), tag,
                                            [](int wanted, Run const& run) {
                                                Probe::compared(1);
                                                return wanted < run.tags[0];
                                            });
        return after == following_->begin() ? first : &*(after - 1);
    }

    Run const* runAfter(Run const& run) const {
        if (!following_) {
            return nullptr;
        }
        std::size_t const next = &run == &first_ ? 0 : positionOf(run) + 1;
        return next < following_->size() ? &(*following_)[next] : nullptr;
    }

    std::size_t positionOf(Run const& run) const {
        return static_cast<std::size_t>(&run - following_->data());
    }

    /// Returns where the entry stands now.
    [[gnu::noinline]] Place makeRoom(Place place) {
        if (place.run->capacity == longestRun) {
            return split(place);
        }
        resize(*place.run, place.run->capacity * growth);
        return place;
    }

    /// Moves the upper half of a full run to a run of its own, or nothing when the new entry goes
    /// behind the last one: fields added in order then fill their runs.
    Place split(Place place) {
        bool const isFirst = place.run == &first_;
        std::size_t const position = isFirst ? 0 : positionOf(*place.run) + 1;
        insertEmptyRun(position);
        Run& lower = isFirst ? first_ : (*following_)[position - 1];
        Run& higher = (*following_)[position];
        unsigned const kept = place.index == longestRun ? longestRun : longestRun / 2;
        higher.size = lower.size - kept;
        Probe::moved(higher.size);
        shift(higher.tags, lower.tags + kept, higher.size);
        shift(higher.pointers, lower.pointers + kept, higher.size);
        std::fill(lower.tags + kept, lower.tags + lower.size, noTag);
        lower.size = kept;
        return place.index < kept ? Place{&lower, place.index, false}
                                  : Place{&higher, place.index - kept, false};
    }

    /// Throws `std::bad_alloc` and changes nothing then.
    void insertEmptyRun(std::size_t position) {
        auto runs = following_ ? nullptr : std::make_unique<std::vector<Run>>();
        auto& target = following_ ? *following_ : *runs;
        if (target.size() == target.capacity()) {
            target.reserve(2 * target.size() + 1);
        }
        Run run;
        resize(run, longestRun);
        target.insert(target.begin() + static_cast<std::ptrdiff_t>(position), run);
        if (runs) {
            following_ = std::move(runs);
        }
    }

    void dropEmptyRun(Run& run) {
        if (!following_) {
            return;
        }
        if (&run == &first_) {
            std::swap(first_, following_->front());
            releaseRun(following_->front());
            following_->erase(following_->begin());
        } else {
            releaseRun(run);
            following_->erase(following_->begin() + static_cast<std::ptrdiff_t>(positionOf(run)));
        }
        if (following_->empty()) {
            following_.reset();
        }
    }

    static void resize(Run& run, unsigned capacity) {
        auto* const block = static_cast<unsigned char*>(pool::allocate(capacity * entrySize));
        Run larger{reinterpret_cast<Pointer*>(block),
                   reinterpret_cast<int*>(block + capacity * sizeof(Pointer)), run.size, capacity};
        shift(larger.tags, run.tags, run.size);
        shift(larger.pointers, run.pointers, run.size);
        std::fill(larger.tags + run.size, larger.tags + capacity, noTag);
        freeBlock(run);
        run = larger;
    }

    static void freeBlock(Run& run) {
        if (run.capacity > shortestRun) {
            pool::release(run.pointers, run.capacity * entrySize);
        }
    }

    static void releaseRun(Run& run) {
        std::destroy_n(run.pointers, run.size);
        freeBlock(run);
        run = Run();
    }

    void pointInPlace() {
        first_.pointers = reinterpret_cast<Pointer*>(pointersInPlace_);
        first_.tags = tagsInPlace_;
    }

    void useEntriesInPlace() {
        std::fill(tagsInPlace_, tagsInPlace_ + shortestRun, noTag);
        first_.size = 0;
        first_.capacity = shortestRun;
        pointInPlace();
    }

    Run first_;
    std::unique_ptr<std::vector<Run>> following_;
    unsigned changes_ = 0;
    int tagsInPlace_[shortestRun];
    alignas(Pointer) unsigned char pointersInPlace_[shortestRun * sizeof(Pointer)] = {};
};

} // namespace zan

#endif
