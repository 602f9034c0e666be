/// A map from tag to a counted pointer, kept sorted in flat storage.
#ifndef ZANENGINE_MESSAGE_TAGTABLE_H
#define ZANENGINE_MESSAGE_TAGTABLE_H

#include "infra/Pool.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
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

        bool hasNext() const { return index_ < run_->size; }
        int tag() const { return run_->tags[index_]; }
        Pointer& pointer() const { return run_->pointers[index_]; }

        void next() {
            if (++index_ == run_->size) {
                if (Run const* following = table_->runAfter(*run_)) {
                    run_ = following;
                    index_ = 0;
                }
            }
        }

    private:
        TagTable const* table_;
        Run const* run_;
        unsigned index_ = 0;
    };

    TagTable() = default;
    TagTable(TagTable const&) = delete;
    TagTable& operator=(TagTable const&) = delete;
    ~TagTable() {
        releaseRun(first_);
        if (following_) {
            for (Run& run : *following_) {
                releaseRun(run);
            }
        }
    }

    void swap(TagTable& other) noexcept {
        std::swap(first_, other.first_);
        following_.swap(other.following_);
    }

    bool empty() const { return first_.size == 0; }

    /// The entry of the tag, or null.
    Pointer* find(int tag) const {
        Place const place = locate(tag);
        return place.found ? &place.run->pointers[place.index] : nullptr;
    }

    Place locate(int tag) const {
        Run* run = runFor(tag);
        unsigned const index = lowerBound(*run, tag);
        return {run, index, index < run->size && run->tags[index] == tag};
    }

    Pointer& at(Place place) const { return place.run->pointers[place.index]; }

    /// Inserts at a place that `locate(tag)` has just returned and where nothing was found.
    /// Throws `std::bad_alloc` and changes nothing then.
    void insert(Place place, int tag, Pointer&& pointer) {
        if (place.run->size == place.run->capacity) {
            makeRoom(place);
        }
        Run& run = *place.run;
        unsigned const behind = run.size - place.index;
        Probe::moved(behind);
        shift(run.tags + place.index + 1, run.tags + place.index, behind);
        shift(run.pointers + place.index + 1, run.pointers + place.index, behind);
        run.tags[place.index] = tag;
        ::new (run.pointers + place.index) Pointer(std::move(pointer));
        ++run.size;
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
        if (--run.size == 0) {
            dropEmptyRun(run);
        }
        return removed;
    }

    /// Makes room for `count` entries at once; only in an empty table.
    void reserve(std::size_t count) {
        if (count > first_.capacity) {
            resize(first_, static_cast<unsigned>(std::min<std::size_t>(count, longestRun)));
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
    static constexpr unsigned scanned = 16;

    template <class Entry>
    static void shift(Entry* to, Entry const* from, std::size_t count) {
        if (count) {
            std::memmove(static_cast<void*>(to), static_cast<void const*>(from),
                         count * sizeof(Entry));
        }
    }

    // No branch depends on a tag: with tags asked for at random it would be mispredicted.
    static unsigned lowerBound(Run const& run, int tag) {
        int const* base = run.tags;
        unsigned rest = run.size;
        while (rest > scanned) {
            unsigned const half = rest / 2;
            Probe::compared(1);
            base = base[half - 1] < tag ? base + half : base;
            rest -= half;
        }
        Probe::compared(rest);
        unsigned below = 0;
        for (unsigned i = 0; i < rest; ++i) {
            below += base[i] < tag ? 1 : 0;
        }
        return static_cast<unsigned>(base - run.tags) + below;
    }

    Run* runFor(int tag) const {
        Run* const first = const_cast<Run*>(&first_);
        if (!following_) [[likely]] {
            return first;
        }
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

    void makeRoom(Place& place) {
        if (place.run->capacity < longestRun) {
            resize(*place.run, place.run->capacity ? place.run->capacity * 4 : 4);
        } else {
            split(place);
        }
    }

    /// Moves the upper half of a full run to a run of its own, or nothing when the new entry goes
    /// behind the last one: fields added in order then fill their runs.
    void split(Place& place) {
        if (!following_) {
            following_ = std::make_unique<std::vector<Run>>();
        }
        bool const isFirst = place.run == &first_;
        std::size_t const position = isFirst ? 0 : positionOf(*place.run) + 1;
        Run upper;
        resize(upper, longestRun);
        try {
            following_->insert(following_->begin() + static_cast<std::ptrdiff_t>(position), upper);
        } catch (...) {
            releaseRun(upper);
            throw;
        }
        Run& lower = isFirst ? first_ : (*following_)[position - 1];
        Run& higher = (*following_)[position];
        unsigned const kept = place.index == longestRun ? longestRun : longestRun / 2;
        higher.size = lower.size - kept;
        Probe::moved(higher.size);
        shift(higher.tags, lower.tags + kept, higher.size);
        shift(higher.pointers, lower.pointers + kept, higher.size);
        lower.size = kept;
        place = place.index < kept ? Place{&lower, place.index, false}
                                   : Place{&higher, place.index - kept, false};
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
        freeBlock(run);
        run = larger;
    }

    static void freeBlock(Run& run) {
        if (run.capacity) {
            pool::release(run.pointers, run.capacity * entrySize);
        }
    }

    static void releaseRun(Run& run) {
        std::destroy_n(run.pointers, run.size);
        freeBlock(run);
        run = Run();
    }

    Run first_;
    std::unique_ptr<std::vector<Run>> following_;
};

} // namespace zan

#endif
