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

Parts const PARTS[] = {
    {"embedded:demo", "embedded", "", 0, "demo"},
    {"embedded:/x/y?data=z", "embedded", "", 0, "/x/y"},
    {"embedded:./demo", "embedded", "", 0, "./demo"},
    {"embedded:", "embedded", "", 0, ""},
    {"embedded:a:b@c", "embedded", "", 0, "a:b@c"},
    {"Demo+1.2-x:p", "Demo+1.2-x", "", 0, "p"},
    {"p://h", "p", "h", 0, ""},
    {"p://h/x", "p", "h", 0, "/x"},
    {"p://h?a=b", "p", "h", 0, ""},
    {"p://h:5001/x/y", "p", "h", 5001, "/x/y"},
    {"p://h:65535", "p", "h", 65535, ""},
    {"p://h:0", "p", "h", 0, ""},
    {"p://[::1]:5001/x", "p", "::1", 5001, "/x"},
    {"p://[fe80::2]", "p", "fe80::2", 0, ""},
    {"p://user:pw@h:1/x", "p", "h", 1, "/x"},
    {"p:///x", "p", "", 0, "/x"},
    {"p://", "p", "", 0, ""},
    {"p:/a%20b%2Fc%c3%A4", "p", "", 0, "/a b/c\xc3\xa4"},
    {"p:a%0ab%09", "p", "", 0, "a\nb\t"},
    {"p:a#b", "p", "", 0, "a#b"},
    {"p:a+b", "p", "", 0, "a+b"},
    {"p:x?a=/y?z", "p", "", 0, "x"},
    {"p://h?mail=a@b/c:d", "p", "h", 0, ""},
};

TEST(Url, CutsOutItsParts) {
    for (Parts const& row : PARTS) {
        SCOPED_TRACE(row.text);
        Url const url(row.text);
        EXPECT_EQ(row.protocol, url.getProtocol());
        EXPECT_EQ(row.host, url.getHost());
        EXPECT_EQ(row.port, url.getPort());
        EXPECT_EQ(row.path, url.getPath());
    }
}

struct Credentials {
    char const* text;
    char const* user;
    char const* password;
    char const* shown;
};

Credentials const CREDENTIALS[] = {
    {"p://h/x", "", "", "p://h/x"},
    {"p://u@h/x", "u", "", "p://u@h/x"},
    {"p://u:@h/x", "u", "", "p://u:@h/x"},
    {"p://u:pw@h:1/x?a=b", "u", "pw", "p://u:***@h:1/x?a=b"},
    {"p://u:a:b@h", "u", "a:b", "p://u:***@h"},
    {"p://u:a@b@h", "u", "a@b", "p://u:***@h"},
    {"p://:pw@h", "", "pw", "p://:***@h"},
    {"p://u%40x:p%2Fw@h/%20", "u@x", "p/w", "p://u%40x:***@h/%20"},
    {"p://u:u@u/u", "u", "u", "p://u:***@u/u"},
};

TEST(Url, DecodesUserAndPassword) {
    for (Credentials const& row : CREDENTIALS) {
        SCOPED_TRACE(row.text);
        Url const url(row.text);
        EXPECT_EQ(row.user, url.getUser());
        EXPECT_EQ(row.password, url.getPassword());
    }
}

TEST(Url, MasksThePasswordInItsText) {
    for (Credentials const& row : CREDENTIALS) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(row.shown, Url(row.text).toString());
    }
}

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

TEST(Url, ListsTheNamesOfItsParameters) {
    EXPECT_EQ(Url("embedded:a?data=x&cl%69ent").getParameterNames(),
              (std::vector<std::string>{"client", "data"}));
    EXPECT_TRUE(Url("embedded:a").getParameterNames().empty());
}

TEST(Url, CopiesAreIndependent) {
    Url url("p://h/x");
    Url const copy(url);
    url = Url("q://g/y");
    EXPECT_EQ("p://h/x", copy.toString());
    EXPECT_EQ("q://g/y", url.toString());
}

struct UrlFault {
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

UrlFault const URL_FAULTS[] = {
    {"", "it is empty", 1},
    {":x", "begin with a letter", 1},
    {"1p:x", "begin with a letter", 1},
    {"/x", "begin with a letter", 1},
    {"..:x", "begin with a letter", 1},
    {"demo", "the ':'", 5},
    {"p/../q:x", "the protocol has a sign", 2},
    {"p_q:x", "the protocol has a sign", 2},
    {"p\xc3\xa4:x", "the protocol has a sign", 2},
    {"p:a b", "a blank or a control character", 4},
    {" p:a", "a blank or a control character", 1},
    {"p:a\n", "a blank or a control character", 4},
    {"p:a\x7f", "a blank or a control character", 4},
    {"p:a%", "two hexadecimal digits", 4},
    {"p:a%4", "two hexadecimal digits", 4},
    {"p:a%4g", "two hexadecimal digits", 4},
    {"p:a%g4", "two hexadecimal digits", 4},
    {"p://u%:pw@h", "two hexadecimal digits", 6},
    {"p:x?a=%z1", "two hexadecimal digits", 7},
    {"p:x?%=1", "two hexadecimal digits", 5},
    {"p:x?=1", "the name of a parameter", 5},
    {"p:x?a=1&b=2&a=3", "for the second time", 13},
    {"p://h:", "the port is missing", 7},
    {"p://h:/x", "the port is missing", 7},
    {"p://h:12a", "the port is no number", 9},
    {"p://h:-1", "the port is no number", 7},
    {"p://h:65536", "greater than 65535", 7},
    {"p://h:99999999999999999999", "greater than 65535", 7},
    {"p://fe80::2/x", "stands in brackets", 10},
    {"p://[::1/x", "the ']'", 9},
    {"p://[::1]5001", "a ':' and a port", 10},
    {"p://:5001", "the host is missing", 5},
    {"p://u:pw@/x", "the host is missing", 10},
    {"p://[]/x", "the host is missing", 5},
};

TEST(Url, TellsWhatIsWrongWhereAndTheRightForm) {
    for (UrlFault const& row : URL_FAULTS) {
        SCOPED_TRACE(row.text);
        std::string const message = messageFor(row.text);
        std::string const place = " at character " + std::to_string(row.character) + ". ";
        EXPECT_NE(std::string::npos, message.find(row.what)) << message;
        EXPECT_NE(std::string::npos, message.find(place)) << message;
        EXPECT_NE(std::string::npos, message.find("Write it as protocol:path")) << message;
    }
}

TEST(Url, KeepsAPasswordOutOfItsComplaints) {
    EXPECT_EQ(std::string::npos, messageFor("p://user:hunter2@h:port").find("hunter2"));
}

TEST(Url, RefusesAZeroByte) {
    EXPECT_NE("accepted", messageFor(std::string("p:a\0b", 5)));
}

} // namespace
