/// The folder in which an engine keeps what has to survive it. One engine owns it at a time.
///
/// Threads: none of its operations may run at the same time as another.
#ifndef ZANENGINE_SERVER_ENGINE_DATAFOLDER_H
#define ZANENGINE_SERVER_ENGINE_DATAFOLDER_H

#include <string>

namespace zan::server {

class DataFolder {
public:
    /// Makes the folder where it is missing, and takes it for this engine. Nobody else has rights
    /// to it then; a folder of this user's loses those that others have, unless it is one for
    /// everybody (as `/tmp`). Throws `WrongConfigurationException` when it cannot be made or
    /// written, and when another engine has it; the text then tells which process on which machine.
    explicit DataFolder(std::string path);
    ~DataFolder();
    DataFolder(DataFolder const&) = delete;
    DataFolder& operator=(DataFolder const&) = delete;

    std::string const& path() const { return path_; }

    /// What an operator should know of the folder's rights; empty when others have none.
    std::string const& warning() const { return warning_; }

    /// To be called every few hundred milliseconds: makes the lock anew when it was deleted or
    /// moved away, so that no other engine takes the folder. What happened to it, once; empty when
    /// it is nothing new.
    std::string watchLock();

    /// Of a new folder with a name of its own under the system's folder for temporary files. Throws
    /// `WrongConfigurationException`.
    static std::string makeTemporary();

private:
    std::string lockPath() const { return path_ + "/lock"; }
    bool isLockInPlace() const;
    void takeLock();

    std::string const path_;
    std::string warning_;
    std::string news_;
    int lockFile_ = -1;
};

} // namespace zan::server

#endif
