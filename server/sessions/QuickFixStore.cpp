#include "server/sessions/QuickFixStore.h"

#include "server/sessions/QuickFixMessages.h"
#include "server/sessions/SequenceNumbers.h"

#include <algorithm>
#include <stdexcept>

namespace zan {
namespace server {

QuickFixStore::~QuickFixStore() = default;

void QuickFixStore::begin() {
    numbers_ = store_.numbers();
    isChanged_ = false;
    isUsedUp_ = false;
    usedNumber_ = false;
    failure_.clear();
    repeated_.clear();
    fetched_ = {0, -1};
}

long QuickFixStore::append(FixEntry entry) {
    if (!failure_.empty())
        return 0;
    isChanged_ = true;
    try {
        return store_.append(std::move(entry));
    } catch (std::exception const& error) {
        failure_ = error.what();
        return 0;
    }
}

bool QuickFixStore::beginNumbering() {
    return attempt([this] {
        store_.reset();
        store_.setNumbering({clock_(), store_.numbering().asksForReset});
        numbers_ = store_.numbers();
    });
}

bool QuickFixStore::setNumbers(FixNumbers numbers) {
    return attempt([this, numbers] {
        store_.setNumbers(numbers);
        numbers_ = numbers;
    });
}

bool QuickFixStore::setNumbering(FixNumbering numbering) {
    return attempt([this, numbering] { store_.setNumbering(numbering); });
}

bool QuickFixStore::askForReset(bool on) {
    FixNumbering const numbering = store_.numbering();
    return numbering.asksForReset == on || setNumbering({numbering.began, on});
}

bool QuickFixStore::commit(std::vector<FixEntry>& entries) {
    if (!isChanged_ && failure_.empty())
        return true;
    try {
        if (failure_.empty())
            entries = store_.commit();
    } catch (std::exception const& error) {
        failure_ = error.what();
    }
    return failure_.empty();
}

void QuickFixStore::rollBack() {
    store_.rollBack();
}

template <typename Action>
bool QuickFixStore::attempt(Action const& action) {
    isChanged_ = true;
    try {
        if (failure_.empty())
            action();
    } catch (std::exception const& error) {
        failure_ = error.what();
    }
    return failure_.empty();
}

template <typename Action>
void QuickFixStore::change(Action const& action) {
    if (held_ != Held::both && !attempt(action))
        throw FIX::IOException(failure_);
}

int QuickFixStore::fetch(NumberRange range, int from, std::size_t mostBytes) {
    repeated_.clear();
    try {
        if (from <= range.last)
            repeated_ = store_.sent(from, range.last, mostBytes);
    } catch (std::exception const& error) {
        failure_ = error.what();
        throw FIX::IOException(failure_);
    }
    std::size_t bytes = 0;
    for (FixEntry const& entry : repeated_)
        bytes += entry.text.size();
    fetched_ = {range.first, bytes < mostBytes ? range.last : repeated_.back().seq};
    return fetched_.last;
}

int QuickFixStore::dropTail() {
    while (!repeated_.empty() && isAdminText(repeated_.back().text))
        repeated_.pop_back();
    fetched_.last = repeated_.empty() ? 0 : repeated_.back().seq;
    return fetched_.last;
}

// A number at the end of the range that nothing was sent under would make QuickFIX announce the
// gap under the wrong number: it gets an administrative message, which it never sends again.
void QuickFixStore::get(int first, int last, std::vector<std::string>& messages) const
    throw(FIX::IOException) {
    try {
        if (first != fetched_.first || last != fetched_.last)
            repeated_ = store_.sent(first, last);
        for (FixEntry const& entry : repeated_)
            messages.push_back(headOf(entry.text));
        if (first <= last && (repeated_.empty() || repeated_.back().seq != last))
            messages.push_back(placeholder(last));
    } catch (std::exception const& error) {
        failure_ = error.what();
        throw FIX::IOException(failure_);
    }
}

std::string QuickFixStore::repetition(int number, std::string const& head) const {
    auto const found =
        std::lower_bound(repeated_.begin(), repeated_.end(), number,
                         [](FixEntry const& entry, int wanted) { return entry.seq < wanted; });
    return found != repeated_.end() && found->seq == number ? withBodyOf(found->text, head) : head;
}

void QuickFixStore::setNextSenderMsgSeqNum(int number) throw(FIX::IOException) {
    change([this, number] {
        numbers_.nextOut = number;
        store_.setNumbers(numbers_);
    });
}

void QuickFixStore::setNextTargetMsgSeqNum(int number) throw(FIX::IOException) {
    if (held_ == Held::incoming)
        return;
    change([this, number] {
        numbers_.nextIn = number;
        store_.setNumbers(numbers_);
    });
}

void QuickFixStore::incrNextSenderMsgSeqNum() throw(FIX::IOException) {
    change([this] {
        isUsedUp_ = numbers_.nextOut > largestSequenceNumber;
        if (isUsedUp_)
            throw std::runtime_error("the sequence numbers up to " +
                                     std::to_string(largestSequenceNumber) +
                                     " are used up; a reset would be right");
    });
    setNextSenderMsgSeqNum(numbers_.nextOut + 1);
    usedNumber_ = true;
}

void QuickFixStore::incrNextTargetMsgSeqNum() throw(FIX::IOException) {
    setNextTargetMsgSeqNum(numbers_.nextIn + 1);
}

void QuickFixStore::reset() throw(FIX::IOException) {
    if (held_ != Held::both && !beginNumbering())
        throw FIX::IOException(failure_);
}

} // namespace server
} // namespace zan
