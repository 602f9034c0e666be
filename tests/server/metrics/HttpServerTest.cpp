#include "server/metrics/HttpServer.h"

#include "support/HttpClient.h"

#include <gtest/gtest.h>

#include <chrono>
#include <list>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <thread>

namespace {

using namespace zan::server;
using Clock = std::chrono::steady_clock;

class HttpServerTest : public testing::Test {
protected:
    void start(HttpServer::Answer answer) {
        server_.emplace(ListenAddress{"127.0.0.1", 0}, std::move(answer));
    }

    void startEcho() {
        start([](std::string const& path) { return HttpAnswer{200, "you asked for " + path}; });
    }

    int port() const { return server_->address().port; }

    std::optional<HttpServer> server_;
};

TEST_F(HttpServerTest, AnswersOnThePortThatTheSystemPicked) {
    startEcho();
    ASSERT_GT(port(), 0);
    HttpReply const reply = httpGet(port(), "/page");
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body, "you asked for /page");
    EXPECT_NE(reply.head.find("Content-Type: text/plain; charset=utf-8"), std::string::npos);
}

TEST_F(HttpServerTest, LeavesTheQueryOutOfThePath) {
    startEcho();
    EXPECT_EQ(httpGet(port(), "/page?x=1").body, "you asked for /page");
}

TEST_F(HttpServerTest, AnswersHeadWithoutTheText) {
    startEcho();
    HttpReply const reply = httpRequest(port(), "HEAD", "/page");
    EXPECT_EQ(reply.status, 200);
    EXPECT_NE(reply.head.find("Content-Length: 19"), std::string::npos) << reply.head;
    EXPECT_EQ(reply.body, "");
}

TEST_F(HttpServerTest, RefusesOtherMethods) {
    startEcho();
    for (char const* method : {"POST", "PUT", "DELETE", "OPTIONS", "NONSENSE"}) {
        HttpReply const reply = httpRequest(port(), method, "/page", "content");
        EXPECT_EQ(reply.status, 405) << method;
        EXPECT_NE(reply.head.find("Allow: GET, HEAD"), std::string::npos) << method;
    }
}

TEST_F(HttpServerTest, AnswersWithTheReasonWhenAnAnswerFails) {
    start([](std::string const& path) -> HttpAnswer {
        if (path == "/odd") {
            throw 7;
        }
        throw std::runtime_error("no figures today");
    });
    HttpReply const reply = httpGet(port(), "/page");
    EXPECT_EQ(reply.status, 500);
    EXPECT_EQ(reply.body, "no figures today\n");
    EXPECT_EQ(httpGet(port(), "/odd").status, 500);
}

TEST_F(HttpServerTest, SurvivesWhatIsNoHttp) {
    startEcho();
    for (std::string const& bytes :
         {std::string("\r\n\r\n"), std::string("8=FIX.4.4\x01"), std::string(100'000, 'x'),
          std::string(1000, '\0'), std::string("GET " + std::string(50'000, 'a') + " HTTP/1.1\r\n"),
          std::string("GET / HTTP/1.1\r\nContent-Length: -5\r\n\r\n")}) {
        HttpConnection const connection(port());
        connection.send(bytes);
    }
    EXPECT_EQ(httpGet(port(), "/page").status, 200);
}

TEST_F(HttpServerTest, ServesOthersWhileAClientSendsNothing) {
    startEcho();
    HttpConnection const silent(port());
    HttpConnection const half(port());
    half.send("GET /page HT");
    auto const before = Clock::now();
    EXPECT_EQ(httpGet(port(), "/page").status, 200);
    EXPECT_LT(Clock::now() - before, std::chrono::seconds(3));
}

TEST_F(HttpServerTest, TakesAClientAfterSilentOnesHadTheirTime) {
    startEcho();
    std::list<HttpConnection> silent;
    for (int i = 0; i < 60; ++i) {
        silent.emplace_back(port());
    }
    auto const deadline = Clock::now() + std::chrono::seconds(15);
    int status = 0;
    while (status != 200 && Clock::now() < deadline) {
        try {
            status = httpGet(port(), "/page").status;
        } catch (std::runtime_error const&) {
            status = 0; // turned away
        }
    }
    EXPECT_EQ(status, 200);
}

TEST_F(HttpServerTest, EndsAtOnceWithClientsThatWait) {
    startEcho();
    HttpConnection const silent(port());
    httpGet(port(), "/page");
    auto const before = Clock::now();
    server_.reset();
    EXPECT_LT(Clock::now() - before, std::chrono::seconds(1));
    EXPECT_EQ(silent.readAll(), "");
}

TEST_F(HttpServerTest, TellsWhichAddressItCannotListenOn) {
    startEcho();
    try {
        HttpServer const second({"127.0.0.1", port()},
                                [](std::string const&) { return HttpAnswer(); });
        FAIL() << "two servers on one port";
    } catch (std::runtime_error const& e) {
        EXPECT_EQ(std::string(e.what()), "cannot listen on 127.0.0.1:" + std::to_string(port()) +
                                             ": Address already in use");
    }
}

/// Clients that send a byte now and then, which never makes a whole request.
class SlowClients {
public:
    SlowClients(int port, int count) {
        for (int i = 0; i < count; ++i) {
            clients_.emplace_back(port);
        }
    }

    void sendAByteEach() {
        for (HttpConnection const& client : clients_) {
            client.send("G");
        }
    }

    HttpConnection const& first() const { return clients_.front(); }

private:
    std::list<HttpConnection> clients_;
};

TEST_F(HttpServerTest, AnswersBesideManySlowClients) {
    startEcho();
    SlowClients slow(port(), 100);
    for (int i = 0; i < 5; ++i) {
        slow.sendAByteEach();
        auto const before = Clock::now();
        EXPECT_EQ(httpGet(port(), "/page").status, 200);
        EXPECT_LT(Clock::now() - before, std::chrono::seconds(4));
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }
}

TEST_F(HttpServerTest, CutsOffARequestThatTakesTooLong) {
    startEcho();
    SlowClients slow(port(), 1);
    auto const before = Clock::now();
    std::jthread const sending([&](std::stop_token const& isEnough) {
        while (!isEnough.stop_requested()) {
            slow.sendAByteEach();
            std::this_thread::sleep_for(std::chrono::milliseconds(500));
        }
    });
    slow.first().readAll();
    EXPECT_GT(Clock::now() - before, std::chrono::seconds(5)); // longer than without a byte
    EXPECT_LT(Clock::now() - before, std::chrono::seconds(18));
}

} // namespace
