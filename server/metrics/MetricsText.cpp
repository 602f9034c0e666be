#include "server/metrics/MetricsText.h"

#include "server/metrics/FamilyWriter.h"

#include <array>
#include <functional>

namespace zan::server {

namespace {

using Connections = std::vector<ConnectionFigures>;

constexpr std::array<char const*, streamCount> streamNames = {"admin_in", "admin_out", "app_in",
                                                              "app_out", "resent"};

double seconds(std::chrono::nanoseconds time) {
    return std::chrono::duration<double>(time).count();
}

void addStates(FamilyWriter& families, Connections const& connections) {
    families.begin("zan_link_up", "1 while the link to the counterparty is open.", Kind::Gauge);
    for (ConnectionFigures const& each : connections) {
        families.add({{"connection", each.name}}, each.state.has(FLAG_LINK_ACTIVE));
    }
    families.begin("zan_logged_on", "1 while the session is logged on.", Kind::Gauge);
    for (ConnectionFigures const& each : connections) {
        families.add({{"connection", each.name}}, each.state.has(FLAG_SESSION_ACTIVE));
    }
    families.begin("zan_storage_failing", "1 while messages cannot be stored.", Kind::Gauge);
    for (ConnectionFigures const& each : connections) {
        families.add({{"connection", each.name}}, each.state.has(FLAG_DB_ERROR));
    }
}

void addTypes(FamilyWriter& families, std::string const& connection, char const* direction,
              std::vector<TypeCount> const& counts) {
    for (TypeCount const& each : counts) {
        families.add({{"connection", connection}, {"direction", direction}, {"type", each.type}},
                     static_cast<double>(each.count));
    }
}

void addRejects(FamilyWriter& families, std::string const& connection, char const* direction,
                std::vector<TypeCount> const& counts) {
    for (TypeCount const& each : counts) {
        if (each.type == "3" || each.type == "j") {
            families.add({{"connection", connection},
                          {"direction", direction},
                          {"kind", each.type == "3" ? "session" : "business"}},
                         static_cast<double>(each.count));
        }
    }
}

void addTraffic(FamilyWriter& families, Connections const& connections) {
    families.begin("zan_messages_total", "Messages that went over the wire, by direction and type.",
                   Kind::Counter);
    for (ConnectionFigures const& each : connections) {
        addTypes(families, each.name, "in", each.traffic.in);
        addTypes(families, each.name, "out", each.traffic.out);
    }
    families.begin("zan_rejects_total", "Rejects that came in and went out: 35=3 and 35=j.",
                   Kind::Counter);
    for (ConnectionFigures const& each : connections) {
        addRejects(families, each.name, "in", each.traffic.in);
        addRejects(families, each.name, "out", each.traffic.out);
    }
    families.begin("zan_resent_messages_total", "Application messages that were sent again.",
                   Kind::Counter);
    for (ConnectionFigures const& each : connections) {
        families.add({{"connection", each.name}, {"asked_by", "counterparty"}},
                     static_cast<double>(each.traffic.resentOnRequest));
        families.add({{"connection", each.name}, {"asked_by", "application"}},
                     static_cast<double>(each.traffic.resentByApplication));
    }
}

// One counter of each connection.
void addCounter(FamilyWriter& families, Connections const& connections, char const* name,
                char const* help,
                std::function<std::uint64_t(ConnectionFigures const&)> const& value) {
    families.begin(name, help, Kind::Counter);
    for (ConnectionFigures const& each : connections) {
        families.add({{"connection", each.name}}, static_cast<double>(value(each)));
    }
}

// One gauge of each connection.
void addGauge(FamilyWriter& families, Connections const& connections, char const* name,
              char const* help, std::function<double(ConnectionFigures const&)> const& value) {
    families.begin(name, help, Kind::Gauge);
    for (ConnectionFigures const& each : connections) {
        families.add({{"connection", each.name}}, value(each));
    }
}

void addOtherCounters(FamilyWriter& families, Connections const& connections) {
    addCounter(families, connections, "zan_refused_messages_total",
               "Messages that came in and were not accepted.",
               [](ConnectionFigures const& each) { return each.traffic.refused; });
    addCounter(families, connections, "zan_posted_messages_total",
               "Messages that applications posted for the listeners.",
               [](ConnectionFigures const& each) { return each.traffic.posted; });
    addCounter(families, connections, "zan_listener_failures_total",
               "Exceptions that listeners threw.",
               [](ConnectionFigures const& each) { return each.traffic.listenerFailures; });
    addCounter(families, connections, "zan_log_commit_failures_total",
               "Commits to the message log that failed.",
               [](ConnectionFigures const& each) { return each.commits.failures; });
}

void addNumbers(FamilyWriter& families, Connections const& connections) {
    families.begin("zan_next_sequence_number",
                   "The sequence number that the next message will carry.", Kind::Gauge);
    for (ConnectionFigures const& each : connections) {
        families.add({{"connection", each.name}, {"direction", "out"}}, each.numbers.nextOut);
        families.add({{"connection", each.name}, {"direction", "in"}}, each.numbers.nextIn);
    }
}

FamilyWriter::Labels labelsOf(std::string const& connection, LogMark const& mark) {
    return {{"connection", connection},
            {"subscriber", mark.subscriber},
            {"stream", streamNames[static_cast<std::size_t>(mark.stream)]}};
}

void addMarks(FamilyWriter& families, Connections const& connections) {
    families.begin("zan_mark", "The highest message id that a guaranteed listener has consumed.",
                   Kind::Gauge);
    for (ConnectionFigures const& each : connections) {
        for (MarkFigures const& figures : each.marks) {
            families.add(labelsOf(each.name, figures.mark), figures.mark.id);
        }
    }
    families.begin("zan_mark_lag",
                   "From the mark to the newest message of the stream, in message ids.",
                   Kind::Gauge);
    for (ConnectionFigures const& each : connections) {
        for (MarkFigures const& figures : each.marks) {
            families.add(labelsOf(each.name, figures.mark), static_cast<double>(figures.lag));
        }
    }
}

void addQueues(FamilyWriter& families, Connections const& connections) {
    addGauge(families, connections, "zan_delivery_queue_length",
             "Events that wait for the listeners.",
             [](ConnectionFigures const& each) { return static_cast<double>(each.deliveryQueue); });
    addGauge(families, connections, "zan_delivery_seconds",
             "How long the delivery that is under way has taken.",
             [](ConnectionFigures const& each) { return seconds(each.delivery); });
    addGauge(families, connections, "zan_send_queue_length",
             "Sends that wait for their turn to be stored.", [](ConnectionFigures const& each) {
                 return static_cast<double>(each.waitingSenders);
             });
    addGauge(families, connections, "zan_unsent_bytes",
             "Bytes that wait for the counterparty to read them.",
             [](ConnectionFigures const& each) { return static_cast<double>(each.unsentBytes); });
}

void addLog(FamilyWriter& families, Connections const& connections) {
    families.begin("zan_log_commit_seconds", "How long commits to the message log took.",
                   Kind::Histogram);
    for (ConnectionFigures const& each : connections) {
        families.add({{"connection", each.name}}, each.commits);
    }
    families.begin("zan_log_bytes", "What the files of the message log take on the disk.",
                   Kind::Gauge);
    for (ConnectionFigures const& each : connections) {
        families.add({{"connection", each.name}, {"part", "messages"}},
                     static_cast<double>(each.sizes.messages));
        families.add({{"connection", each.name}, {"part", "orders"}},
                     static_cast<double>(each.sizes.orders));
        families.add({{"connection", each.name}, {"part", "reserve"}},
                     static_cast<double>(each.sizes.reserve));
    }
}

void addEngine(FamilyWriter& families, EngineFigures const& figures) {
    families.begin("zan_ailments", "Reasons to call the engine sick, as /healthz lists them.",
                   Kind::Gauge);
    families.add({}, static_cast<double>(figures.ailments));
    families.begin("zan_data_free_bytes", "What the disk of the data folder has left.",
                   Kind::Gauge);
    families.add({}, static_cast<double>(figures.freeBytes));
}

} // namespace

std::string metricsText(EngineFigures const& figures) {
    FamilyWriter families;
    addEngine(families, figures);
    addStates(families, figures.connections);
    addNumbers(families, figures.connections);
    addTraffic(families, figures.connections);
    addOtherCounters(families, figures.connections);
    addMarks(families, figures.connections);
    addQueues(families, figures.connections);
    addLog(families, figures.connections);
    return families.text();
}

} // namespace zan::server
