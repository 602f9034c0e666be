#include "crash/Evidence.h"

#include "engine/ZANEngineProxy.h"
#include "infra/Url.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

namespace crash {

namespace {

std::vector<std::string> linesOf(std::string const& path) {
    std::ifstream file(path, std::ios::binary);
    std::string const text((std::istreambuf_iterator<char>(file)), {});
    std::vector<std::string> lines;
    std::size_t begin = 0;
    for (std::size_t end; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1) {
        lines.push_back(text.substr(begin, end - begin));
    }
    return lines;
}

std::vector<std::string> fieldsOf(std::string const& message) {
    std::vector<std::string> fields;
    std::istringstream text(message);
    for (std::string field; std::getline(text, field, '|');) {
        fields.push_back(field);
    }
    return fields;
}

} // namespace

std::string fieldOf(std::string const& message, int tag) {
    std::string const key = "|" + std::to_string(tag) + "=";
    std::size_t const at = message.find(key);
    if (at == std::string::npos) {
        return {};
    }
    std::size_t const begin = at + key.size();
    return message.substr(begin, message.find('|', begin) - begin);
}

int numberOf(std::string const& message) {
    std::string const number = fieldOf(message, 34);
    return number.empty() ? 0 : std::stoi(number);
}

std::vector<std::string> bodyOf(std::string const& message) {
    static std::set<std::string> const sessions = {"8",  "9",  "10", "34", "35", "43",
                                                   "49", "52", "56", "97", "122"};
    std::vector<std::string> fields = fieldsOf(message);
    std::erase_if(fields, [](std::string const& field) {
        return sessions.contains(field.substr(0, field.find('=')));
    });
    std::ranges::sort(fields);
    return fields;
}

Acknowledged readAcknowledged(std::string const& path) {
    Acknowledged all;
    for (std::string const& line : linesOf(path)) {
        std::istringstream words(line);
        std::string kind;
        words >> kind;
        if (kind == "one") {
            Acknowledged::One one{};
            words >> one.id >> one.order;
            all.ones.push_back(one);
        } else if (kind == "posted") {
            Acknowledged::One post{};
            words >> post.id >> post.order;
            all.posts.push_back(post);
        } else if (kind == "edited" || kind == "removed") {
            long id = 0;
            words >> id;
            (kind == "edited" ? all.edited : all.removed).insert(id);
        } else {
            all.batches.emplace_back(std::istream_iterator<std::string>(words),
                                     std::istream_iterator<std::string>());
        }
    }
    return all;
}

Consumed readConsumed(std::string const& path) {
    Consumed all;
    for (std::string const& line : linesOf(path)) {
        std::istringstream words(line);
        std::string kind;
        Consumed::Event event{};
        words >> kind >> event.id >> event.stream >> event.isAgain;
        (kind == "got" ? all.events : all.kept).push_back(event);
    }
    return all;
}

namespace {

// A Logon with a reset is written down before the counterparty's numbers begin anew, and before it
// is answered: what it sends in between has an old number, or one that belongs to its answer.
void forgetAtReset(Journal& journal, std::vector<std::string> const* kind) {
    std::vector<std::string> const& sent = journal.sent;
    if (kind == &journal.logons && fieldOf(journal.logons.back(), 141) == "Y") {
        journal.forgotten = sent.size();
        journal.isForgetting = true;
    } else if (kind == &journal.sent && journal.isForgetting) {
        int const number = numberOf(sent.back());
        int const before = sent.size() < 2 ? 0 : numberOf(sent[sent.size() - 2]);
        bool const isBeforeAnswer =
            number == 1 || (journal.isUnanswered ? number == before + 1 : number > before);
        journal.isUnanswered = isBeforeAnswer && (number == 1 || journal.isUnanswered);
        journal.isForgetting = isBeforeAnswer;
        journal.forgotten = isBeforeAnswer ? sent.size() : journal.forgotten;
    }
}

} // namespace

Journal readJournal(std::string const& path) {
    Journal journal;
    std::map<std::string, std::vector<std::string>*> const kinds = {{"raw", &journal.raw},
                                                                    {"taken", &journal.taken},
                                                                    {"sent", &journal.sent},
                                                                    {"logon", &journal.logons},
                                                                    {"event", &journal.events}};
    for (std::string const& line : linesOf(path)) {
        std::size_t const blank = line.find(' ');
        // Texts of events may have several lines.
        auto const kind = kinds.find(line.substr(0, blank));
        if (kind != kinds.end()) {
            kind->second->push_back(line.substr(blank + 1));
            forgetAtReset(journal, kind->second);
        }
    }
    return journal;
}

std::vector<LogRow> readLog(std::string const& sessionFile, std::string const& dataFolder) {
    ZANEngineProxy::initialize(Url("embedded:" + sessionFile + "?data=" + dataFolder));
    std::vector<std::vector<std::string>> table;
    ZANEngineProxy::getInstance().retrieveMessageLogData(
        UserTicket("crash", ""), "C", -1, "id,stream,type,seq,text,note", "", "", table);
    ZANEngineProxy::uninitialize();
    std::vector<LogRow> rows;
    for (std::size_t i = 1; i < table.size(); ++i) {
        std::vector<std::string>& row = table[i];
        std::ranges::replace(row.at(4), '\x01', '|');
        rows.push_back({std::stol(row[0]), std::stoi(row[1]), row[2], std::stoi(row[3]),
                        std::move(row[4]), std::move(row.at(5))});
    }
    return rows;
}

} // namespace crash
