/// `counted_ptr`: the reference-counting pointer by which messages, events, listeners, adapters
/// and every other shared object are passed, held and released.
///
/// Threads: counts are plain. A `counted_ptr` and all copies that share one control block belong to
/// one thread at a time, or to a lock of the caller. A library that was configured with
/// `ZAN_ATOMIC_COUNTS` counts atomically: copies of one pointer may then live in several threads,
/// as with `std::shared_ptr`; a single `counted_ptr` object still needs a lock of its own.
#ifndef ZANENGINE_INFRA_COUNTED_PTR_H
#define ZANENGINE_INFRA_COUNTED_PTR_H

#include "infra/SmallObjects.h"

#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

/// Destroys an object with `delete`. A specialised policy may do something else with `destroy`.
template <class T>
struct default_destroy_policy {
    static void destroy(T* object) { delete object; }
};

namespace zan {

struct GroupAccess;

/// One control block: which object is shared, and by how many pointers.
struct CountBlock {
    void* object;
    alignas(8) std::uint64_t count;

#ifdef ZAN_ATOMIC_COUNTS
    void increment() {
        __atomic_add_fetch(&count, 1, __ATOMIC_RELAXED);
    }
    bool decrementToZero() {
        return __atomic_sub_fetch(&count, 1, __ATOMIC_ACQ_REL) == 0;
    }
    std::uint64_t read() const {
        return __atomic_load_n(&count, __ATOMIC_RELAXED);
    }
#else
    void increment() {
        ++count;
    }
    bool decrementToZero() {
        return --count == 0;
    }
    std::uint64_t read() const {
        return count;
    }
#endif
};

} // namespace zan

/// Shares one object of type `T` among all its copies; the last one to go destroys the object with
/// `Policy::destroy`. An object's destructor must not throw when a `counted_ptr` holds it.
template <class T, class Policy = default_destroy_policy<T>>
class counted_ptr {
public:
    using element_type = T;

    counted_ptr() noexcept = default;
    counted_ptr(std::nullptr_t) noexcept {}

    /// Takes ownership. Null gives an empty pointer without a control block. When there is no
    /// memory for the block the object is destroyed and `std::bad_alloc` thrown.
    [[gnu::always_inline]] explicit counted_ptr(T* object) {
        if (object) {
            block_ = newBlock(object);
        }
    }

    counted_ptr(counted_ptr const& other) noexcept : block_(other.block_) {
        if (block_) {
            block_->increment();
        }
    }

    counted_ptr(counted_ptr&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}

    [[gnu::always_inline]] ~counted_ptr() { release(block_); }

    /// Lets go of the old object before it shows the new one. The new object is held meanwhile,
    /// so `other` may live inside the object that is let go.
    counted_ptr& operator=(counted_ptr const& other) {
        if (this != &other) {
            counted_ptr incoming(other);
            reset();
            swap(incoming);
        }
        return *this;
    }

    counted_ptr& operator=(counted_ptr&& other) {
        if (this != &other) {
            counted_ptr incoming(std::move(other));
            reset();
            swap(incoming);
        }
        return *this;
    }

    /// Lets go of the object, if any; the pointer is empty before the object's destructor runs.
    void reset() { release(std::exchange(block_, nullptr)); }

    void swap(counted_ptr& other) noexcept { std::swap(block_, other.block_); }

    /// The object, or null. `*` and `->` need a pointer that is not empty.
    [[nodiscard]] T* get() const noexcept {
        return block_ ? static_cast<T*>(block_->object) : nullptr;
    }
    T& operator*() const noexcept { return *static_cast<T*>(block_->object); }
    T* operator->() const noexcept { return static_cast<T*>(block_->object); }
    explicit operator bool() const noexcept { return get() != nullptr; }

    /// How many pointers share the object; 0 for an empty pointer.
    [[nodiscard]] std::uint64_t use_count() const noexcept { return block_ ? block_->read() : 0; }

    /// Equal when both hold the same object, or both are empty.
    friend bool operator==(counted_ptr const& left, counted_ptr const& right) noexcept {
        return left.get() == right.get();
    }
    friend bool operator!=(counted_ptr const& left, counted_ptr const& right) noexcept {
        return left.get() != right.get();
    }
    friend bool operator==(counted_ptr const& left, std::nullptr_t) noexcept { return !left; }
    friend bool operator==(std::nullptr_t, counted_ptr const& right) noexcept { return !right; }
    friend bool operator!=(counted_ptr const& left, std::nullptr_t) noexcept { return !!left; }
    friend bool operator!=(std::nullptr_t, counted_ptr const& right) noexcept { return !!right; }

    friend void swap(counted_ptr& left, counted_ptr& right) noexcept { left.swap(right); }

private:
    friend struct zan::GroupAccess; // takes the blocks of many pointers at once

    using Block = zan::CountBlock;

    /// Takes ownership, with a control block at a place that was allocated for it.
    [[gnu::always_inline]] counted_ptr(T* object, void* place) noexcept
        : block_(::new (place) Block{erase(object), 1}) {}

    [[gnu::always_inline]] static Block* newBlock(T* object) {
        try {
            return ::new (zan::allocateSmall(sizeof(Block))) Block{erase(object), 1};
        } catch (...) {
            Policy::destroy(object);
            throw;
        }
    }

    static void* erase(T* object) {
        return const_cast<void*>(static_cast<void const volatile*>(object));
    }

    [[gnu::always_inline]] static void release(Block* block) {
        if (block && block->decrementToZero()) {
            if (block->object) {
                Policy::destroy(static_cast<T*>(block->object));
            }
            zan::releaseSmall(block, sizeof(Block));
        }
    }

    Block* block_ = nullptr;
};

#endif
