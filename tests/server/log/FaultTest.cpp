// Files that are no logs, of other versions, or damaged; folders and disks that take nothing.
#include "server/log/LogFixture.h"

#include "infra/WrongConfigurationException.h"
#include "server/log/Sqlite.h"
#include "support/ChildProcess.h"

#include <csignal>
#include <fstream>
#include <functional>
#include <iterator>
#include <thread>

#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace logtest;

using Ids = std::vector<long>;

void write(std::string const& file, std::string const& content) {
    std::ofstream(file, std::ios::binary | std::ios::trunc) << content;
}

std::string contentOf(std::string const& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// Both kinds, with the kind before the text.
std::string complaintOfOpening(std::string const& file) {
    try {
        MessageLog const log(LogSettings{file});
    } catch (WrongConfigurationException const& wrong) {
        return std::string("wrong configuration: ") + wrong.what();
    } catch (LogFailure const& failure) {
        return std::string("failure: ") + failure.what();
    }
    return "no complaint";
}

std::string complaintOf(std::function<void()> const& work) {
    try {
        work();
    } catch (LogFailure const& failure) {
        return failure.what();
    }
    return "no complaint";
}

// Runs in a process of its own, because limits and users are a whole process's. The work returns
// what is wrong, or nothing.
std::string inOtherProcess(std::function<std::string()> const& work) {
    int ends[2];
    if (pipe(ends) != 0) {
        return "no pipe";
    }
    pid_t const child = fork();
    if (child == 0) {
        std::string result;
        try {
            result = work();
        } catch (std::exception const& error) {
            result = error.what();
        }
        [[maybe_unused]] ssize_t const written = ::write(ends[1], result.data(), result.size());
        _exit(0);
    }
    close(ends[1]);
    std::string result;
    char buffer[4096];
    for (ssize_t size = 0; (size = ::read(ends[0], buffer, sizeof(buffer))) > 0;) {
        result.append(buffer, static_cast<std::size_t>(size));
    }
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? result : "the process died";
}

TEST(OpeningALog, RefusesAFileOfAnotherKindAndLeavesItAlone) {
    TemporaryFolder const folder;
    std::string const content = "#!/bin/sh\necho no log\n" + std::string(5000, '#');
    write(folder.file(), content);
    std::string const complained = complaintOfOpening(folder.file());
    EXPECT_TRUE(contains(complained, "wrong configuration: " + folder.file() +
                                         ": is no message log, but a file of another kind"))
        << complained;
    EXPECT_EQ(contentOf(folder.file()), content);
}

TEST(OpeningALog, RefusesTheDatabaseOfAnotherProgramAndLeavesItAlone) {
    TemporaryFolder const folder;
    {
        Database other(folder.file(), Database::Access::Make);
        other.execute("CREATE TABLE recipes(name TEXT)");
    }
    std::string const content = contentOf(folder.file());
    std::string const complained = complaintOfOpening(folder.file());
    EXPECT_TRUE(contains(complained, "wrong configuration: ") &&
                contains(complained, "is the database of another program"))
        << complained;
    EXPECT_EQ(contentOf(folder.file()), content);
}

TEST(OpeningALog, RefusesTheFileOfANewerVersionAndLeavesItAlone) {
    TemporaryFolder const folder;
    { MessageLog const log(LogSettings{folder.file()}); }
    {
        Database newer(folder.file(), Database::Access::Write);
        newer.execute("PRAGMA user_version=99");
    }
    std::string const content = contentOf(folder.file());
    std::string const complained = complaintOfOpening(folder.file());
    EXPECT_TRUE(contains(complained,
                         "was written by a newer version: its layout is 99, and this version knows "
                         "layouts up to 3; the newer version, or another data folder, would be "
                         "right"))
        << complained;
    EXPECT_EQ(contentOf(folder.file()), content);
}

TEST(OpeningALog, MakesALogOfAnEmptyFile) {
    TemporaryFolder const folder;
    write(folder.file(), "");
    EXPECT_EQ(complaintOfOpening(folder.file()), "no complaint");
}

TEST(OpeningALog, TellsThatTheFolderIsMissing) {
    TemporaryFolder const folder;
    std::string const complained = complaintOfOpening(folder.path() + "/missing/test.log");
    EXPECT_TRUE(contains(complained, "failure: " + folder.path() +
                                         "/missing/test.log: the folder cannot be "
                                         "written (No such file or directory)"))
        << complained;
}

TEST(OpeningALog, TellsThatTheFolderCannotBeWritten) {
    TemporaryFolder const folder;
    chmod(folder.path().c_str(), 0555);
    std::string const complained = inOtherProcess([&] {
        if (geteuid() == 0 && seteuid(65534) != 0) {
            return std::string("no other user");
        }
        return complaintOfOpening(folder.file());
    });
    EXPECT_TRUE(contains(complained, "failure: " + folder.file()) &&
                contains(complained, "the folder cannot be written (Permission denied)"))
        << complained;
}

TEST(OpeningALog, RefusesTheFileOfAnotherUserThatOthersMayRead) {
    TemporaryFolder const folder;
    { MessageLog const log(LogSettings{folder.file()}); }
    chmod(folder.path().c_str(), 0555);
    chmod(folder.file().c_str(), 0444);
    std::string const complained = inOtherProcess([&] {
        if (geteuid() == 0 && seteuid(65534) != 0) {
            return std::string("no other user");
        }
        return complaintOfOpening(folder.file());
    });
    EXPECT_TRUE(contains(complained, "wrong configuration: " + folder.file() +
                                         ": others have rights to it, which cannot be taken away"))
        << complained;
    chmod(folder.path().c_str(), 0755);
}

char const* const logOfAnother = "ZAN_TEST_LOG_OF_ANOTHER_PROCESS";

// Run by the next test, in a process that inherits nothing.
TEST(OtherProcess, DISABLED_OpensTheLog) {
    std::printf("opened: %s\n", complaintOfOpening(std::getenv(logOfAnother)).c_str());
    std::fflush(stdout);
}

TEST(OpeningALog, IsRefusedWhileAnotherProcessHasIt) {
    TemporaryFolder const folder;
    MessageLog const log(LogSettings{folder.file()});
    setenv(logOfAnother, folder.file().c_str(), 1);
    ChildProcess other("/proc/self/exe", {"--gtest_also_run_disabled_tests",
                                          "--gtest_filter=OtherProcess.DISABLED_OpensTheLog"});
    std::string const line = other.waitForLine("opened: ");
    EXPECT_TRUE(
        contains(line, "failure: " + folder.file() + ": the file is in use by another process"))
        << line;
}

TEST(OlderLog, IsBroughtUpWithAllThatItHolds) {
    TemporaryFolder const folder;
    {
        MessageLog log(LogSettings{folder.file()});
        log.lock();
        for (int seq = 1; seq <= 3; ++seq) {
            log.append(entry(FixStream::appOut, seq, "35=D|11=A|"));
            log.setNumbers({seq + 1, 1});
        }
        log.commit();
        log.unlock();
        log.setMark("desk", FixStream::appOut, 2);
    }
    {
        Database older(folder.file(), Database::Access::Write);
        older.execute("DROP TABLE audit; ALTER TABLE messages DROP COLUMN wire;"
                      "ALTER TABLE messages DROP COLUMN hidden;"
                      "ALTER TABLE marks DROP COLUMN checksum;"
                      "ALTER TABLE meta DROP COLUMN checksum; PRAGMA user_version=1");
    }
    MessageLog log(LogSettings{folder.file()});
    EXPECT_EQ(log.numbers(), (FixNumbers{4, 1}));
    EXPECT_EQ(log.mark("desk", FixStream::appOut), 2);
    EXPECT_EQ(log.ids(-1, false), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(log.update(-1, "note = 'edited'", "id = 1", "ann"), 1);
    EXPECT_EQ(log.remove(-1, "id = 2", "ann"), 1);
    EXPECT_EQ(log.ids(-1, false), (std::vector<int>{1, 3}));
}

TEST(OlderLog, StaysAsItIsWhenItCannotBeBroughtUp) {
    TemporaryFolder const folder;
    { MessageLog const log(LogSettings{folder.file()}); }
    {
        Database odd(folder.file(), Database::Access::Write);
        odd.execute("PRAGMA user_version=1");
    }
    EXPECT_TRUE(contains(complaintOfOpening(folder.file()), "duplicate column"));
    Database odd(folder.file(), Database::Access::Write);
    EXPECT_EQ(odd.number("PRAGMA user_version"), 1);
}

class DamagedLog : public LogTest {
protected:
    void damage(std::string const& sql) {
        log_.reset();
        Database(folder_.file(), Database::Access::Write).execute(sql);
    }

    // Closed, a log lies in its file alone.
    void overwrite(std::string const& what, std::string const& with) {
        log_.reset();
        std::string content = contentOf(folder_.file());
        std::size_t const at = content.find(what);
        ASSERT_NE(at, std::string::npos);
        content.replace(at, with.size(), with);
        write(folder_.file(), content);
    }
};

TEST_F(DamagedLog, TellsWhichRowHasAFlippedByte) {
    send("11=A|58=first|");
    send("11=B|58=second|");
    send("11=C|58=third|");
    overwrite("second", "sEcond");
    open();
    std::string const expected =
        folder_.file() + ": the row with id 2 is damaged: its checksum does not fit what it holds";
    EXPECT_EQ(complaintOf([&] { read(); }), expected);
    EXPECT_EQ(complaintOf([&] { table("id"); }), expected);
    EXPECT_EQ(complaintOf([&] { log().readChain({2}, {}, false, [](FixEntry&&) {}); }), expected);
    EXPECT_EQ(complaintOf([&] { log().remove(-1, "id = 2", "ann"); }), expected);
    LogQuery others;
    others.idSet = std::vector<int>{1, 3};
    EXPECT_EQ(readIds(others), (Ids{1, 3}));
    EXPECT_EQ(send("11=D|"), 4);
}

// A session that was told of it with each resend request would never go on.
TEST_F(DamagedLog, LeavesADamagedRowOutOfWhatWasSent) {
    send("11=A|");
    send("11=B|58=second|");
    send("11=C|");
    overwrite("second", "sEcond");
    open();
    EXPECT_EQ(sentNumbers(1, 3), (std::vector<int>{1, 3}));
}

TEST_F(DamagedLog, NoticesEveryColumnThatMustStay) {
    for (char const* change :
         {"time = '20200101-00:00:00.000'", "time = 'never'", "stream = 4", "type = 'X'", "seq = 9",
          "origin = 3", "next_out = 9", "next_in = 9", "text = x'00'", "note = 'x'",
          "checksum = checksum + 1", "wire = x'00'", "wire = x''", "hidden = 1"}) {
        send("11=A|");
        log_.reset();
        {
            Database tool(folder_.file(), Database::Access::Write);
            tool.execute(std::string("UPDATE messages SET ") + change +
                         " WHERE id = (SELECT max(id) FROM messages)");
        }
        EXPECT_TRUE(contains(complaintOfOpening(folder_.file()), "is damaged")) << change;
        for (char const* suffix : {"", "-wal", ".last"}) {
            std::filesystem::remove(folder_.file() + suffix);
        }
        open();
    }
}

TEST_F(DamagedLog, TellsOfRowsThatOnlyDamageHidesOrShows) {
    send("11=A|");
    send("11=B|");
    receive("58=removed|");
    receive("58=last|");
    log().remove(-1, "id IN (1, 3)", "ann");
    damage("UPDATE messages SET hidden = 1 - hidden WHERE id IN (1, 2)");
    open();
    EXPECT_TRUE(contains(complaintOf([&] { read(); }), "the row with id 1 is damaged"));
    EXPECT_TRUE(contains(complaintOf([&] { table("id", "id = 2"); }), "with id 2 is damaged"));
    EXPECT_EQ(complaintOf([&] { table("id", "id = 4"); }), "no complaint");
}

TEST_F(DamagedLog, NoticesEveryColumnOfTheAuditAndLeavesTheOthers) {
    for (int i = 0; i < 2; ++i) {
        send("11=A|");
        log().update(-1, "note = 'seen'", "", "ann");
    }
    for (char const* change :
         {"edited = 'x'", "user = 'eve'", "action = 'insert'", "id = 9", "time = 'x'", "stream = 4",
          "type = 'X'", "seq = 9", "text = x'00'", "note = 'x'", "checksum = 1", "entry = 99"}) {
        damage("CREATE TABLE kept AS SELECT * FROM audit");
        damage("UPDATE audit SET " + std::string(change) + " WHERE entry = 2");
        open();
        EXPECT_TRUE(contains(complaintOf([&] { table("audit"); }), "of the audit is damaged"))
            << change;
        damage("DELETE FROM audit; INSERT INTO audit SELECT * FROM kept; DROP TABLE kept");
    }
    open();
    EXPECT_EQ(table("audit").size(), 4u);
}

TEST_F(DamagedLog, IsToldAtTheStartOfMarksAndOfWhatTheLogKnowsOfItself) {
    log().setMark("desk", FixStream::appIn, 7);
    log().flushMarks();
    struct Case {
        char const* damage;
        char const* repair;
        char const* complaint;
    };
    for (Case const& each : std::initializer_list<Case>{
             {"UPDATE marks SET id = 8", "UPDATE marks SET id = 7", "mark of 'desk' in stream 2"},
             {"UPDATE marks SET stream = 3", "UPDATE marks SET stream = 2", "mark of 'desk'"},
             {"UPDATE marks SET subscriber = 'x'", "UPDATE marks SET subscriber = 'desk'",
              "mark of 'x'"},
             {"UPDATE meta SET value = 2 WHERE name = 'numbering_first'",
              "UPDATE meta SET value = 1 WHERE name = 'numbering_first'", "'numbering_first' is d"},
             {"UPDATE meta SET name = 'n' WHERE name = 'numbering_began'",
              "UPDATE meta SET name = 'numbering_began' WHERE name = 'n'",
              "'numbering_began' is missing"}}) {
        damage(each.damage);
        EXPECT_TRUE(contains(complaintOfOpening(folder_.file()), each.complaint)) << each.damage;
        damage(each.repair);
        EXPECT_EQ(complaintOfOpening(folder_.file()), "no complaint") << each.repair;
    }
    open();
    EXPECT_EQ(log().mark("desk", FixStream::appIn), 7);
}

TEST_F(DamagedLog, IsNotTrustedForItsNumbersWhenTheNewestRowIsDamaged) {
    send("11=A|58=first|");
    send("11=B|58=last|");
    overwrite("last", "lost");
    EXPECT_TRUE(contains(complaintOfOpening(folder_.file()), "the row with id 2 is damaged"));
}

TEST_F(DamagedLog, TellsThatAPageIsOverwritten) {
    for (int i = 0; i < 500; ++i) {
        receive("58=" + std::string(200, 'x') + "|");
    }
    log_.reset();
    std::fstream file(folder_.file(), std::ios::binary | std::ios::in | std::ios::out);
    for (int page = 10; page < 16; ++page) {
        file.seekp(page * 4096);
        file << std::string(4096, '\x33');
    }
    file.close();
    open();
    std::string const complained = complaintOf([&] { read(); });
    EXPECT_TRUE(contains(complained, folder_.file() + ": the file is damaged")) << complained;
    EXPECT_EQ(receive("58=after|"), 501);
}

TEST_F(DamagedLog, IsRefusedWhenItsHeadIsOverwritten) {
    send("11=A|");
    overwrite("SQLite format 3", "somethingelse 3");
    EXPECT_TRUE(contains(complaintOfOpening(folder_.file()), "wrong configuration: "));
}

TEST_F(DamagedLog, IsToldWhenItIsCutShort) {
    for (int i = 0; i < 500; ++i) {
        receive("58=" + std::string(200, 'x') + "|");
    }
    log_.reset();
    std::filesystem::resize_file(folder_.file(), std::filesystem::file_size(folder_.file()) / 2);
    std::string const complained = complaintOfOpening(folder_.file());
    EXPECT_TRUE(contains(complained, "the file is damaged")) << complained;
}

std::string commitOne(MessageLog& log, std::size_t size) {
    Turn const turn(log);
    FixNumbers const before = log.numbers();
    long const last = log.lastId();
    log.append(entry(FixStream::appOut, before.nextOut, "35=D|58=" + std::string(size, 'x') + "|"));
    log.setNumbers({before.nextOut + 1, before.nextIn});
    std::string const complained = complaintOf([&] { log.commit(); });
    if (complained != "no complaint" &&
        (!(log.numbers() == before) || log.lastId() != last || !log.commit().empty())) {
        return "something stayed of a failed commit";
    }
    return complained;
}

TEST(FullDisk, FailsTheCommitAndTheNextOneTriesAgain) {
    TemporaryFolder const folder;
    EXPECT_EQ("", inOtherProcess([&]() -> std::string {
                  signal(SIGXFSZ, SIG_IGN);
                  MessageLog log(LogSettings{folder.file()});
                  if (commitOne(log, 10) != "no complaint") {
                      return "nothing can be written at all";
                  }
                  rlimit limit{};
                  getrlimit(RLIMIT_FSIZE, &limit);
                  limit.rlim_cur = 256 * 1024;
                  setrlimit(RLIMIT_FSIZE, &limit);
                  int committed = 1;
                  std::string complained = "no complaint";
                  while (complained == "no complaint" && committed < 10'000) {
                      complained = commitOne(log, 5'000);
                      committed += complained == "no complaint" ? 1 : 0;
                  }
                  if (!contains(complained, folder.file() + ": ")) {
                      return "unexpected: " + complained;
                  }
                  if (commitOne(log, 5'000) == "no complaint" ||
                      static_cast<int>(log.lastId()) != committed) {
                      return "an id was lost";
                  }
                  limit.rlim_cur = limit.rlim_max;
                  setrlimit(RLIMIT_FSIZE, &limit);
                  if (commitOne(log, 5'000) != "no complaint") {
                      return "it does not recover";
                  }
                  std::size_t const seen = log.ids(-1, false).size();
                  return seen == static_cast<std::size_t>(committed) + 1 ? ""
                                                                         : "entries are missing";
              }));
}

// A file system of sixteen megabytes, where that is allowed.
class SmallDisk : public testing::Test {
protected:
    SmallDisk() { isThere_ = mount("tmpfs", folder_.path().c_str(), "tmpfs", 0, "size=16m") == 0; }
    ~SmallDisk() override {
        if (isThere_) {
            umount2(folder_.path().c_str(), MNT_DETACH);
        }
    }

    void SetUp() override {
        if (!isThere_) {
            GTEST_SKIP() << "only root may mount";
        }
    }

    std::string file() const { return folder_.file(); }
    std::string reserve() const { return folder_.file() + ".reserve"; }

    static std::string fill(MessageLog& log) {
        std::string complained = "no complaint";
        for (std::size_t const size : {100'000u, 1'000u, 10u}) {
            do {
                complained = commitOne(log, size);
            } while (complained == "no complaint");
        }
        return complained;
    }

    TemporaryFolder folder_;
    bool isThere_ = false;
};

TEST_F(SmallDisk, StopsTheLogWithAClearTextAndTheLogCanStillBeRead) {
    MessageLog log(LogSettings{file()});
    std::string const complained = fill(log);
    EXPECT_TRUE(contains(complained, file() + ": the disk is full")) << complained;
    auto const ids = log.ids(-1, false);
    EXPECT_EQ(static_cast<long>(ids.size()), log.lastId());
    EXPECT_GT(ids.size(), 50u);
}

TEST_F(SmallDisk, LetsTheLogGoOnWhenThereIsRoomAgain) {
    write(folder_.file("ballast"), std::string(3'000'000, 'x'));
    MessageLog log(LogSettings{file()});
    fill(log);
    long const last = log.lastId();
    std::filesystem::remove(folder_.file("ballast"));
    EXPECT_EQ(commitOne(log, 100'000), "no complaint");
    EXPECT_EQ(log.lastId(), last + 1);
}

TEST_F(SmallDisk, IsFoundToHaveRoomAgainWithoutAMessage) {
    write(folder_.file("ballast"), std::string(3'000'000, 'x'));
    MessageLog log(LogSettings{file()});
    fill(log);
    long const last = log.lastId();
    EXPECT_FALSE(log.worksAgain());
    std::filesystem::remove(folder_.file("ballast"));
    std::this_thread::sleep_for(std::chrono::seconds(1));
    EXPECT_TRUE(log.worksAgain());
    EXPECT_EQ(log.lastId(), last);
    EXPECT_EQ(commitOne(log, 10), "no complaint");
    EXPECT_EQ(log.lastId(), last + 1);
}

TEST_F(SmallDisk, TakesRemovalsFromTheReserve) {
    MessageLog log(LogSettings{file()});
    EXPECT_EQ(std::filesystem::file_size(reserve()), 1024u * 1024u);
    fill(log);
    EXPECT_EQ(log.remove(-1, "id IN (1, 2, 3)", "ann"), 3);
    EXPECT_FALSE(std::filesystem::exists(reserve()));
    EXPECT_EQ(log.ids(-1, false).front(), 4);
}

TEST_F(SmallDisk, HasTheReserveAgainWhenThereIsRoom) {
    write(folder_.file("ballast"), std::string(8'000'000, 'x'));
    MessageLog log(LogSettings{file()});
    fill(log);
    log.remove(-1, "id = 1", "ann");
    log.maintain();
    EXPECT_FALSE(std::filesystem::exists(reserve()));
    std::filesystem::remove(folder_.file("ballast"));
    log.maintain();
    EXPECT_EQ(std::filesystem::file_size(reserve()), 1024u * 1024u);
}

} // namespace
