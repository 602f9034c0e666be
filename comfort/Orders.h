/// What reports say about an order.
///
/// Threads: as for `FieldReader`.
#ifndef ZANENGINE_COMFORT_ORDERS_H
#define ZANENGINE_COMFORT_ORDERS_H

#include "comfort/FieldReader.h"
#include "comfort/Tags.h"
#include "comfort/Values.h"

namespace zan {

/// Whether this is an execution report after which the order is not open any more: it is filled,
/// cancelled, rejected, expired or done for the day (OrdStatus, tag 39).
inline bool closesOrder(FieldReader const& report) {
    if (!report.is(MsgType::ExecutionReport)) {
        return false;
    }
    switch (report.get(tag::OrdStatus).value_or(OrdStatus::New)) {
    case OrdStatus::Filled:
    case OrdStatus::DoneForDay:
    case OrdStatus::Cancelled:
    case OrdStatus::Rejected:
    case OrdStatus::Expired:
        return true;
    default:
        return false;
    }
}

} // namespace zan

#endif
