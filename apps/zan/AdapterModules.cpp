#include "apps/zan/AdapterModules.h"

#include "adapter/AbiMark.h"
#include "infra/DynamicMethod.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>
#include <set>
#include <string_view>

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zan::cli {

namespace {

constexpr std::string_view ending = "engineadapter.so";
constexpr int patienceMillis = 10'000;

// Empty for a file that is not called like a module.
std::string protocolOf(std::string name) {
    if (!name.ends_with(ending)) {
        return {};
    }
    name.resize(name.size() - ending.size());
    return name.starts_with("lib") ? name.substr(3) : name;
}

std::vector<std::filesystem::path> filesIn(std::string const& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (auto const& entry : std::filesystem::directory_iterator(folder, error)) {
        files.push_back(entry.path());
    }
    // With `lib` in front of its name a module goes first.
    std::ranges::sort(files, [](auto const& left, auto const& right) {
        bool const isLeftLib = left.filename().string().starts_with("lib");
        bool const isRightLib = right.filename().string().starts_with("lib");
        return isLeftLib != isRightLib ? isLeftLib : left < right;
    });
    return files;
}

// A line of `+` and the mark of a good module, or of `-` and what is wrong with it.
std::string loadedLine(std::string const& file, std::string const& protocol) {
    void* const module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!module) {
        char const* const words = dlerror();
        return std::string("-") + (words ? words : "it cannot be loaded");
    }
    std::string const function = "create_" + protocol + "_engineadapter";
    if (!dlsym(module, function.c_str())) {
        return "-it has no function " + function + "; ZAN_ADAPTER_MODULE would define it";
    }
    auto const* const mark =
        static_cast<char const*>(dlsym(module, ("zan_abi_mark_" + protocol).c_str()));
    return std::string("+") + (mark ? mark : "");
}

[[noreturn]] void loadAndTell(std::string const& file, std::string const& protocol, int to) {
    // What a module prints is not for the output of this program.
    int const nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    std::string const line = loadedLine(file, protocol);
    bool const isTold = write(to, line.data(), line.size()) == static_cast<ssize_t>(line.size());
    // Without the destructors of what was loaded, and of what was inherited.
    _exit(isTold ? 0 : 1);
}

// What the other process tells until its end, or as long as one is patient.
std::string told(int from) {
    std::string line;
    pollfd waited{from, POLLIN, 0};
    std::array<char, 4096> bytes{};
    while (poll(&waited, 1, patienceMillis) > 0) {
        ssize_t const size = read(from, bytes.data(), bytes.size());
        if (size <= 0) {
            break;
        }
        line.append(bytes.data(), static_cast<std::size_t>(size));
    }
    return line;
}

ModuleReport reportOf(std::string const& line) {
    if (line.empty()) {
        return {false, "", "it ends or blocks the process that loads it"};
    }
    if (line.front() == '-') {
        return {false, "", line.substr(1)};
    }
    std::string const mark = line.substr(1);
    bool const isFitting = mark.empty() || mark == ZAN_ABI_MARK;
    return {isFitting, mark,
            isFitting ? "" : "it was built for another library; this one is \"" ZAN_ABI_MARK "\""};
}

} // namespace

std::vector<FoundModule> findModules() {
    std::vector<FoundModule> modules;
    std::set<std::string> served;
    for (std::string const& folder : getModuleFolders()) {
        for (std::filesystem::path const& file : filesIn(folder)) {
            std::string const protocol = protocolOf(file.filename().string());
            if (!protocol.empty()) {
                bool const isFirst = served.insert(protocol).second;
                modules.push_back({protocol, file.string(), !isFirst});
            }
        }
    }
    return modules;
}

ModuleReport tryModule(std::string const& file, std::string const& protocol) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        return {false, "", "there is no pipe to try it"};
    }
    pid_t const child = fork();
    if (child == 0) {
        close(ends[0]);
        loadAndTell(file, protocol, ends[1]);
    }
    close(ends[1]);
    std::string const line = child > 0 ? told(ends[0]) : "-there is no process to try it";
    close(ends[0]);
    if (child > 0) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
    return reportOf(line);
}

} // namespace zan::cli
