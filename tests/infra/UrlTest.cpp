#include "infra/Url.h"

#include "infra/InfraException.h"

#include <gtest/gtest.h>

namespace {

struct Parts {
    char const* text;
    char const* protocol;
    char const* host;
    int port;
    char const* path;
};

class UrlParts : public testing::TestWithParam<Parts> {};

TEST_P(UrlParts, AreCutOut) {
    Url const url(GetParam().text);
    EXPECT_EQ(GetParam().protocol, url.getProtocol());
    EXPECT_EQ(GetParam().host, url.getHost());
    EXPECT_EQ(GetParam().port, url.getPort());
    EXPECT_EQ(GetParam().path, url.getPath());
}

INSTANTIATE_TEST_SUITE_P(
    Table, UrlParts,
    testing::Values(
        Parts{"embedded:demo", "embedded", "", 0, "demo"},
        Parts{"embedded:/x/y?data=z", "embedded", "", 0, "/x/y"},
        Parts{"embedded:./demo", "embedded", "", 0, "./demo"},
        Parts{"embedded:", "embedded", "", 0, ""},
        Parts{"embedded:a:b@c", "embedded", "", 0, "a:b@c"},
        Parts{"Demo+1.2-x:p", "Demo+1.2-x", "", 0, "p"}, Parts{"p://h", "p", "h", 0, ""},
        Parts{"p://h/x", "p", "h", 0, "/x"}, Parts{"p://h?a=b", "p", "h", 0, ""},
        Parts{"p://h:5001/x/y", "p", "h", 5001, "/x/y"}, Parts{"p://h:65535", "p", "h", 65535, ""},
        Parts{"p://h:0", "p", "h", 0, ""}, Parts{"p://[::1]:5001/x", "p", "::1", 5001, "/x"},
        Parts{"p://[fe80::2]", "p", "fe80::2", 0, ""},
        Parts{"p://user:pw@h:1/x", "p", "h", 1, "/x"}, Parts{"p:///x", "p", "", 0, "/x"},
        Parts{"p://", "p", "", 0, ""}, Parts{"p:/a%20b%2Fc%c3%A4", "p", "", 0, "/a b/c\xc3\xa4"},
        Parts{"p:a#b", "p", "", 0, "a#b"}, Parts{"p:a+b", "p", "", 0, "a+b"},
        Parts{"p:x?a=/y?z", "p", "", 0, "x"}, Parts{"p://h?mail=a@b/c:d", "p", "h", 0, ""}));

struct Credentials {
    char const* text;
    char const* user;
    char const* password;
    char const* shown;
};

class UrlCredentials : public testing::TestWithParam<Credentials> {};

TEST_P(UrlCredentials, AreDecodedAndThePasswordIsMaskedInTheText) {
    Url const url(GetParam().text);
    EXPECT_EQ(GetParam().user, url.getUser());
    EXPECT_EQ(GetParam().password, url.getPassword());
    EXPECT_EQ(GetParam().shown, url.toString());
}

INSTANTIATE_TEST_SUITE_P(
    Table, UrlCredentials,
    testing::Values(Credentials{"p://h/x", "", "", "p://h/x"},
                    Credentials{"p://u@h/x", "u", "", "p://u@h/x"},
                    Credentials{"p://u:@h/x", "u", "", "p://u:@h/x"},
                    Credentials{"p://u:pw@h:1/x?a=b", "u", "pw", "p://u:***@h:1/x?a=b"},
                    Credentials{"p://u:a:b@h", "u", "a:b", "p://u:***@h"},
                    Credentials{"p://u:a@b@h", "u", "a@b", "p://u:***@h"},
                    Credentials{"p://:pw@h", "", "pw", "p://:***@h"},
                    Credentials{"p://u%40x:p%2Fw@h/%20", "u@x", "p/w", "p://u%40x:***@h/%20"},
                    Credentials{"p://u:u@u/u", "u", "u", "p://u:***@u/u"}));

TEST(Url, DecodesNamesAndValuesOfParameters) {
    Url const url("p:x?data=%2Ftmp%26&a%20b=c&filter=35=D&plain");
    EXPECT_EQ("/tmp&", url.getParameter("data", "none"));
    EXPECT_EQ("c", url.getParameter("a b", "none"));
    EXPECT_EQ("35=D", url.getParameter("filter", "none"));
    EXPECT_EQ("", url.getParameter("plain", "none"));
}

TEST(Url, AnswersTheDefaultForAnAbsentParameter) {
    EXPECT_EQ("none", Url("p:x").getParameter("a", "none"));
    EXPECT_EQ("none", Url("p:x?").getParameter("a", "none"));
    EXPECT_EQ("none", Url("p:x?A=b").getParameter("a", "none"));
}

TEST(Url, PassesOverEmptyParameters) {
    Url const url("p:x?&a=b&&c=d&");
    EXPECT_EQ("b", url.getParameter("a", "none"));
    EXPECT_EQ("d", url.getParameter("c", "none"));
}

TEST(Url, CopiesAreIndependent) {
    Url url("p://h/x");
    Url const copy(url);
    url = Url("q://g/y");
    EXPECT_EQ("p://h/x", copy.toString());
    EXPECT_EQ("q://g/y", url.toString());
}

struct Fault {
    char const* text;
    char const* what;
    int character;
};

std::string messageFor(std::string const& text) {
    try {
        Url const url(text);
    } catch (InfraException const& fault) {
        return fault.getMessage();
    }
    return "accepted";
}

class UrlFaults : public testing::TestWithParam<Fault> {};

TEST_P(UrlFaults, AreToldWithTheirPlaceAndTheRightForm) {
    std::string const message = messageFor(GetParam().text);
    std::string const place = " at character " + std::to_string(GetParam().character) + ". ";
    EXPECT_NE(std::string::npos, message.find(GetParam().what)) << message;
    EXPECT_NE(std::string::npos, message.find(place)) << message;
    EXPECT_NE(std::string::npos, message.find("Write it as protocol:path")) << message;
}

INSTANTIATE_TEST_SUITE_P(
    Table, UrlFaults,
    testing::Values(
        Fault{"", "it is empty", 1}, Fault{":x", "begin with a letter", 1},
        Fault{"1p:x", "begin with a letter", 1}, Fault{"/x", "begin with a letter", 1},
        Fault{"..:x", "begin with a letter", 1}, Fault{"demo", "the ':'", 5},
        Fault{"p/../q:x", "the protocol has a sign", 2},
        Fault{"p_q:x", "the protocol has a sign", 2},
        Fault{"p\xc3\xa4:x", "the protocol has a sign", 2},
        Fault{"p:a b", "a blank or a control character", 4},
        Fault{" p:a", "a blank or a control character", 1},
        Fault{"p:a\n", "a blank or a control character", 4},
        Fault{"p:a\x7f", "a blank or a control character", 4},
        Fault{"p:a%", "two hexadecimal digits", 4}, Fault{"p:a%4", "two hexadecimal digits", 4},
        Fault{"p:a%4g", "two hexadecimal digits", 4}, Fault{"p:a%g4", "two hexadecimal digits", 4},
        Fault{"p://u%:pw@h", "two hexadecimal digits", 6},
        Fault{"p:x?a=%z1", "two hexadecimal digits", 7},
        Fault{"p:x?%=1", "two hexadecimal digits", 5},
        Fault{"p:x?=1", "the name of a parameter", 5},
        Fault{"p:x?a=1&b=2&a=3", "for the second time", 13},
        Fault{"p://h:", "the port is missing", 7}, Fault{"p://h:/x", "the port is missing", 7},
        Fault{"p://h:12a", "the port is no number", 9},
        Fault{"p://h:-1", "the port is no number", 7},
        Fault{"p://h:65536", "greater than 65535", 7},
        Fault{"p://h:99999999999999999999", "greater than 65535", 7},
        Fault{"p://fe80::2/x", "stands in brackets", 10}, Fault{"p://[::1/x", "the ']'", 9},
        Fault{"p://[::1]5001", "a ':' and a port", 10},
        Fault{"p://:5001", "the host is missing", 5},
        Fault{"p://u:pw@/x", "the host is missing", 10},
        Fault{"p://[]/x", "the host is missing", 5}));

TEST(Url, KeepsAPasswordOutOfItsComplaints) {
    EXPECT_EQ(std::string::npos, messageFor("p://user:hunter2@h:port").find("hunter2"));
}

TEST(Url, RefusesAZeroByte) {
    EXPECT_NE("accepted", messageFor(std::string("p:a\0b", 5)));
}

} // namespace
