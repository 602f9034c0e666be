#include "apps/zan/QuickFixFiles.h"

#include "apps/zan/InputLines.h"
#include "infra/InfraException.h"
#include "infra/Time.h"
#include "infra/WrongConfigurationException.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <sstream>

namespace zan::cli {

namespace {

[[noreturn]] void refuse(std::string const& file, std::string const& reason) {
    throw WrongConfigurationException(file + ": " + reason);
}

std::string contentOf(std::string const& file) {
    std::ifstream input(file, std::ios::binary);
    if (!input) {
        refuse(file, "cannot be read; the four files .seqnums, .session, .header and .body of a "
                     "store would be right");
    }
    return {std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>()};
}

void readNumbers(std::string const& file, FileStore& store) {
    std::istringstream text(contentOf(file));
    char colon = 0;
    if (!(text >> store.nextOut >> colon >> store.nextIn) || colon != ':' || store.nextOut < 1 ||
        store.nextIn < 1) {
        refuse(file, "holds no sequence numbers; a line such as 0000000005 : 0000000007 would be "
                     "right");
    }
}

void readBeginning(std::string const& file, FileStore& store) {
    std::string time;
    std::istringstream(contentOf(file)) >> time;
    store.began = millisOf(time);
    if (store.began < 0) {
        refuse(file, "holds no time; one such as 20261121-09:30:00 would be right");
    }
}

void readSent(std::string const& prefix, FileStore& store) {
    std::string const body = contentOf(prefix + ".body");
    std::string const file = prefix + ".header";
    std::istringstream header(contentOf(file));
    char comma = 0;
    int number = 0;
    for (std::size_t offset = 0, size = 0; header >> number >> comma >> offset >> comma >> size;) {
        if (offset > body.size() || size > body.size() - offset) {
            refuse(file, "message " + std::to_string(number) +
                             " lies behind the end of the .body; both files of one store, as they "
                             "were when it was closed, would be right");
        }
        store.sent[number] = body.substr(offset, size);
    }
    if (!header.eof()) {
        refuse(file, "holds what is no entry; entries such as 1,0,113 would be right");
    }
}

// Where the message begins in a line of the log; the end of the line when it does not begin there.
std::size_t messageAt(std::string const& line) {
    constexpr std::string_view before = " : ";
    std::size_t const at = line.find(before);
    bool const isEntry = at != std::string::npos && millisOf(line.substr(0, at)) >= 0;
    return isEntry ? at + before.size() : line.size();
}

} // namespace

long long millisOf(std::string const& time) {
    constexpr std::size_t withMillis = 21;
    std::size_t const digits = time.find_first_not_of("0123456789.:-");
    if (digits != std::string::npos) {
        return -1;
    }
    try {
        // Finer fractions than milliseconds are cut off, coarser ones filled up.
        std::string text = time.substr(0, withMillis);
        if (text.find('.') != std::string::npos) {
            text.resize(withMillis, '0');
        }
        return infra::Time::fromString(text).getMillis();
    } catch (InfraException const&) {
        return -1;
    }
}

FileStore readFileStore(std::string const& prefix) {
    FileStore store;
    readNumbers(prefix + ".seqnums", store);
    readBeginning(prefix + ".session", store);
    readSent(prefix, store);
    return store;
}

void readMessageLog(std::string const& file, Interrupt const& interrupt,
                    std::function<void(LoggedMessage const&)> const& sink) {
    InputLines lines(file, interrupt);
    LoggedMessage message;
    for (std::string line; lines.next(line);) {
        interrupt.check();
        std::size_t const at = messageAt(line);
        if (at < line.size()) {
            if (!message.text.empty()) {
                sink(message);
            }
            message = {millisOf(line.substr(0, line.find(' '))), line.substr(at)};
        } else if (!message.text.empty()) {
            // The text of a message may hold the ends of lines.
            message.text += '\n' + line;
        } else if (!line.empty()) {
            refuse(file + ":" + std::to_string(lines.number()),
                   "no entry of a message log; 20261121-09:30:00.000 : 8=FIX... would be right");
        }
    }
    if (!message.text.empty()) {
        sink(message);
    }
}

} // namespace zan::cli
