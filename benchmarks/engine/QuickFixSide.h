/// QuickFIX alone: one session with its own FileStore, without a log.
///
/// The header is read by sources of two language levels.
#ifndef ZANENGINE_BENCHMARKS_ENGINE_QUICKFIXSIDE_H
#define ZANENGINE_BENCHMARKS_ENGINE_QUICKFIXSIDE_H

#include "benchmarks/engine/OrderSender.h"

#include <memory>
#include <string>

namespace bench {

/// `plain` has one thread for all its sockets and hands it what is sent; `threaded` has a thread
/// for each session and sends on the caller's.
enum class Initiator { plain, threaded };

class QuickFixSide : public OrderSender {
public:
    /// Logs on to the counterparty on this port of the loopback. Throws std::runtime_error when
    /// that does not happen within ten seconds.
    QuickFixSide(Initiator initiator, std::string const& sender, int port,
                 std::string const& folder, OnReport const& onReport);
    ~QuickFixSide() override;

    void send(std::string const& clientOrderId) override;

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace bench

#endif
