#include "server/log/AheadScan.h"

#include <cerrno>
#include <cstddef>
#include <system_error>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace zan::server {

namespace {

constexpr std::uint32_t magic = 0x377f0682; // the lowest bit tells the order of bytes in checksums
constexpr int leastPage = 512;
constexpr int mostPage = 65'536;

using Byte = unsigned char;

std::uint32_t bigEndian(Byte const* bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
           std::uint32_t{bytes[2]} << 8 | bytes[3];
}

std::uint32_t littleEndian(Byte const* bytes) {
    return std::uint32_t{bytes[3]} << 24 | std::uint32_t{bytes[2]} << 16 |
           std::uint32_t{bytes[1]} << 8 | bytes[0];
}

std::uint64_t wordAt(Byte const* bytes) {
    return std::uint64_t{bigEndian(bytes)} << 32 | bigEndian(bytes + 4);
}

// Each frame's goes on from the one before it.
class Checksum {
public:
    bool isBigEndian = false;

    void add(Byte const* bytes, int count) {
        for (Byte const* const end = bytes + count; bytes < end; bytes += 8) {
            first_ += (isBigEndian ? bigEndian(bytes) : littleEndian(bytes)) + second_;
            second_ += (isBigEndian ? bigEndian(bytes + 4) : littleEndian(bytes + 4)) + first_;
        }
    }

    bool isAt(Byte const* bytes) const {
        return bigEndian(bytes) == first_ && bigEndian(bytes + 4) == second_;
    }

private:
    std::uint32_t first_ = 0;
    std::uint32_t second_ = 0;
};

// Less than was asked for at the end of the file only.
std::size_t readAt(int file, std::int64_t offset, std::vector<Byte>& bytes) {
    std::size_t read = 0;
    while (read < bytes.size()) {
        ssize_t const now = pread(file, bytes.data() + read, bytes.size() - read,
                                  static_cast<off_t>(offset + static_cast<std::int64_t>(read)));
        if (now < 0 && errno != EINTR) {
            throw std::system_error(errno, std::generic_category());
        }
        if (now == 0) {
            break;
        }
        read += now > 0 ? static_cast<std::size_t>(now) : 0;
    }
    return read;
}

std::int64_t sizeOf(int file) {
    struct stat found {};
    if (fstat(file, &found) != 0) {
        throw std::system_error(errno, std::generic_category());
    }
    return found.st_size;
}

bool isPageSize(int size) {
    return size >= leastPage && size <= mostPage && (size & (size - 1)) == 0;
}

void readHead(int file, AheadScan& scan, Checksum& sum) {
    std::vector<Byte> head(aheadHeadSize);
    if (readAt(file, 0, head) < head.size()) {
        return;
    }
    sum.isBigEndian = (head[3] & 1) != 0;
    sum.add(head.data(), frameHeadSize);
    scan.pageSize = static_cast<int>(bigEndian(&head[8]));
    scan.salts = wordAt(&head[16]);
    scan.hasHead =
        (bigEndian(head.data()) & ~1u) == magic && isPageSize(scan.pageSize) && sum.isAt(&head[24]);
}

} // namespace

// Frames behind a bad one that carry the salts of the head were written after it: it was good once.
// A process that is killed while it writes leaves nothing of that kind, for a frame is written
// once, behind all others.
AheadScan scanAhead(int file) {
    AheadScan scan;
    scan.size = sizeOf(file);
    Checksum sum;
    readHead(file, scan, sum);
    if (!scan.hasHead) {
        return scan;
    }
    std::vector<Byte> frame(static_cast<std::size_t>(frameHeadSize + scan.pageSize));
    auto const frameSize = static_cast<std::int64_t>(frame.size());
    long firstBad = 0;
    for (std::int64_t at = aheadHeadSize; readAt(file, at, frame) == frame.size();
         at += frameSize) {
        bool const isOurs = wordAt(&frame[8]) == scan.salts && bigEndian(frame.data()) != 0;
        sum.add(frame.data(), 8);
        sum.add(frame.data() + frameHeadSize, scan.pageSize);
        bool const isCommit = bigEndian(&frame[4]) != 0;
        if (firstBad == 0 && isOurs && sum.isAt(&frame[16])) {
            scan.lastFrame = isCommit ? at : scan.lastFrame;
            scan.committedEnd = isCommit ? at + frameSize : scan.committedEnd;
            continue;
        }
        if (firstBad == 0) {
            firstBad = static_cast<long>((at - aheadHeadSize) / frameSize) + 1;
        } else if (isOurs) {
            scan.badFrame = firstBad;
            scan.commitsBehind += isCommit ? 1 : 0;
        }
    }
    return scan;
}

} // namespace zan::server
