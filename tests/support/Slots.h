/// `slotOf`: in which entry of its class's virtual table a member function stands.
///
/// Adapters are built apart from the library, so the order of virtual functions is part of what the
/// library promises; a test compares it with numbers.
///
/// Works where a pointer to a virtual member holds 1 + the byte offset of its entry, as on x86-64
/// and i386 with the Itanium C++ ABI. Entries count from 0, and a virtual destructor fills two of
/// them: in a class whose first virtual function is its destructor, the next one has slot 2.
/// A protected member is reached by naming it through a derived class.
#ifndef ZANENGINE_TESTS_SUPPORT_SLOTS_H
#define ZANENGINE_TESTS_SUPPORT_SLOTS_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace slots_detail {

template <class Pointer>
std::size_t slotOfPointer(Pointer member) {
    std::uintptr_t word = 0;
    static_assert(sizeof(member) == 2 * sizeof(word), "a pointer to member is two words here");
    std::memcpy(&word, &member, sizeof(word));
    if (word % 2 == 0) {
        throw std::logic_error("slotOf: the function is not virtual");
    }
    return (word - 1) / sizeof(void*);
}

} // namespace slots_detail

/// Throws `std::logic_error` when the function is not virtual. For an overloaded name, name the
/// types: `slotOf<void, Group, int, long>(&Group::set)`.
template <class R, class C, class... Args>
std::size_t slotOf(R (C::*member)(Args...)) {
    return slots_detail::slotOfPointer(member);
}

template <class R, class C, class... Args>
std::size_t slotOf(R (C::*member)(Args...) const) {
    return slots_detail::slotOfPointer(member);
}

#endif
