#include "server/metrics/ListenAddress.h"

#include "infra/WrongConfigurationException.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using zan::server::parseListenAddress;

std::string refusalOf(std::string const& text) {
    try {
        return "taken as " + parseListenAddress("engine.metrics", text).toString();
    } catch (WrongConfigurationException const& e) {
        return e.getMessage();
    }
}

TEST(ListenAddress, OfAPortAloneIsOnLoopback) {
    EXPECT_EQ(parseListenAddress("p", "9464").toString(), "127.0.0.1:9464");
    EXPECT_EQ(parseListenAddress("p", "0").toString(), "127.0.0.1:0");
    EXPECT_EQ(parseListenAddress("p", "65535").port, 65535);
}

TEST(ListenAddress, MayNameAnAddressOfEitherFamily) {
    EXPECT_EQ(parseListenAddress("p", "0.0.0.0:80").toString(), "0.0.0.0:80");
    EXPECT_EQ(parseListenAddress("p", "[::1]:9464").host, "::1");
    EXPECT_EQ(parseListenAddress("p", "[::1]:9464").toString(), "[::1]:9464");
}

TEST(ListenAddress, IsRefusedWithWhatWouldBeRight) {
    EXPECT_EQ(refusalOf("65536"),
              "engine.metrics=65536: is no port; a port from 0 to 65535, alone or behind an "
              "address as in 127.0.0.1:9464 or [::1]:9464, would be right");
    EXPECT_EQ(refusalOf("here:80"),
              "engine.metrics=here:80: is no numeric address; a port from 0 to 65535, alone or "
              "behind an address as in 127.0.0.1:9464 or [::1]:9464, would be right");
}

TEST(ListenAddress, IsRefusedWhereItIsNone) {
    for (char const* text : {"", "x", "-1", "+1", "1x", " 1", "127.0.0.1:", ":80", "::1:80",
                             "[::1]", "[]:80", "[1.2.3.4]:80", "1.2.3:80", "1.2.3.4:5:6"}) {
        EXPECT_EQ(refusalOf(text).find("engine.metrics=" + std::string(text) + ": is no "), 0u)
            << refusalOf(text);
    }
}

} // namespace
