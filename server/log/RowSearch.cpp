#include "server/log/RowSearch.h"

namespace zan::server {

namespace {

// What expressions see, under the names that they have for it.
std::string sourceOf(RowSource source) {
    std::string const columns = "id,time,stream,type,seq,CAST(tag(text,49) AS TEXT) AS sender,"
                                "CAST(tag(text,56) AS TEXT) AS target,seen(text) AS text,"
                                "seen(note) AS note FROM ";
    switch (source) {
    case RowSource::Messages:
        return "SELECT " + columns + "messages WHERE length(text)>0 AND " + std::string(shownRows);
    case RowSource::Rows:
        return "SELECT " + columns + "messages WHERE " + std::string(shownRows);
    case RowSource::Audit:
        break;
    }
    return "SELECT entry,edited,user,action," + columns + "audit";
}

std::string listOf(std::vector<int> const& ids) {
    std::string list;
    for (int const id : ids) {
        list += (list.empty() ? "" : ",") + std::to_string(id);
    }
    return list;
}

} // namespace

RowSearch::RowSearch(ExpressionGuard& guard, SearchTerms const& terms, CallersSql const* callers,
                     std::vector<CallersSql::Part> const& values)
    : guard_(guard), key_(terms.source == RowSource::Audit ? "entry" : "id"), where_(terms.where),
      orderBy_(terms.orderBy) {
    sql_.add("SELECT " + key_);
    for (CallersSql::Part const& value : values) {
        sql_.add(",");
        sql_.add(*callers, value);
    }
    sql_.add(" FROM (" + sourceOf(terms.source) + ") AS entries WHERE ");
    addConditions(terms);
    addOrder(terms.newestFirst);
    statement_.emplace(guard_.prepare(sql_));
    statement_->bind(1, terms.ids.first).bind(2, terms.ids.second);
}

bool RowSearch::next() {
    return guard_.step(*statement_, sql_, spent_);
}

std::string_view RowSearch::value(std::size_t index) const {
    return statement_->text(static_cast<int>(index) + 1);
}

void RowSearch::addConditions(SearchTerms const& terms) {
    sql_.add(key_ + " BETWEEN ?1 AND ?2");
    if (terms.stream != allStreams) {
        sql_.add(" AND stream=" + std::to_string(terms.stream));
    }
    if (terms.idSet) {
        sql_.add(" AND id IN (" + listOf(*terms.idSet) + ")");
    }
    if (!where_.isBlank()) {
        sql_.add(" AND ");
        sql_.add(where_, where_.whole());
    }
}

void RowSearch::addOrder(bool newestFirst) {
    sql_.add(" ORDER BY ");
    if (!orderBy_.isBlank()) {
        for (CallersSql::Part const& part : orderBy_.partsAtCommas()) {
            addOrderTerm(part, newestFirst);
            sql_.add(",");
        }
    }
    sql_.add(key_ + (newestFirst ? " DESC" : ""));
}

// Direction and place of the nulls stand behind the expression, both may be turned round.
void RowSearch::addOrderTerm(CallersSql::Part part, bool newestFirst) {
    auto const endsWith = [&](std::string_view word) {
        return part.last > part.first && orderBy_.name(part.last - 1) == word &&
               orderBy_.tokens()[part.last - 1].kind == SqlToken::Kind::Name;
    };
    std::string nulls;
    if (bool const isFirst = endsWith("first"); isFirst || endsWith("last")) {
        --part.last;
        if (!endsWith("nulls")) {
            orderBy_.failAt(part.last, "NULLS FIRST or NULLS LAST would be right");
        }
        --part.last;
        nulls = isFirst != newestFirst ? " NULLS FIRST" : " NULLS LAST";
    }
    bool const isDescending = endsWith("desc");
    if (isDescending || endsWith("asc")) {
        --part.last;
    }
    if (part.last == part.first + 1 &&
        orderBy_.tokens()[part.first].kind == SqlToken::Kind::Number) {
        orderBy_.failAt(part.first, "a number orders nothing, a column would be right");
    }
    sql_.add(orderBy_, part);
    sql_.add((isDescending != newestFirst ? " DESC" : " ASC") + nulls);
}

} // namespace zan::server
