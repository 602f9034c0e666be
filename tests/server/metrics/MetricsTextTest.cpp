#include "server/metrics/MetricsText.h"

#include "support/PrometheusText.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace {

using namespace zan::server;
using namespace std::chrono_literals;

ConnectionFigures connection(std::string const& name) {
    ConnectionFigures figures;
    figures.name = name;
    figures.state.flags = FLAG_LINK_ACTIVE | FLAG_SESSION_ACTIVE;
    figures.numbers.nextOut = 12;
    figures.numbers.nextIn = 34;
    figures.traffic.in = {{"3", 1}, {"j", 2}, {"8", 30}};
    figures.traffic.out = {{"3", 4}, {"j", 5}, {"D", 60}, {"other", 7}};
    figures.traffic.resentOnRequest = 8;
    figures.traffic.resentByApplication = 9;
    figures.traffic.refused = 10;
    figures.traffic.posted = 11;
    figures.traffic.listenerFailures = 12;
    figures.marks = {{{"risk", FixStream::appIn, 90}, 5}};
    figures.deliveryQueue = 13;
    figures.delivery = 1500ms;
    figures.waitingSenders = 14;
    figures.unsentBytes = 15;
    figures.commits.counts = {1, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    figures.commits.total = 2500ms;
    figures.commits.failures = 16;
    figures.sizes = {1000, 200, 30};
    return figures;
}

PrometheusText textOf(std::vector<ConnectionFigures> const& connections) {
    return PrometheusText(metricsText({connections, 3, 5000}));
}

TEST(MetricsText, HasEveryFigureOfAConnection) {
    PrometheusText const text = textOf({connection("C")});
    EXPECT_EQ(text["zan_link_up{connection=\"C\"}"], 1);
    EXPECT_EQ(text["zan_logged_on{connection=\"C\"}"], 1);
    EXPECT_EQ(text["zan_storage_failing{connection=\"C\"}"], 0);
    EXPECT_EQ(text["zan_next_sequence_number{connection=\"C\",direction=\"out\"}"], 12);
    EXPECT_EQ(text["zan_next_sequence_number{connection=\"C\",direction=\"in\"}"], 34);
    EXPECT_EQ(text["zan_messages_total{connection=\"C\",direction=\"in\",type=\"8\"}"], 30);
    EXPECT_EQ(text["zan_messages_total{connection=\"C\",direction=\"out\",type=\"D\"}"], 60);
    EXPECT_EQ(text["zan_messages_total{connection=\"C\",direction=\"out\",type=\"other\"}"], 7);
    EXPECT_EQ(text["zan_rejects_total{connection=\"C\",direction=\"in\",kind=\"session\"}"], 1);
    EXPECT_EQ(text["zan_rejects_total{connection=\"C\",direction=\"in\",kind=\"business\"}"], 2);
    EXPECT_EQ(text["zan_rejects_total{connection=\"C\",direction=\"out\",kind=\"session\"}"], 4);
    EXPECT_EQ(text["zan_rejects_total{connection=\"C\",direction=\"out\",kind=\"business\"}"], 5);
    EXPECT_EQ(text["zan_resent_messages_total{connection=\"C\",asked_by=\"counterparty\"}"], 8);
    EXPECT_EQ(text["zan_resent_messages_total{connection=\"C\",asked_by=\"application\"}"], 9);
    EXPECT_EQ(text["zan_refused_messages_total{connection=\"C\"}"], 10);
    EXPECT_EQ(text["zan_posted_messages_total{connection=\"C\"}"], 11);
    EXPECT_EQ(text["zan_listener_failures_total{connection=\"C\"}"], 12);
}

TEST(MetricsText, HasTheMarksQueuesAndTheLogOfAConnection) {
    PrometheusText const text = textOf({connection("C")});
    EXPECT_EQ(text["zan_mark{connection=\"C\",subscriber=\"risk\",stream=\"app_in\"}"], 90);
    EXPECT_EQ(text["zan_mark_lag{connection=\"C\",subscriber=\"risk\",stream=\"app_in\"}"], 5);
    EXPECT_EQ(text["zan_delivery_queue_length{connection=\"C\"}"], 13);
    EXPECT_EQ(text["zan_delivery_seconds{connection=\"C\"}"], 1.5);
    EXPECT_EQ(text["zan_send_queue_length{connection=\"C\"}"], 14);
    EXPECT_EQ(text["zan_unsent_bytes{connection=\"C\"}"], 15);
    EXPECT_EQ(text["zan_log_commit_failures_total{connection=\"C\"}"], 16);
    EXPECT_EQ(text["zan_log_commit_seconds_count{connection=\"C\"}"], 4);
    EXPECT_EQ(text["zan_log_commit_seconds_sum{connection=\"C\"}"], 2.5);
    EXPECT_EQ(text["zan_log_commit_seconds_bucket{connection=\"C\",le=\"2.5e-05\"}"], 1);
    EXPECT_EQ(text["zan_log_commit_seconds_bucket{connection=\"C\",le=\"1\"}"], 3);
    EXPECT_EQ(text["zan_log_commit_seconds_bucket{connection=\"C\",le=\"+Inf\"}"], 4);
    EXPECT_EQ(text["zan_log_bytes{connection=\"C\",part=\"messages\"}"], 1000);
    EXPECT_EQ(text["zan_log_bytes{connection=\"C\",part=\"orders\"}"], 200);
    EXPECT_EQ(text["zan_log_bytes{connection=\"C\",part=\"reserve\"}"], 30);
}

TEST(MetricsText, HasTheFiguresOfTheEngine) {
    PrometheusText const text = textOf({});
    EXPECT_EQ(text["zan_ailments"], 3);
    EXPECT_EQ(text["zan_data_free_bytes"], 5000);
    EXPECT_EQ(text.families().size(), 2u);
}

TEST(MetricsText, HasOneSeriesForEachConnection) {
    PrometheusText const text = textOf({connection("C"), connection("D")});
    EXPECT_EQ(text.seriesOf("zan_link_up"), 2);
    EXPECT_EQ(text.seriesOf("zan_messages_total"), 14);
}

TEST(MetricsText, TellsAConnectionThatIsDown) {
    ConnectionFigures down;
    down.name = "C";
    down.state.flags = FLAG_DISCONNECTED | FLAG_DB_ERROR;
    PrometheusText const text = textOf({down});
    EXPECT_EQ(text["zan_link_up{connection=\"C\"}"], 0);
    EXPECT_EQ(text["zan_logged_on{connection=\"C\"}"], 0);
    EXPECT_EQ(text["zan_storage_failing{connection=\"C\"}"], 1);
}

TEST(MetricsText, KeepsItsFormWhateverTheNamesHold) {
    ConnectionFigures odd = connection("a\"b\\c\nd\xc3\xa9 {e=\"f\"},g");
    odd.marks = {{{"\xff", FixStream::resent, 1}, 0}};
    PrometheusText const text = textOf({odd});
    EXPECT_EQ(text[R"(zan_link_up{connection="a\"b\\c%0ad%c3%a9 {e=\"f\"},g"})"], 1);
    EXPECT_EQ(text.seriesOf("zan_mark"), 1);
}

TEST(MetricsText, WritesLargeNumbersExactly) {
    ConnectionFigures large = connection("C");
    large.traffic.out = {{"D", 9'007'199'254'740'991}};
    EXPECT_EQ(textOf({large})["zan_messages_total{connection=\"C\",direction=\"out\",type=\"D\"}"],
              9'007'199'254'740'991.0);
}

} // namespace
