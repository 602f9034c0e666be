/// The folder in which an engine keeps what has to survive it. One engine owns it at a time.
///
/// Threads: none of its operations may run at the same time as another.
#ifndef ZANENGINE_SERVER_ENGINE_DATAFOLDER_H
#define ZANENGINE_SERVER_ENGINE_DATAFOLDER_H

#include <string>

namespace zan::server {

class DataFolder {
public:
    /// Makes the folder where it is missing, and takes it for this engine. Throws
    /// `WrongConfigurationException` when it cannot be made or written, and when another engine has
    /// it; the text then tells which process on which machine.
    explicit DataFolder(std::string path);
    ~DataFolder();
    DataFolder(DataFolder const&) = delete;
    DataFolder& operator=(DataFolder const&) = delete;

    std::string const& path() const { return path_; }

    /// Of a new folder with a name of its own under the system's folder for temporary files. Throws
    /// `WrongConfigurationException`.
    static std::string makeTemporary();

private:
    std::string const path_;
    int lockFile_ = -1;
};

} // namespace zan::server

#endif
