#include "apps/zan/LogImport.h"

#include "server/wire/FieldText.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace zan::cli {

namespace {

using server::FixEntry;
using server::FixOrigin;
using server::FixStream;
using server::valueOf;

constexpr long entriesACommit = 5000;

int numberIn(std::string_view text) {
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

bool isAdmin(std::string_view text) {
    std::string_view const type = valueOf(text, 35);
    return type.size() == 1 && std::string_view("012345A").find(type) != std::string_view::npos;
}

bool isRepetition(std::string_view text) {
    return valueOf(text, 43) == "Y";
}

long long sendingTime(std::string const& text, long long otherwise) {
    long long const millis = millisOf(std::string(valueOf(text, 52)));
    return millis < 0 ? otherwise : millis;
}

} // namespace

LogImport::LogImport(server::MessageLog& log, std::string company, std::optional<FileStore> store)
    : log_(log), company_(std::move(company)), store_(std::move(store)) {
    log_.lock();
}

LogImport::~LogImport() {
    log_.unlock();
}

void LogImport::add(LoggedMessage const& message) {
    if (store_ && !isStoreBegun_ && message.millis >= store_->began) {
        beginStore();
    }
    int const number = numberIn(valueOf(message.text, 34));
    bool const isOut = valueOf(message.text, 49) == company_;
    bool const isIn = valueOf(message.text, 56) == company_;
    if (number == 0 || isOut == isIn) {
        ++leftOut_;
    } else if (isOut) {
        addOut(message, number);
    } else {
        addIn(message, number);
    }
    commitSometimes();
}

void LogImport::finish() {
    if (store_) {
        if (!isStoreBegun_) {
            beginStore();
        }
        addStored(store_->nextOut);
        log_.setNumbers({store_->nextOut, store_->nextIn});
    }
    log_.commit();
}

// From here on the numbering of the store holds.
void LogImport::beginStore() {
    isStoreBegun_ = true;
    log_.resetAt(store_->began);
    cameIn_.clear();
    hasIn_ = false;
}

// The messages of the store up to this number, which the message log does not have.
void LogImport::addStored(int before) {
    for (auto each = store_->sent.upper_bound(lastStored_);
         each != store_->sent.end() && each->first < before; ++each) {
        auto const& [number, text] = *each;
        append({sendingTime(text, store_->began), text},
               isAdmin(text) ? FixStream::adminOut : FixStream::appOut, FixOrigin::wire, number);
        sendNumber(number);
        lastStored_ = number;
        commitSometimes();
    }
}

void LogImport::addOut(LoggedMessage const& message, int number) {
    bool const isOfSession = isAdmin(message.text);
    if (isRepetition(message.text)) {
        append(message, isOfSession ? FixStream::adminOut : FixStream::resent, FixOrigin::again,
               number);
        return;
    }
    if (isStoreBegun_) {
        addStored(number);
        lastStored_ = std::max(lastStored_, number);
    } else if (number < log_.numbers().nextOut) {
        log_.resetAt(message.millis);
    }
    append(message, isOfSession ? FixStream::adminOut : FixStream::appOut, FixOrigin::wire, number);
    sendNumber(number);
}

void LogImport::addIn(LoggedMessage const& message, int number) {
    bool const isNew = !hasIn_ || (number >= log_.numbers().nextIn && !cameIn_.contains(number));
    if (!isNew && isRepetition(message.text)) {
        ++leftOut_;
        return;
    }
    if (!isNew) {
        // The counterparty has begun again.
        cameIn_.clear();
        hasIn_ = false;
    }
    append(message, isAdmin(message.text) ? FixStream::adminIn : FixStream::appIn, FixOrigin::wire,
           number);
    takeNumber(number, message.text);
}

void LogImport::append(LoggedMessage const& message, FixStream stream, FixOrigin origin,
                       int number) {
    FixEntry entry;
    entry.millis = message.millis;
    entry.stream = stream;
    entry.origin = origin;
    entry.seq = number;
    entry.text = message.text;
    log_.appendKept(std::move(entry));
    ++entries_;
}

void LogImport::sendNumber(int number) {
    log_.setNumbers({number + 1, log_.numbers().nextIn});
}

// The next number in is the first one that has not come.
void LogImport::takeNumber(int number, std::string const& text) {
    int next = hasIn_ ? log_.numbers().nextIn : number;
    hasIn_ = true;
    cameIn_.insert(number);
    if (valueOf(text, 35) == "4" && number <= next) {
        next = std::max(numberIn(valueOf(text, 36)), 1);
    }
    while (cameIn_.contains(next)) {
        ++next;
    }
    cameIn_.erase(cameIn_.begin(), cameIn_.lower_bound(next));
    log_.setNumbers({log_.numbers().nextOut, next});
}

void LogImport::commitSometimes() {
    if (entries_ % entriesACommit == entriesACommit - 1) {
        log_.commit();
    }
}

} // namespace zan::cli
