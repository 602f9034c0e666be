#include "LogFixture.h"

#include "server/log/Sqlite.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace {

using logtest::TemporaryFolder;
using zan::server::Database;

/// A database with a write-ahead log and a table of numbers and texts.
class FrameWrites : public testing::Test {
protected:
    FrameWrites() : database_(folder_.file(), Database::Access::Make) {
        database_.execute("PRAGMA journal_mode=WAL");
        database_.execute("PRAGMA synchronous=NORMAL");
        database_.execute("CREATE TABLE t(id INTEGER PRIMARY KEY, text TEXT)");
    }

    void fill(int rows) {
        database_.execute("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<" +
                          std::to_string(rows) +
                          ") INSERT INTO t SELECT i, printf('%0200d', i) FROM n");
    }

    /// What a process finds that takes the folder up after this one was killed.
    Database asAfterAKill() {
        for (char const* ending : {"", "-wal"}) {
            std::filesystem::copy_file(folder_.file() + ending, folder_.file("copy") + ending,
                                       std::filesystem::copy_options::overwrite_existing);
        }
        return {folder_.file("copy"), Database::Access::Write};
    }

    TemporaryFolder folder_;
    Database database_;
};

/// How many times this process has asked the system to write.
long writesOfThisProcess() {
    std::ifstream counters("/proc/self/io");
    for (std::string name; counters >> name;) {
        long value = 0;
        counters >> value;
        if (name == "syscw:") {
            return value;
        }
    }
    return -1;
}

TEST_F(FrameWrites, WritesASmallCommitAtOnce) {
    fill(10);
    long const before = writesOfThisProcess();
    if (before < 0) {
        GTEST_SKIP() << "this system does not count writes";
    }
    for (int i = 0; i < 100; ++i) {
        database_.execute("UPDATE t SET text='" + std::to_string(i) + "' WHERE id=1");
    }
    // A few more belong to the runtime of a sanitizer. Apart they would be 200.
    EXPECT_LT(writesOfThisProcess() - before, 120);
}

TEST_F(FrameWrites, LeavesEveryCommitForTheNextProcess) {
    for (int i = 1; i <= 50; ++i) {
        database_.execute("INSERT INTO t VALUES(" + std::to_string(i) + ",'text')");
        Database copy = asAfterAKill();
        ASSERT_EQ(copy.number("SELECT count(*) FROM t"), i);
    }
}

// A transaction that does not fit into the cache writes pages into the log more than once, and in
// the end the headers of the frames anew, without their pages.
TEST_F(FrameWrites, KeepsATransactionThatWritesPagesAgain) {
    database_.execute("PRAGMA cache_size=10");
    fill(20);
    database_.execute("BEGIN");
    database_.execute("DELETE FROM t");
    fill(5000);
    for (int i = 0; i < 5; ++i) {
        database_.execute("UPDATE t SET text=printf('%0200d', id + 1) WHERE id % 7 = " +
                          std::to_string(i));
    }
    database_.execute("COMMIT");
    Database copy = asAfterAKill();
    EXPECT_EQ(copy.number("SELECT count(*) FROM t"), 5000);
    EXPECT_EQ(copy.number("SELECT sum(CAST(text AS INTEGER) - id) FROM t"),
              database_.number("SELECT count(*) FROM t WHERE id % 7 < 5"));
    EXPECT_EQ(copy.number("SELECT count(*) FROM pragma_integrity_check WHERE integrity_check='ok'"),
              1);
}

TEST_F(FrameWrites, GoesOnAfterTheLogWasMovedIntoTheFile) {
    fill(1000);
    for (int i = 0; i < 3; ++i) {
        database_.execute("PRAGMA wal_checkpoint(TRUNCATE)");
        database_.execute("UPDATE t SET text='" + std::to_string(i) + "'");
        Database copy = asAfterAKill();
        EXPECT_EQ(copy.number("SELECT count(*) FROM t WHERE text='" + std::to_string(i) + "'"),
                  1000);
    }
}

} // namespace
