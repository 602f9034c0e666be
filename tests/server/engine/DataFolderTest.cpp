#include "server/engine/DataFolder.h"

#include "infra/WrongConfigurationException.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

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

} // namespace
