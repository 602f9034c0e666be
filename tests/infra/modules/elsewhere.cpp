// Tells from where the library was loaded and what its own module answers to a program that has
// gone to another folder.
#include "infra/DynamicMethod.h"

#include <dlfcn.h>
#include <filesystem>
#include <iostream>

int main() {
    Dl_info library{};
    dladdr(reinterpret_cast<void*>(&getModuleFolders), &library);
    auto const folder = std::filesystem::path(library.dli_fname).parent_path();
    std::filesystem::current_path("/");
    void* const function = getDynamicMethod("zantestbeside", "zan_test_answer", true);
    std::cout << "loaded from " << folder.string() << ", answers "
              << reinterpret_cast<int (*)()>(function)() << std::endl;
}
