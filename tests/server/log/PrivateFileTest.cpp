// Nobody but the owner has rights to the files of a log, and nothing else takes their place.
#include "LogFixture.h"

#include "infra/WrongConfigurationException.h"
#include "server/log/Sqlite.h"

#include <fstream>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace logtest;

mode_t modeOf(std::string const& path) {
    struct stat found {};
    EXPECT_EQ(lstat(path.c_str(), &found), 0) << path;
    return found.st_mode & 07777;
}

std::string refusalOfOpening(std::string const& file) {
    try {
        MessageLog const log(LogSettings{file});
    } catch (WrongConfigurationException const& refusal) {
        return refusal.what();
    }
    return "no refusal";
}

class PrivateFile : public testing::Test {
protected:
    void useLog() {
        MessageLog log(LogSettings{folder_.file()});
        {
            Turn const turn(log);
            log.append(entry(FixStream::appOut, 1, "35=D|11=A|"));
            log.commit();
        }
        log.readChain({1}, {}, false, [](FixEntry&&) {});
        log.maintain();
        for (auto const& each : std::filesystem::directory_iterator(folder_.path())) {
            EXPECT_EQ(modeOf(each.path()), 0600u) << each.path();
            ++seen_;
        }
    }

    TemporaryFolder folder_;
    int seen_ = 0;
};

TEST_F(PrivateFile, IsEachOfANewLogUnderAnyMask) {
    mode_t const before = umask(0);
    useLog();
    umask(before);
    EXPECT_GE(seen_, 6);
}

TEST_F(PrivateFile, IsEachOfALogThatOthersCouldRead) {
    useLog();
    for (auto const& each : std::filesystem::directory_iterator(folder_.path())) {
        chmod(each.path().c_str(), 0666);
    }
    useLog();
}

// The start would wait for whoever opens the other end.
TEST_F(PrivateFile, IsNotReplacedByAPipeALinkOrAFolder) {
    useLog();
    for (char const* const ending :
         {"", "-wal", "-journal", ".orders", ".orders-wal", ".reserve", ".last"}) {
        std::string const path = folder_.file() + ending;
        std::string const kept = folder_.file("kept");
        bool const isThere = std::filesystem::exists(path);
        if (isThere) {
            std::filesystem::rename(path, kept);
        }
        mkfifo(path.c_str(), 0600);
        EXPECT_TRUE(contains(refusalOfOpening(folder_.file()),
                             path + ": is a named pipe, where the engine keeps a file"))
            << path;
        unlink(path.c_str());
        EXPECT_EQ(symlink(path.c_str(), path.c_str()), 0);
        EXPECT_TRUE(contains(refusalOfOpening(folder_.file()), path + ": is a symbolic link"));
        unlink(path.c_str());
        mkdir(path.c_str(), 0700);
        EXPECT_TRUE(contains(refusalOfOpening(folder_.file()), path + ": is a folder"));
        rmdir(path.c_str());
        if (isThere) {
            std::filesystem::rename(kept, path);
        }
    }
    EXPECT_EQ(refusalOfOpening(folder_.file()), "no refusal");
}

TEST_F(PrivateFile, OfOrdersIsMadeAnewWhenItIsDeletedOrCutInUse) {
    MessageLog log(LogSettings{folder_.file()});
    auto const chain = [&] {
        std::size_t found = 0;
        log.readChain({}, {"A"}, false, [&](FixEntry&&) { ++found; });
        return found;
    };
    {
        Turn const turn(log);
        log.append(entry(FixStream::appOut, 1, "35=D|11=A|"));
        log.commit();
    }
    EXPECT_EQ(chain(), 1u);
    std::filesystem::remove(folder_.file() + ".orders");
    EXPECT_EQ(chain(), 1u);
    EXPECT_TRUE(std::filesystem::exists(folder_.file() + ".orders"));
    std::filesystem::resize_file(folder_.file() + ".orders", 0);
    EXPECT_EQ(chain(), 1u);
}

TEST_F(PrivateFile, KeepsSecretsThatTheAuditDoesNotShow) {
    MessageLog log(LogSettings{folder_.file()});
    {
        Turn const turn(log);
        log.append(entry(FixStream::adminOut, 1, "35=A|553=me|554=hidden-word|"));
        log.commit();
    }
    log.update(-1, "note = 'seen'", "", "ann");
    LogTable audit;
    log.readTable(-1, "text", "", "", audit);
    EXPECT_TRUE(contains(audit.at(1).at(0), "hidden-word"));
    audit.clear();
    log.readTable(-1, "audit", "", "", audit);
    EXPECT_FALSE(contains(testing::PrintToString(audit), "hidden-word"));
    EXPECT_TRUE(contains(audit.at(1).at(10), "554=***"));
}

} // namespace
