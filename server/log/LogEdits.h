/// Edits of the log, each with its traces in the audit.
///
/// An edit is made in pieces, each in a transaction of its own, so that sends go in between and the
/// texts of one piece alone are in memory. Before the first piece every row is looked at: an
/// expression that fails on one of them changes nothing. Where the storage fails in the middle, the
/// pieces before stay; their traces have the time at which the edit began.
///
/// Threads: any; one edit at a time.
#ifndef ZANENGINE_SERVER_LOG_LOGEDITS_H
#define ZANENGINE_SERVER_LOG_LOGEDITS_H

#include "server/log/AuditTrail.h"
#include "server/log/LogWriter.h"
#include "server/log/ReadPool.h"
#include "server/log/RowSearch.h"
#include "server/log/SpaceReserve.h"

#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace zan::server {

class EditedRows;

class LogEdits {
public:
    /// Everything given has to outlive the edits.
    LogEdits(WriteConnection& connection, ReadPool& pool, SpaceReserve& reserve)
        : connection_(connection), pool_(pool), reserve_(reserve) {}

    long update(int stream, std::string const& assignments, std::string const& where,
                std::string const& user);
    long remove(int stream, std::string const& where, std::string const& user);

    /// Takes the edits back that the audit has and that `where` is true of: each entry becomes what
    /// it was before the oldest of them.
    long undo(int stream, std::string const& where, std::string const& user);

    /// With the turn. Gives as many of the entries as one piece has, and takes them out.
    static long insert(LogWriter& writer, std::vector<FixEntry>& entries, EditTraces const& traces);

private:
    struct Change {
        long id = 0;
        std::optional<std::string> text;
        std::optional<std::string> note;
    };
    class Assignments;
    using Apply = std::function<void(EditedRows&, LogRow&, Change const&)>;

    /// An entry of the log, and the entry of the audit that tells what it was.
    struct Undone {
        long id = 0;
        long auditEntry = 0;
    };

    // One transaction of an edit: as much as a send may wait for.
    static constexpr std::size_t rowsInPiece = 256;
    static constexpr std::size_t bytesInPiece = 1024 * 1024;
    static constexpr long noPiece = -1;

    /// Adds up what the pieces tell, until there is none.
    static long countPieces(EditTraces const& traces, std::function<long()> const& next);

    std::vector<Undone> oldestOf(int stream, std::string const& where);
    long undo(std::vector<Undone> const& all, std::size_t& at, EditTraces const& traces);

    long inPieces(SearchTerms terms, Assignments const* wanted, EditTraces const& traces,
                  Apply const& apply);
    static RowSearch searchFor(ReadConnection& connection, SearchTerms const& terms,
                               Assignments const* wanted);
    long lastOf(SearchTerms const& terms, Assignments const* wanted);
    std::vector<Change> pieceOf(SearchTerms const& terms, Assignments const* wanted);
    long write(std::vector<Change> const& piece, EditTraces const& traces, Apply const& apply);

    WriteConnection& connection_;
    ReadPool& pool_;
    SpaceReserve& reserve_;
    std::mutex editing_;
};

} // namespace zan::server

#endif
