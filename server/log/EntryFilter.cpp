#include "server/log/ExpressionGuard.h"
#include "server/log/LogClock.h"
#include "server/log/LogRow.h"
#include "server/log/MessageLog.h"

#include <optional>

namespace zan::server {

namespace {

constexpr std::chrono::seconds longestTime{10};

// One entry, in the types that it has in the log.
constexpr std::string_view entryAsRow =
    "SELECT CAST(?1 AS INTEGER) AS id,CAST(?2 AS TEXT) AS time,CAST(?3 AS INTEGER) AS stream,"
    "CAST(?4 AS TEXT) AS type,CAST(?5 AS INTEGER) AS seq,CAST(tag(?6,49) AS TEXT) AS sender,"
    "CAST(tag(?6,56) AS TEXT) AS target,seen(?6) AS text,seen(?7) AS note";

} // namespace

class EntryFilter::Impl {
public:
    explicit Impl(std::string const& expression) : where_(expression) {
        if (where_.isBlank()) {
            return;
        }
        sql_.add("SELECT 1 FROM (" + std::string(entryAsRow) + ") AS entries WHERE ");
        sql_.add(where_, where_.whole());
        database_.emplace(Database::inMemory());
        guard_.emplace(*database_, longestTime);
        statement_.emplace(guard_->prepare(sql_));
        matches({});
    }

    bool matches(FixEntry const& entry) {
        if (!statement_) {
            return true;
        }
        StatementUse const use(*statement_);
        statement_->bind(1, entry.id)
            .bindText(2, times_.text(entry.millis))
            .bind(3, static_cast<std::int64_t>(entry.stream))
            .bindText(4, typeOf(entry.text))
            .bind(5, entry.seq)
            .bindText(6, entry.text)
            .bindText(7, entry.note);
        ExpressionGuard::Clock::duration spent{};
        return guard_->step(*statement_, sql_, spent);
    }

private:
    CallersSql const where_;
    SqlBuilder sql_;
    TimeWriter times_;
    std::optional<Database> database_;
    std::optional<ExpressionGuard> guard_;
    std::optional<Statement> statement_;
};

EntryFilter::EntryFilter(std::string const& expression)
    : impl_(std::make_unique<Impl>(expression)) {}

EntryFilter::~EntryFilter() = default;

bool EntryFilter::matches(FixEntry const& entry) {
    return impl_->matches(entry);
}

} // namespace zan::server
