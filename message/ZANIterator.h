/// `ZANIterator`: walks over the fields of a group, its sub-groups, or the listeners of a
/// connection.
///
/// Threads: an iterator belongs to the thread that uses what it walks over.
#ifndef ZANENGINE_MESSAGE_ZANITERATOR_H
#define ZANENGINE_MESSAGE_ZANITERATOR_H

#include "infra/Export.h"

/// Stands on one element after the other. While `hasNext()` is true use `current()`, then call
/// `next()`. What the iterator must not outlive, and which changes end it, tells the operation that
/// returns it; iterators are returned in a `counted_ptr<ZANIterator<T>>`.
template <class T>
class ZAN_API ZANIterator {
public:
    ZANIterator() = default;
    ZANIterator(ZANIterator const&) = default;
    ZANIterator& operator=(ZANIterator const&) = default;
    virtual ~ZANIterator() = default;

    /// Whether the iterator stands on an element.
    virtual bool hasNext() const = 0;

    /// Moves to the following element. Only while `hasNext()`.
    virtual void next() = 0;

    /// The element that the iterator stands on. Only while `hasNext()`.
    virtual T& current() = 0;
    virtual T const& current() const = 0;
};

#endif
