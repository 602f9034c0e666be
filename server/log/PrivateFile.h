/// Files that only their owner may read and write, from their first moment on.
///
/// Threads: any.
#ifndef ZANENGINE_SERVER_LOG_PRIVATEFILE_H
#define ZANENGINE_SERVER_LOG_PRIVATEFILE_H

#include <string>

namespace zan::server {

/// Opens a regular file with these flags of `open`, and takes away what rights others have to it;
/// one that is made has none for others at any time, whatever the mask of the process. Follows no
/// link, and waits for nobody. -1 with `errno` when that cannot be.
int openPrivate(char const* path, int flags) noexcept;

/// Takes away what rights others have to the file, where there is one. Throws
/// `WrongConfigurationException` when something else lies there, or it cannot be made private.
void makePrivate(std::string const& path);

} // namespace zan::server

#endif
