#include "server/log/SqlBuilder.h"

#include "server/log/MessageLog.h"

#include <algorithm>

namespace zan::server {

void SqlBuilder::add(CallersSql const& callers, CallersSql::Part part) {
    auto const& tokens = callers.tokens();
    if (part.isEmpty()) {
        callers.failAt(part.first, "an expression is missing");
    }
    sql_ += '(';
    std::size_t begin = tokens[part.first].begin;
    for (std::size_t token = part.first; token + 1 < part.last; ++token) {
        if (callers.isSymbol(token + 1, '(') && callers.name(token) == "tag") {
            checkTag(callers, token);
            addPiece(callers, begin, tokens[token + 1].end);
            sql_ += "text,";
            begin = tokens[token + 1].end;
        }
    }
    addPiece(callers, begin, tokens[part.last - 1].end);
    sql_ += ')';
}

void SqlBuilder::fail(int offset, std::vector<std::string> const& culprits,
                      std::string const& reason) const {
    if (offset < 0) {
        for (std::string const& culprit : culprits) {
            failByName(culprit, reason);
        }
    }
    auto const at = static_cast<std::size_t>(std::max(offset, 0));
    Piece const* nearest = nullptr;
    for (Piece const& piece : pieces_) {
        if (!nearest || piece.begin <= at) {
            nearest = &piece;
        }
    }
    if (!nearest) {
        throw BadExpression(reason);
    }
    std::size_t const inside = std::clamp(at, nearest->begin, nearest->end) - nearest->begin;
    nearest->callers->fail(nearest->callersBegin + inside, reason);
}

void SqlBuilder::addPiece(CallersSql const& callers, std::size_t begin, std::size_t end) {
    std::size_t const at = sql_.size();
    sql_.append(callers.text(), begin, end - begin);
    pieces_.push_back({&callers, at, sql_.size(), begin});
}

// A number that stands there is checked at once; what else gives the number, when it is computed.
void SqlBuilder::checkTag(CallersSql const& callers, std::size_t token) const {
    std::size_t const number = token + 2;
    if (!callers.isSymbol(token + 3, ')') ||
        callers.tokens()[number].kind != SqlToken::Kind::Number) {
        return;
    }
    SqlToken const& digits = callers.tokens()[number];
    std::string const text = callers.text().substr(digits.begin, digits.end - digits.begin);
    if (text.find_first_not_of("0123456789") != std::string::npos ||
        text.find_first_not_of('0') == std::string::npos) {
        callers.failAt(number, "tag(N) needs a positive whole number");
    }
}

void SqlBuilder::failByName(std::string const& culprit, std::string const& reason) const {
    if (culprit.empty()) {
        return;
    }
    CallersSql const* last = nullptr;
    for (Piece const& piece : pieces_) {
        if (piece.callers == last) {
            continue;
        }
        last = piece.callers;
        for (std::size_t token = 0; token < last->tokens().size(); ++token) {
            if (last->name(token) == culprit) {
                last->failAt(token, reason);
            }
        }
    }
}

} // namespace zan::server
