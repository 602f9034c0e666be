#include "transports/embedded/TemporaryFolder.h"

#include "server/engine/DataFolder.h"

#include <filesystem>
#include <system_error>

namespace zan::embedded {

TemporaryFolder::TemporaryFolder() : path_(server::DataFolder::makeTemporary()) {}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

} // namespace zan::embedded
