/// The filter of one guaranteed listener: which messages it wants to get.
///
/// Threads: any.
#ifndef ZANENGINE_SERVER_ENGINE_MESSAGEFILTER_H
#define ZANENGINE_SERVER_ENGINE_MESSAGEFILTER_H

#include "server/log/MessageLog.h"

#include <memory>
#include <mutex>
#include <string>

namespace zan::server {

class MessageFilter {
public:
    /// An expression over the columns of the message log; empty lets everything through. Throws
    /// `BadExpression`, and the filter stays as it was.
    void setExpression(std::string const& expression);
    std::string expression() const;

    /// Throws `BadExpression` when the expression fails on this message.
    bool passes(FixEntry const& entry);

private:
    mutable std::mutex mutex_;
    std::string expression_;
    std::unique_ptr<EntryFilter> filter_;
};

} // namespace zan::server

#endif
