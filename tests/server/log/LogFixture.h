/// A log in a folder of its own, and short ways to fill and to ask it.
#ifndef ZANENGINE_TESTS_SERVER_LOG_LOGFIXTURE_H
#define ZANENGINE_TESTS_SERVER_LOG_LOGFIXTURE_H

#include "server/log/MessageLog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace logtest {

using namespace zan::server;

/// A folder that goes with the object.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "zan-log-test-XXXXXX").string();
        path_ = mkdtemp(pattern.data());
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;

    std::string file(std::string const& name = "test.log") const { return path_ + "/" + name; }
    std::string const& path() const { return path_; }

private:
    std::string path_;
};

/// A message of the wire from a text with bars.
inline std::string wire(std::string text) {
    std::replace(text.begin(), text.end(), '|', '\x01');
    return text;
}

inline FixEntry entry(FixStream stream, int seq, std::string const& text,
                      FixOrigin origin = FixOrigin::wire) {
    FixEntry made;
    made.stream = stream;
    made.origin = origin;
    made.seq = seq;
    made.text = wire(text);
    return made;
}

inline bool contains(std::string const& text, std::string const& part) {
    return text.find(part) != std::string::npos;
}

/// The turn of a log, for one scope.
class Turn {
public:
    explicit Turn(MessageLog& log) : log_(log) { log_.lock(); }
    ~Turn() { log_.unlock(); }
    Turn(Turn const&) = delete;
    Turn& operator=(Turn const&) = delete;

private:
    MessageLog& log_;
};

class LogTest : public testing::Test {
protected:
    LogTest() { open(); }

    void open() {
        log_.reset();
        settings_.file = folder_.file();
        log_ = std::make_unique<MessageLog>(settings_);
    }

    MessageLog& log() { return *log_; }

    /// Adds one entry in a transaction of its own.
    long add(FixEntry const& added) {
        Turn const turn(log());
        long const id = log().append(added);
        log().commit();
        return id;
    }

    /// An application message that we send under the next number.
    long send(std::string const& body, FixStream stream = FixStream::appOut) {
        Turn const turn(log());
        FixNumbers numbers = log().numbers();
        long const id = log().append(entry(stream, numbers.nextOut,
                                           "8=FIX.4.4|35=D|34=" + std::to_string(numbers.nextOut) +
                                               "|49=ME|56=YOU|" + body));
        ++numbers.nextOut;
        log().setNumbers(numbers);
        log().commit();
        return id;
    }

    /// An application message that comes in under the next number.
    long receive(std::string const& body, std::string const& type = "8") {
        Turn const turn(log());
        FixNumbers numbers = log().numbers();
        long const id =
            log().append(entry(FixStream::appIn, numbers.nextIn,
                               "8=FIX.4.4|35=" + type + "|34=" + std::to_string(numbers.nextIn) +
                                   "|49=YOU|56=ME|" + body));
        ++numbers.nextIn;
        log().setNumbers(numbers);
        log().commit();
        return id;
    }

    std::vector<FixEntry> read(LogQuery const& query = {}) {
        std::vector<FixEntry> entries;
        log().read(query, [&](FixEntry&& read) { entries.push_back(std::move(read)); });
        return entries;
    }

    std::vector<long> readIds(LogQuery const& query = {}) {
        std::vector<long> ids;
        log().read(query, [&](FixEntry&& read) { ids.push_back(read.id); });
        return ids;
    }

    std::vector<int> sentNumbers(int first, int last) {
        Turn const turn(log());
        std::vector<int> numbers;
        for (FixEntry const& sent : log().sent(first, last)) {
            numbers.push_back(sent.seq);
        }
        return numbers;
    }

    LogTable table(std::string const& columns, std::string const& where = "",
                   std::string const& orderBy = "", int stream = -1) {
        LogTable rows;
        log().readTable(stream, columns, where, orderBy, rows);
        return rows;
    }

    TemporaryFolder folder_;
    LogSettings settings_;
    std::unique_ptr<MessageLog> log_;
};

inline void PrintTo(FixNumbers const& numbers, std::ostream* out) {
    *out << numbers.nextOut << '/' << numbers.nextIn;
}

} // namespace logtest

namespace zan::server {

inline bool operator==(FixNumbers const& left, FixNumbers const& right) {
    return left.nextOut == right.nextOut && left.nextIn == right.nextIn;
}

} // namespace zan::server

#endif
