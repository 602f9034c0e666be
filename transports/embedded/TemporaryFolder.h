/// A fresh folder for the data of an engine that keeps nothing.
///
/// Threads: made and ended by its owner.
#ifndef ZANENGINE_TRANSPORTS_EMBEDDED_TEMPORARYFOLDER_H
#define ZANENGINE_TRANSPORTS_EMBEDDED_TEMPORARYFOLDER_H

#include <string>

namespace zan::embedded {

class TemporaryFolder {
public:
    /// Throws `WrongConfigurationException` when none can be made.
    TemporaryFolder();

    /// Removes the folder with all that is in it: the engine must have stopped.
    ~TemporaryFolder();
    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;

    std::string const& path() const { return path_; }

private:
    std::string const path_;
};

} // namespace zan::embedded

#endif
