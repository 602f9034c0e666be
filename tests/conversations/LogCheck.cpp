#include "conversations/LogCheck.h"

#include "conversations/Script.h"

#include <algorithm>
#include <utility>

namespace conversations {

namespace {

struct Row {
    int id;
    int stream;
    std::string text;
    std::string note;
    bool isTaken = false;
};

std::vector<Row> messagesOf(std::vector<std::vector<std::string>> const& rows) {
    std::vector<Row> messages;
    for (auto const& row : rows) {
        if (!row.at(2).empty()) {
            messages.push_back({std::stoi(row[0]), std::stoi(row[1]), wired(row[2]), row.at(3)});
        }
    }
    return messages;
}

int streamOf(Exchange const& exchange) {
    bool const isOut = exchange.kind == Exchange::Kind::fromEngine;
    if (isAdmin(exchange.text)) {
        return isOut ? 1 : 0;
    }
    bool const isAgain = valueOf(exchange.text, "43") == "Y" || valueOf(exchange.text, "97") == "Y";
    return !isOut ? 2 : isAgain ? 4 : 3;
}

std::string described(Exchange const& exchange) {
    return readable(exchange.text) + "\n  should be in stream " +
           std::to_string(streamOf(exchange)) + " of the log";
}

// `lastOut` is the row of what the engine sent before.
std::string take(std::vector<Row>& rows, Exchange const& exchange, int& lastOut) {
    auto const row = std::ranges::find_if(
        rows, [&](Row const& each) { return !each.isTaken && each.text == exchange.text; });
    if (row == rows.end()) {
        return exchange.isLogged ? described(exchange) + ", and is not there" : "";
    }
    if (!exchange.isLogged) {
        return readable(exchange.text) + "\n  should not be in the log";
    }
    row->isTaken = true;
    if (exchange.kind == Exchange::Kind::fromEngine && row->id < std::exchange(lastOut, row->id)) {
        return described(exchange) + " behind what was sent before it";
    }
    if (row->stream != streamOf(exchange)) {
        return described(exchange) + ", and is in stream " + std::to_string(row->stream);
    }
    bool const isNoteRight =
        exchange.note.empty() ? row->note.empty() : row->note.find(exchange.note) != row->note.npos;
    return isNoteRight ? ""
                       : described(exchange) + " with the note \"" + exchange.note +
                             "\", but has \"" + row->note + "\"";
}

// Whatever else the log holds are the bytes that were no messages.
std::string bytesDifference(std::vector<Exchange> const& exchanges, std::vector<Row> const& rows) {
    std::string sent;
    for (Exchange const& each : exchanges) {
        sent += each.kind == Exchange::Kind::bytesFromPeer && each.isLogged ? each.text : "";
    }
    std::string logged;
    for (Row const& each : rows) {
        if (!each.isTaken) {
            logged += each.text;
            if (each.note.empty()) {
                return readable(each.text) + "\n  is in the log, and was not on the wire";
            }
        }
    }
    return sent == logged ? ""
                          : "beside the messages the log holds " + readable(logged) +
                                "\n  where the bytes are " + readable(sent);
}

} // namespace

std::string logDifference(std::vector<Exchange> const& exchanges,
                          std::vector<std::vector<std::string>> const& rows) {
    std::vector<Row> messages = messagesOf(rows);
    std::string differences;
    int lastOut = 0;
    // What has to be there first, so that what must not be there is looked for in the rest.
    for (bool const isLogged : {true, false}) {
        for (Exchange const& each : exchanges) {
            bool const isMessage = each.kind != Exchange::Kind::bytesFromPeer;
            std::string const difference =
                isMessage && each.isLogged == isLogged ? take(messages, each, lastOut) : "";
            differences += difference.empty() ? "" : difference + "\n";
        }
    }
    return differences + bytesDifference(exchanges, messages);
}

} // namespace conversations
