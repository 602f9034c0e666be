// Files of a log that are deleted, moved, cut, overwritten or replaced: while it is in use, and
// while it is not.
#include "LogFixture.h"

#include <fstream>
#include <functional>
#include <iterator>
#include <thread>

namespace {

using namespace logtest;
using namespace std::chrono_literals;

std::string failureOf(std::function<void()> const& work) {
    try {
        work();
    } catch (LogFailure const& failure) {
        return failure.what();
    }
    return {};
}

class LostFile : public LogTest {
protected:
    LostFile() {
        settings_.survivesPowerFailure = true;
        open();
        send("11=A|");
        send("11=B|");
    }

    std::string ahead() const { return folder_.file() + "-wal"; }

    /// How many entries the next process finds after a kill.
    std::size_t entriesAfterAKill() const {
        TemporaryFolder const copy;
        std::filesystem::copy(folder_.path(), copy.path());
        LogSettings settings;
        settings.file = copy.file();
        return MessageLog(settings).ids(-1, false).size();
    }

    std::string complaintOfSending() {
        return failureOf([this] { send("11=C|"); });
    }

    bool worksAgainSoon() {
        for (int i = 0; i < 400; ++i) {
            if (log().worksAgain()) {
                return true;
            }
            std::this_thread::sleep_for(10ms);
        }
        return false;
    }
};

TEST_F(LostFile, IsNoticedByTheNextCommitWhenTheWriteAheadFileIsDeleted) {
    std::filesystem::remove(ahead());
    std::string const complaint = complaintOfSending();
    EXPECT_TRUE(contains(complaint, ahead() + ": the file was moved away or deleted")) << complaint;
    EXPECT_EQ(entriesAfterAKill(), 2u);
}

TEST_F(LostFile, IsNoticedByTheNextCommitWhenTheWriteAheadFileIsRenamed) {
    std::filesystem::rename(ahead(), folder_.file("away"));
    EXPECT_TRUE(contains(complaintOfSending(), ahead()));
    EXPECT_EQ(entriesAfterAKill(), 2u);
}

TEST_F(LostFile, IsMadeAnewWhenNothingOfItIsMissing) {
    std::filesystem::remove(ahead());
    EXPECT_NE(complaintOfSending(), "");
    EXPECT_TRUE(worksAgainSoon());
    EXPECT_EQ(complaintOfSending(), "");
    EXPECT_EQ(complaintOfSending(), "");
    EXPECT_EQ(log().ids(-1, false).size(), 4u);
    EXPECT_EQ(entriesAfterAKill(), 4u);
    open();
    EXPECT_EQ(log().ids(-1, false).size(), 4u);
}

TEST_F(LostFile, IsUsedAgainWhenItIsBack) {
    std::filesystem::rename(ahead(), folder_.file("away"));
    EXPECT_NE(complaintOfSending(), "");
    std::filesystem::rename(folder_.file("away"), ahead());
    EXPECT_EQ(complaintOfSending(), "");
    EXPECT_EQ(entriesAfterAKill(), 3u);
}

TEST_F(LostFile, IsNotTakenForAnother) {
    std::filesystem::rename(ahead(), folder_.file("away"));
    std::filesystem::copy(folder_.file("away"), ahead());
    std::string const complaint = complaintOfSending();
    EXPECT_TRUE(contains(complaint, ahead() + ": another file was put in its place")) << complaint;
    std::filesystem::remove(ahead());
    EXPECT_TRUE(worksAgainSoon());
    EXPECT_EQ(complaintOfSending(), "");
}

TEST_F(LostFile, IsNoticedWhenNothingIsSent) {
    std::filesystem::remove(ahead());
    EXPECT_EQ(log().takeFinding(), "");
    log().maintain();
    EXPECT_TRUE(contains(log().takeFinding(), ahead() + ": the file was moved away or deleted"));
    EXPECT_EQ(log().takeFinding(), "");
    EXPECT_EQ(entriesAfterAKill(), 2u);
    EXPECT_TRUE(worksAgainSoon());
}

TEST_F(LostFile, TakesNothingMoreWhenTheWriteAheadFileIsCut) {
    std::filesystem::resize_file(ahead(), 0);
    std::string const complaint = complaintOfSending();
    EXPECT_TRUE(contains(complaint, ahead() + ": the file was cut")) << complaint;
    EXPECT_TRUE(contains(complaintOfSending(), ahead() + ": the file was cut"));
    // And the next start tells of it too.
    log_.reset();
    EXPECT_TRUE(contains(failureOf([this] { open(); }), ahead()));
    std::filesystem::remove(folder_.file() + ".last");
    EXPECT_EQ(failureOf([this] { open(); }), "");
}

TEST_F(LostFile, IsMadeAnewWhenAllOfItHadBeenMovedBeforeItWasCut) {
    std::this_thread::sleep_for(120ms);
    log().maintain();
    std::filesystem::resize_file(ahead(), 0);
    EXPECT_NE(complaintOfSending(), "");
    EXPECT_TRUE(worksAgainSoon());
    EXPECT_EQ(complaintOfSending(), "");
    EXPECT_EQ(entriesAfterAKill(), 3u);
}

TEST_F(LostFile, TakesNothingMoreWhenTheLogIsCut) {
    std::this_thread::sleep_for(120ms);
    log().maintain();
    std::filesystem::resize_file(folder_.file(), 0);
    std::string const complaint = complaintOfSending();
    EXPECT_TRUE(contains(complaint, folder_.file() + ": the file was cut")) << complaint;
    EXPECT_NE(complaintOfSending(), "");
    log_.reset();
    std::string const atStart = failureOf([this] { open(); });
    EXPECT_TRUE(contains(atStart, folder_.file() + ": is empty, with messages up to id 2"))
        << atStart;
}

TEST_F(LostFile, TakesNothingMoreWhenTheLogIsDeleted) {
    std::filesystem::remove(folder_.file());
    EXPECT_TRUE(contains(complaintOfSending(), folder_.file() + ": the file was moved away"));
    EXPECT_NE(complaintOfSending(), "");
    log_.reset();
    EXPECT_TRUE(contains(failureOf([this] { open(); }), folder_.file() + ": is missing"));
}

TEST_F(LostFile, IsNoticedWithoutFullDurabilityToo) {
    settings_.survivesPowerFailure = false;
    open();
    send("11=C|");
    std::filesystem::remove(ahead());
    std::this_thread::sleep_for(60ms);
    EXPECT_TRUE(contains(complaintOfSending(), ahead()));
    EXPECT_EQ(entriesAfterAKill(), 3u);
}

// A commit writes behind the end that the file had, and the system fills what lies between.
TEST_F(LostFile, IsNoticedWhenItHasGrownAgainAfterACut) {
    settings_.survivesPowerFailure = false;
    open();
    send("11=C|");
    std::this_thread::sleep_for(60ms);
    send("11=D|");
    std::filesystem::resize_file(ahead(), 0);
    send("11=E|");
    std::this_thread::sleep_for(60ms);
    EXPECT_TRUE(contains(complaintOfSending(), ahead() + ": the file was cut"));
}

/// What a process leaves that was killed.
class LeftBehind : public LostFile {
protected:
    LeftBehind() {
        for (int i = 0; i < 10; ++i) {
            send("11=" + std::to_string(i) + "|");
        }
        std::filesystem::copy(folder_.path(), image_.path());
    }

    std::string complaintOfOpening() const {
        LogSettings settings;
        settings.file = image_.file();
        std::size_t entries = 0;
        std::string const complaint =
            failureOf([&] { entries = MessageLog(settings).ids(-1, false).size(); });
        return complaint.empty() && entries != 12 ? "silently lost entries" : complaint;
    }

    std::string imageAhead() const { return image_.file() + "-wal"; }

    TemporaryFolder image_;
};

TEST_F(LeftBehind, IsTakenUpWhenItIsSound) {
    EXPECT_EQ(complaintOfOpening(), "");
}

TEST_F(LeftBehind, TellsOfEveryByteThatIsDamagedInTheWriteAheadFile) {
    auto const size = static_cast<std::streamoff>(std::filesystem::file_size(imageAhead()));
    ASSERT_GT(size, 40'000);
    int told = 0;
    for (std::streamoff at = 0; at < size; at += at < 200 ? 1 : 997) {
        for (char const* const ending : {"", "-wal", ".last"}) {
            std::filesystem::copy(folder_.file() + ending, image_.file() + ending,
                                  std::filesystem::copy_options::overwrite_existing);
        }
        std::fstream file(imageAhead(), std::ios::binary | std::ios::in | std::ios::out);
        file.seekg(at);
        char const byte = static_cast<char>(file.get() ^ 0x10);
        file.seekp(at);
        file.put(byte);
        file.close();
        std::string const complaint = complaintOfOpening();
        EXPECT_NE(complaint, "silently lost entries") << at;
        told += complaint.empty() ? 0 : 1;
    }
    EXPECT_GT(told, 50);
}

TEST_F(LeftBehind, TellsThatTheWriteAheadFileIsCutAnywhere) {
    auto const size = std::filesystem::file_size(imageAhead());
    for (std::uintmax_t left = 0; left < size; left += 1'500) {
        for (char const* const ending : {"", "-wal", ".last"}) {
            std::filesystem::copy(folder_.file() + ending, image_.file() + ending,
                                  std::filesystem::copy_options::overwrite_existing);
        }
        std::filesystem::resize_file(imageAhead(), left);
        EXPECT_TRUE(contains(complaintOfOpening(), imageAhead() + ": ")) << left;
    }
}

TEST_F(LeftBehind, TellsThatTheWriteAheadFileIsMissing) {
    std::filesystem::remove(imageAhead());
    std::string const complaint = complaintOfOpening();
    EXPECT_TRUE(contains(complaint, imageAhead() + ": is missing or empty")) << complaint;
    EXPECT_TRUE(contains(complaint, "or remove " + image_.file() + ".last to go on")) << complaint;
    std::filesystem::remove(image_.file() + ".last");
    EXPECT_EQ(complaintOfOpening(), "silently lost entries");
}

TEST_F(LeftBehind, TellsHowToGoOnWithoutWhatStandsBehindDamage) {
    std::fstream file(imageAhead(), std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(32 + 24 + 4096 * 3);
    file << "damaged";
    file.close();
    std::string const complaint = complaintOfOpening();
    EXPECT_TRUE(contains(complaint, "commits stand behind it that cannot be taken up"))
        << complaint;
    std::size_t const at = complaint.find("cut it to ");
    ASSERT_NE(at, std::string::npos) << complaint;
    std::filesystem::resize_file(imageAhead(), std::stoul(complaint.substr(at + 10)));
    std::filesystem::remove(image_.file() + ".last");
    EXPECT_EQ(complaintOfOpening(), "silently lost entries");
    EXPECT_EQ(complaintOfOpening(), "silently lost entries");
}

TEST_F(LeftBehind, TellsThatAnOlderCopyLiesInItsPlace) {
    log_.reset();
    std::filesystem::copy(folder_.path(), image_.path(),
                          std::filesystem::copy_options::recursive |
                              std::filesystem::copy_options::overwrite_existing);
    std::filesystem::remove(imageAhead());
    std::string const older = folder_.file("older");
    std::filesystem::copy(folder_.file(), older);
    open();
    send("11=later|");
    log_.reset();
    std::filesystem::copy(folder_.file() + ".last", image_.file() + ".last",
                          std::filesystem::copy_options::overwrite_existing);
    std::string const complaint = complaintOfOpening();
    EXPECT_TRUE(contains(complaint, image_.file() + ": ends with id 12, and messages up to id 13"))
        << complaint;
}

} // namespace
