#include "server/log/OrderIndex.h"
#include "server/log/LogReader.h"
#include "server/log/OrderIndexFile.h"
#include "server/log/OrderKeys.h"

#include <sqlite3.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include <unistd.h>

namespace zan::server {

namespace {

bool isBroken(SqliteFailure const& failure) {
    return failure.code() == SQLITE_CORRUPT || failure.code() == SQLITE_NOTADB ||
           failure.code() == SQLITE_ERROR;
}

bool hasKey(OrderKeys const& order, std::string const& key) {
    return std::ranges::find(order, key) != order.end();
}

// Follows orders from message to message until there is nothing new.
class Chain {
public:
    explicit Chain(ReadConnection& log) : reader_(log) {}

    void addKey(std::string const& key) {
        if (known_.insert(key).second) {
            waiting_.push_back(key);
        }
    }

    void addMessage(long id) {
        for (OrderKeys const& order : ordersIn(id)) {
            addOrder(id, order);
        }
    }

    template <class Find>
    std::vector<long> follow(Find const& find) {
        while (!waiting_.empty()) {
            std::string const key = waiting_.back();
            waiting_.pop_back();
            for (long const id : find(key)) {
                for (OrderKeys const& order : ordersIn(id)) {
                    if (hasKey(order, key)) {
                        addOrder(id, order);
                    }
                }
            }
        }
        return {found_.begin(), found_.end()};
    }

private:
    void addOrder(long id, OrderKeys const& order) {
        found_.insert(id);
        for (std::string const& key : order) {
            addKey(key);
        }
    }

    // As the message is now, which the index may not know.
    std::vector<OrderKeys> const& ordersIn(long id) {
        auto const [known, isNew] = orders_.try_emplace(id);
        if (isNew) {
            std::optional<LogRow> const row = reader_.row(id);
            if (row && !row->isHidden) {
                known->second = ordersOf(row->entry.text);
            }
        }
        return known->second;
    }

    LogReader reader_;
    std::set<long> found_;
    std::set<std::string> known_;
    std::vector<std::string> waiting_;
    std::map<long, std::vector<OrderKeys>> orders_;
};

} // namespace

OrderIndex::OrderIndex(std::string file, std::int64_t logIdentity, long lastOfLog)
    : file_(std::move(file)), logIdentity_(logIdentity), lastOfLog_(lastOfLog) {}

OrderIndex::~OrderIndex() {
    try {
        if (open_) {
            open_->close();
        }
    } catch (LogFailure const&) {
        // It will be made anew.
        open_.reset();
    }
}

bool OrderIndex::takeStep(ReadConnection& log) {
    bool hasMore = false;
    withFile([&](OrderIndexFile& file) { hasMore = file.takeStep(log); });
    return hasMore;
}

std::vector<long> OrderIndex::chain(ReadConnection& log, std::vector<int> const& ids,
                                    std::vector<std::string> const& clientOrderIds) {
    std::vector<long> found;
    withFile([&](OrderIndexFile& file) {
        while (file.takeStep(log)) {
        }
        Chain chain(log);
        for (std::string const& id : clientOrderIds) {
            chain.addKey(clientOrderKey(id));
        }
        for (int const id : ids) {
            chain.addMessage(id);
        }
        found = chain.follow([&](std::string const& key) { return file.find(key); });
    });
    return found;
}

// What is broken is thrown away and made anew, once.
void OrderIndex::withFile(std::function<void(OrderIndexFile&)> const& work) {
    std::lock_guard const lock(mutex_);
    try {
        work(openFile());
    } catch (SqliteFailure const& failure) {
        open_.reset();
        if (!isBroken(failure)) {
            throw;
        }
        removeFile();
        work(openFile());
    }
    reached_ = open_->reached();
}

OrderIndexFile& OrderIndex::openFile() {
    if (open_ && !open_->isInPlace()) {
        open_.reset();
        removeFile();
    }
    if (!open_) {
        auto file = std::make_unique<OrderIndexFile>(file_);
        if (!file->fits(logIdentity_, std::max(lastOfLog_, reached()))) {
            file.reset();
            removeFile();
            file = std::make_unique<OrderIndexFile>(file_);
        }
        file->start(logIdentity_);
        open_ = std::move(file);
    }
    return *open_;
}

void OrderIndex::removeFile() {
    for (char const* const suffix : {"", "-wal", "-shm"}) {
        unlink((file_ + suffix).c_str());
    }
}

} // namespace zan::server
