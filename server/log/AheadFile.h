/// The write-ahead file of a database, one descriptor for all connections of this process.
///
/// It knows up to where the file counts: what was written behind that belongs to a commit that is
/// under way, or that failed, and is cut off before anybody is told of the failure. SQLite alone
/// would leave it in the file, where the next process would find it as good as any other commit.
///
/// Threads: reading any; the rest is for whoever writes, one at a time.
#ifndef ZANENGINE_SERVER_LOG_AHEADFILE_H
#define ZANENGINE_SERVER_LOG_AHEADFILE_H

#include "server/log/AheadScan.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include <sys/types.h>

namespace zan::server {

class AheadFile {
public:
    /// Where the file counts up to.
    struct Place {
        std::uint64_t salts = 0;
        std::int64_t end = 0;
    };

    /// The file under this path, made where it is missing; the same object as long as anybody has
    /// it. Null with `errno`.
    static std::shared_ptr<AheadFile> open(std::string const& path);

    ~AheadFile();
    AheadFile(AheadFile const&) = delete;
    AheadFile& operator=(AheadFile const&) = delete;

    // What SQLite asks for. A failure leaves its reason in `errno`.

    /// How many bytes there were, -1 for a failure.
    ssize_t read(void* bytes, std::size_t count, std::int64_t offset) const;
    bool write(void const* bytes, std::size_t count, std::int64_t offset);
    bool sync();
    bool truncate(std::int64_t size);
    std::int64_t size() const;

    // What makes commits count.

    /// Asked when a commit is on the disk: false makes it fail.
    void watchCommits(std::function<bool()> isSound);

    /// Asked before the file begins anew, when all that it holds lies in the database itself: false
    /// makes that fail.
    void watchRestarts(std::function<bool()> mayRestart);

    /// Everything up to the end of the last commit counts, what lies behind is cut off.
    void start();

    /// What was written counts.
    void accept();

    /// Was anything written that does not count yet?
    bool hasOpenEnd() const { return isTouched_; }

    /// Cuts off what was written and does not count. False when it may still be in the file after
    /// the process has ended, or the machine.
    bool undo();

    /// What could not be written for good, or not be cut off, is made good: all that counts is
    /// read, found to be what was written, written again, and on the disk. False when that fails;
    /// there must not be a commit before it works.
    bool settle();

    /// A new file takes the place of one that was lost. Nothing of that may be needed any more.
    bool replace();

    /// Is what counts still there, as far as the file's size tells, and the frames that were the
    /// last ones now and when this was asked before?
    bool isIntact();

    bool isSameFile(dev_t device, ino_t number) const;
    Place place() const { return {salts_, counts_}; }
    std::string const& path() const { return path_; }

private:
    AheadFile(std::string path, int file) : path_(std::move(path)), file_(file) {}

    struct FrameHead {
        std::int64_t offset = -1;
        std::array<unsigned char, frameHeadSize> bytes{};
    };

    void note(unsigned char const* bytes, std::size_t count, std::int64_t offset);
    bool cutOff();
    bool writeAgain() const;
    bool isThere(FrameHead const& head) const;

    std::string const path_;
    int const file_;
    int pageSize_ = 0;
    std::uint64_t salts_ = 0;
    std::int64_t counts_ = 0;  ///< up to here the file counts
    std::int64_t written_ = 0; ///< up to here this process has written it
    FrameHead newest_;         ///< of what was written
    FrameHead last_;           ///< of what counts
    FrameHead seen_;           ///< that was the last one when somebody looked
    bool isTouched_ = false;   ///< written since it was accepted or cut off
    /// There is a whole commit in what was written since; also asked by who syncs for a checkpoint.
    std::atomic<bool> hasCommit_ = false;
    std::atomic<bool> isUnsettled_ = false;
    std::function<bool()> isSound_;
    std::function<bool()> mayRestart_;
};

} // namespace zan::server

#endif
