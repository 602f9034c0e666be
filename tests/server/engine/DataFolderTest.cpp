#include "server/engine/DataFolder.h"

#include "infra/WrongConfigurationException.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using zan::server::DataFolder;

class DataFolderTest : public testing::Test {
protected:
    ~DataFolderTest() override { std::filesystem::remove_all(path_); }

    std::string refusal(std::string const& path) {
        try {
            DataFolder const folder(path);
        } catch (WrongConfigurationException const& e) {
            return e.getMessage();
        }
        return "no refusal";
    }

    std::string const path_ = DataFolder::makeTemporary();
};

TEST_F(DataFolderTest, IsMadeWithAllFoldersAboveIt) {
    DataFolder const folder(path_ + "/a/b");
    EXPECT_EQ(folder.path(), path_ + "/a/b");
    EXPECT_TRUE(std::filesystem::is_directory(path_ + "/a/b"));
}

TEST_F(DataFolderTest, TellsWhoHasIt) {
    std::optional<DataFolder> folder(path_);
    std::string const text = refusal(path_);
    EXPECT_EQ(text.find("data folder " + path_ + ": is in use by process " +
                        std::to_string(getpid()) + " on "),
              0u)
        << text;
    folder.reset();
    EXPECT_EQ(refusal(path_), "no refusal");
}

TEST_F(DataFolderTest, CannotBeAFile) {
    DataFolder const folder(path_);
    std::string const text = refusal(path_ + "/lock/data");
    EXPECT_EQ(text.find("data folder " + path_ + "/lock/data: cannot be made ("), 0u) << text;
}

TEST_F(DataFolderTest, IsANewOneEachTimeWhenItIsTemporary) {
    std::string const other = DataFolder::makeTemporary();
    EXPECT_NE(other, path_);
    EXPECT_TRUE(std::filesystem::is_directory(other));
    std::filesystem::remove_all(other);
}

mode_t modeOf(std::string const& path) {
    struct stat found {};
    EXPECT_EQ(lstat(path.c_str(), &found), 0) << path;
    return found.st_mode & 07777;
}

TEST_F(DataFolderTest, IsForItsOwnerAloneUnderAnyMask) {
    for (mode_t const mask : {0000, 0022, 0777}) {
        mode_t const before = umask(mask);
        std::string const path = path_ + "/" + std::to_string(mask);
        DataFolder const folder(path);
        umask(before);
        EXPECT_EQ(modeOf(path), 0700u) << mask;
        EXPECT_EQ(modeOf(path + "/lock"), 0600u) << mask;
        EXPECT_EQ(folder.warning(), "");
    }
}

TEST_F(DataFolderTest, LosesTheRightsThatOthersHadToIt) {
    std::ofstream(path_ + "/lock") << "an older one";
    chmod(path_.c_str(), 0775);
    chmod((path_ + "/lock").c_str(), 0666);
    DataFolder const folder(path_);
    EXPECT_EQ(modeOf(path_), 0700u);
    EXPECT_EQ(modeOf(path_ + "/lock"), 0600u);
}

TEST_F(DataFolderTest, LeavesAFolderForEverybodyAsItIsAndWarns) {
    chmod(path_.c_str(), 01777);
    DataFolder const folder(path_);
    EXPECT_EQ(modeOf(path_), 01777u);
    EXPECT_NE(folder.warning().find("others have rights to the data folder " + path_),
              std::string::npos);
}

TEST_F(DataFolderTest, RefusesWhatIsNoFileInThePlaceOfItsLock) {
    mkfifo((path_ + "/lock").c_str(), 0600);
    EXPECT_EQ(refusal(path_).find(path_ + "/lock: is a named pipe"), 0u) << refusal(path_);
}

TEST_F(DataFolderTest, MakesItsLockAnewWhenItIsDeletedAndTellsItOnce) {
    DataFolder folder(path_);
    EXPECT_EQ(folder.watchLock(), "");
    std::filesystem::remove(path_ + "/lock");
    EXPECT_NE(folder.watchLock().find("it was made anew"), std::string::npos);
    EXPECT_EQ(folder.watchLock(), "");
    EXPECT_NE(refusal(path_).find("is in use by process"), std::string::npos);
}

} // namespace
