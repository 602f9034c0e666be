#include "server/sessions/QuickFixStore.h"

#include "server/sessions/QuickFixMessages.h"

#include <algorithm>
#include <stdexcept>

namespace zan {
namespace server {

QuickFixStore::~QuickFixStore() = default;

void QuickFixStore::begin() {
    numbers_ = store_.numbers();
    isChanged_ = false;
    usedNumber_ = false;
    failure_.clear();
    repeated_.clear();
    long long const began = store_.numberingBegan();
    if (began != began_) {
        creationTime_ =
            FIX::UtcTimeStamp(static_cast<time_t>(began / 1000), static_cast<int>(began % 1000));
        began_ = began;
    }
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
    try {
        reset();
    } catch (FIX::IOException const&) {
        // The reason is kept.
    }
    return failure_.empty();
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
void QuickFixStore::change(Action const& action) {
    isChanged_ = true;
    try {
        if (failure_.empty())
            action();
    } catch (std::exception const& error) {
        failure_ = error.what();
    }
    if (!failure_.empty())
        throw FIX::IOException(failure_);
}

// A number at the end of the range that nothing was sent under would make QuickFIX announce the
// gap under the wrong number: it gets an administrative message, which it never sends again.
void QuickFixStore::get(int first, int last, std::vector<std::string>& messages) const
    throw(FIX::IOException) {
    try {
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
    numbers_.nextOut = number;
    change([this] { store_.setNumbers(numbers_); });
}

void QuickFixStore::setNextTargetMsgSeqNum(int number) throw(FIX::IOException) {
    numbers_.nextIn = number;
    change([this] { store_.setNumbers(numbers_); });
}

void QuickFixStore::incrNextSenderMsgSeqNum() throw(FIX::IOException) {
    setNextSenderMsgSeqNum(numbers_.nextOut + 1);
    usedNumber_ = true;
}

void QuickFixStore::incrNextTargetMsgSeqNum() throw(FIX::IOException) {
    setNextTargetMsgSeqNum(numbers_.nextIn + 1);
}

FIX::UtcTimeStamp QuickFixStore::getCreationTime() const throw(FIX::IOException) {
    return creationTime_;
}

void QuickFixStore::reset() throw(FIX::IOException) {
    numbers_ = FixNumbers();
    creationTime_ = FIX::UtcTimeStamp();
    began_ = -1;
    change([this] { store_.reset(); });
}

} // namespace server
} // namespace zan
