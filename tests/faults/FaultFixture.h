/// What the tests of faults share: orders that were acknowledged, and what became of them.
#ifndef ZANENGINE_TESTS_FAULTS_FAULTFIXTURE_H
#define ZANENGINE_TESTS_FAULTS_FAULTFIXTURE_H

#include "crash/Evidence.h"
#include "errors/ZANPersistentStorageException.h"
#include "transports/embedded/EmbeddedFixture.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <sstream>
#include <string>
#include <vector>

class FaultTest : public EmbeddedTest {
protected:
    std::string dataFolder() const { return folder_ + "/sessions.cfg.data"; }
    std::string logFile() const { return dataFolder() + "/C.log"; }

    /// Sends one order; it counts as acknowledged when this returns.
    long send(std::string const& more = "") {
        std::string const id = "A-" + std::to_string(acknowledged_.size());
        long const number = engine().sendMessage(me, "C", order(id) + more);
        acknowledged_.push_back(id);
        return number;
    }

    void send(int count) {
        for (int i = 0; i < count; ++i) {
            send();
        }
    }

    /// The text of the failure that the storage tells, after as many orders as it still took; for
    /// any other end what happened.
    std::string sendUntilRefused() {
        return failureOf<ZANPersistentStorageException>([this] { send(50000); });
    }

    static bool hasStorageError() {
        return (engine().getConnectionState(me, "C")->getState() & FLAG_DB_ERROR) != 0;
    }

    static std::string lastError() { return engine().getConnectionState(me, "C")->getLastError(); }

    /// The values of a field in the log's messages of a stream, by sequence number.
    static std::map<int, std::string> inLog(int stream, int tag) {
        std::vector<std::vector<std::string>> table;
        engine().retrieveMessageLogData(me, "C", stream, "seq,text", "", "", table);
        std::map<int, std::string> values;
        for (std::size_t i = 1; i < table.size(); ++i) {
            std::ranges::replace(table[i][1], '\x01', '|');
            EXPECT_TRUE(
                values.emplace(std::stoi(table[i][0]), crash::fieldOf(table[i][1], tag)).second)
                << "number " << table[i][0] << " twice";
        }
        return values;
    }

    static std::map<int, std::string> ordersInLog() { return inLog(3, 11); }

    /// The same as the counterparty has got them, leaving repetitions out.
    std::map<int, std::string> ordersAtCounterparty() {
        std::map<int, std::string> orders;
        for (std::string const& line : acceptor_->lines()) {
            bool const isOrder = line.find("in ") == 0 && line.find("|35=D|") != std::string::npos;
            if (isOrder && line.find("|43=Y|") == std::string::npos) {
                EXPECT_TRUE(orders.emplace(crash::numberOf(line), crash::fieldOf(line, 11)).second)
                    << line;
            }
        }
        return orders;
    }

    /// What was acknowledged, and nothing else, is in the log and at the counterparty, under
    /// numbers without a gap.
    void expectAcknowledgedEverywhere() {
        ASSERT_FALSE(acceptor_->waitForLine("|11=" + acknowledged_.back() + "|").empty());
        std::map<int, std::string> const sent = ordersInLog();
        ASSERT_EQ(sent.size(), acknowledged_.size());
        std::size_t next = 0;
        int const first = sent.begin()->first;
        for (auto const& [number, id] : sent) {
            EXPECT_EQ(number, first + static_cast<int>(next));
            EXPECT_EQ(id, acknowledged_[next++]);
        }
        EXPECT_EQ(ordersAtCounterparty(), sent);
    }

    std::vector<std::string> acknowledged_;
};

#endif
