#include "server/log/LogMarks.h"

#include <algorithm>

namespace zan::server {

LogMarks::LogMarks(WriteConnection& connection) : connection_(connection) {
    Statement rows(connection.database(), "SELECT subscriber,stream,id FROM marks");
    while (rows.step()) {
        marks_[{std::string(rows.bytes(0)), static_cast<int>(rows.number(1))}] =
            static_cast<int>(rows.number(2));
    }
}

std::vector<LogMark> LogMarks::all() const {
    std::vector<LogMark> marks;
    std::lock_guard const lock(mutex_);
    for (auto const& [key, mark] : marks_) {
        if (mark) {
            marks.push_back({key.first, static_cast<FixStream>(key.second), *mark});
        }
    }
    return marks;
}

int LogMarks::mark(std::string const& subscriber, FixStream stream) const {
    std::lock_guard const lock(mutex_);
    auto const found = marks_.find({subscriber, static_cast<int>(stream)});
    return found == marks_.end() ? -1 : found->second.value_or(-1);
}

void LogMarks::set(std::string const& subscriber, FixStream stream, int id) {
    std::lock_guard const lock(mutex_);
    Key const key(subscriber, static_cast<int>(stream));
    std::optional<int>& mark = marks_[key];
    if (id > mark.value_or(-1)) {
        mark = id;
        changed_[key] = id;
    }
}

void LogMarks::reset(std::string const& subscriber) {
    std::lock_guard const lock(mutex_);
    for (auto& [key, mark] : marks_) {
        if (key.first == subscriber && mark) {
            mark.reset();
            changed_[key].reset();
        }
    }
}

void LogMarks::flush() {
    std::lock_guard const flushing(flushing_);
    Marks changed;
    {
        std::lock_guard const lock(mutex_);
        changed.swap(changed_);
    }
    if (changed.empty()) {
        return;
    }
    try {
        write(changed);
    } catch (...) {
        // What was changed again in the meantime is newer.
        std::lock_guard const lock(mutex_);
        changed_.merge(changed);
        throw;
    }
}

void LogMarks::write(Marks const& changed) {
    connection_.transact([&](WriteConnection& connection) {
        Statement put(connection.database(),
                      "INSERT OR REPLACE INTO marks VALUES(?1,?2,?3,row_sum(?1,?2,?3))");
        Statement take(connection.database(),
                       "DELETE FROM marks WHERE subscriber=?1 AND stream=?2");
        for (auto const& [key, mark] : changed) {
            Statement& statement = mark ? put : take;
            statement.bindText(1, key.first).bind(2, key.second);
            if (mark) {
                statement.bind(3, *mark);
            }
            statement.run();
        }
    });
}

} // namespace zan::server
