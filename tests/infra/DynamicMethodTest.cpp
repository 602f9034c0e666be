#include "infra/DynamicMethod.h"

#include "infra/InfraException.h"

#include "support/ChildProcess.h"

#include <algorithm>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

// The modules lie in ZAN_TEST_MODULES, in the folders `first`, `second` and, made while testing,
// `broken`. A loaded module stays, so each test has modules of its own.
namespace {

std::string folder(std::string const& name) {
    return std::string(ZAN_TEST_MODULES) + "/" + name;
}

class DynamicMethod : public testing::Test {
protected:
    void SetUp() override { lookIn(folder("first")); }
    void TearDown() override { unsetenv("ZAN_ADAPTER_PATH"); }

    static void lookIn(std::string const& folders) {
        setenv("ZAN_ADAPTER_PATH", folders.c_str(), 1);
    }

    static int call(std::string const& module, bool load = true) {
        void* const function = getDynamicMethod(module, "zan_test_answer", load);
        return function ? reinterpret_cast<int (*)()>(function)() : 0;
    }

    static std::string failure(std::string const& module, bool load = true) {
        try {
            getDynamicMethod(module, "zan_test_answer", load);
        } catch (InfraException const& exception) {
            return exception.getMessage();
        }
        return "found";
    }
};

TEST_F(DynamicMethod, CallsAFunctionOfAModule) {
    EXPECT_EQ(11, call("zantestanswer"));
}

TEST_F(DynamicMethod, AnswersNullForAFunctionThatTheModuleLacks) {
    EXPECT_EQ(nullptr, getDynamicMethod("zantestsilent", "zan_test_answer", true));
    EXPECT_EQ(nullptr, getDynamicMethod("zantestanswer", "zan_test_question", true));
}

TEST_F(DynamicMethod, DoesNotSeeAHiddenFunction) {
    EXPECT_EQ(nullptr, getDynamicMethod("zantestanswer", "zan_test_hidden", true));
}

TEST_F(DynamicMethod, PrefersTheFileNameThatBeginsWithLib) {
    EXPECT_EQ(21, call("zantestnames"));
}

TEST_F(DynamicMethod, TakesAFileNameWithoutLib) {
    lookIn(folder("second"));
    EXPECT_EQ(31, call("zantestbare"));
}

TEST_F(DynamicMethod, SearchesTheFoldersInOrder) {
    lookIn(folder("second") + ":" + folder("first"));
    EXPECT_EQ(42, call("zantestorder"));
}

TEST_F(DynamicMethod, GoesOnAfterAFolderWithoutTheModule) {
    lookIn("/nonexistent::" + folder("second") + ":");
    EXPECT_EQ(52, call("zantestlater"));
}

TEST_F(DynamicMethod, GoesOnAfterAFileThatCannotBeLoaded) {
    std::ofstream(folder("first") + "/libzantestdamaged.so") << "This is no module.";
    lookIn(folder("first") + ":" + folder("second"));
    EXPECT_EQ(62, call("zantestdamaged"));
}

TEST_F(DynamicMethod, LooksOnlyAmongLoadedModulesWhenToldSo) {
    EXPECT_NE(std::string::npos, failure("zantestpatient", false).find("is loaded:"));
    EXPECT_EQ(71, call("zantestpatient", true));
    EXPECT_EQ(71, call("zantestpatient", false));
}

TEST_F(DynamicMethod, KeepsAModuleLoaded) {
    EXPECT_EQ(81, call("zantestlasting"));
    std::string const file = folder("first") + "/libzantestlasting.so";
    void* const handle = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(nullptr, handle);
    dlclose(handle);
    dlclose(handle);
    EXPECT_NE(nullptr, dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD));
}

TEST_F(DynamicMethod, KeepsTheNamesOfAModuleToItself) {
    EXPECT_EQ(91, call("zantestlocal"));
    EXPECT_EQ(nullptr, dlsym(RTLD_DEFAULT, "zan_test_answer"));
}

TEST_F(DynamicMethod, TellsEveryPlaceOnALineOfItsOwn) {
    lookIn("/nonexistent/a:/nonexistent/b");
    std::string const message = failure("zantestabsent");
    EXPECT_EQ(0u, message.find("Cannot find method \"zan_test_answer\"."));
    for (char const* place :
         {"/nonexistent/a/libzantestabsent.so", "/nonexistent/a/zantestabsent.so",
          "/nonexistent/b/libzantestabsent.so", "/nonexistent/b/zantestabsent.so",
          "/zanengine/libzantestabsent.so", "/zanengine/zantestabsent.so",
          "\n  libzantestabsent.so: ", "\n  zantestabsent.so: "}) {
        EXPECT_NE(std::string::npos, message.find(place)) << place << " is not in " << message;
    }
    EXPECT_EQ(8, std::count(message.begin(), message.end(), '\n'));
}

TEST_F(DynamicMethod, TellsTheLoadersOwnWords) {
    std::ofstream(folder("first") + "/libzantestnonsense.so") << "This is no module.";
    std::string const message = failure("zantestnonsense");
    std::string const file = folder("first") + "/libzantestnonsense.so";
    dlopen(file.c_str(), RTLD_NOW);
    EXPECT_NE(std::string::npos, message.find(std::string("\n  ") + dlerror() + "\n")) << message;
}

TEST_F(DynamicMethod, NamesTheFileThatNeedsAMissingFunction) {
    std::string const message = failure("zantestunresolved");
    EXPECT_NE(std::string::npos, message.find("zan_test_nowhere")) << message;
    EXPECT_NE(std::string::npos,
              message.find("\n  " + folder("first") + "/libzantestunresolved.so: "))
        << message;
}

TEST_F(DynamicMethod, NamesTheFoldersInTheOrderInWhichTheyAreSearched) {
    lookIn("/nonexistent/b::/nonexistent/a");
    std::vector<std::string> const folders = getModuleFolders();
    ASSERT_EQ(3u, folders.size());
    EXPECT_EQ("/nonexistent/b", folders[0]);
    EXPECT_EQ("/nonexistent/a", folders[1]);
    EXPECT_EQ("zanengine", folders[2].substr(folders[2].rfind('/') + 1));
}

TEST_F(DynamicMethod, TakesARelativeFolderFromTheWorkingFolderOfTheMoment) {
    auto const home = std::filesystem::current_path();
    lookIn("second:./first");
    std::filesystem::current_path(ZAN_TEST_MODULES);
    std::vector<std::string> const folders = getModuleFolders();
    int const answer = call("zantestfromhere");
    std::filesystem::current_path("/");
    std::vector<std::string> const foldersElsewhere = getModuleFolders();
    std::string const message = failure("zantestabsent");
    std::filesystem::current_path(home);
    EXPECT_EQ(111, answer);
    EXPECT_EQ(folder("second"), folders[0]);
    EXPECT_EQ(folder("./first"), folders[1]);
    EXPECT_EQ("/second", foldersElsewhere[0]);
    EXPECT_NE(std::string::npos, message.find("\n  /second/libzantestabsent.so: ")) << message;
}

#ifdef ZAN_TEST_BESIDE_LIBRARY
TEST_F(DynamicMethod, FindsTheLibrarysFolderAfterTheWorkingFolderWasLeft) {
    ChildProcess program("/bin/sh", {"-c", "cd " ZAN_TEST_LIBRARIES
                                           "/.. && LD_LIBRARY_PATH=lib exec " ZAN_TEST_ELSEWHERE});
    EXPECT_EQ("loaded from lib, answers 101", program.waitForLine("loaded"));
}

TEST_F(DynamicMethod, LooksBesideTheLibraryLast) {
    unsetenv("ZAN_ADAPTER_PATH");
    EXPECT_EQ(101, call("zantestbeside"));
}
#endif

} // namespace
