/// `Url`: names an adapter module by its protocol, and tells the adapter where and how to work.
///
/// Two forms are read, each with optional parameters:
///
///     embedded:/etc/sessions.cfg?data=/var/lib/orders
///     demo://user:password@[::1]:5001/path?timeout=5&mode=fast
///
/// Letters, digits and signs stand for themselves; a blank, a control character, and a sign that
/// would be taken for a separator are written as `%` with two hexadecimal digits.
///
/// Threads: a `Url` never changes after its construction, assignment apart; any thread may read it.
#ifndef ZANENGINE_INFRA_URL_H
#define ZANENGINE_INFRA_URL_H

#include "infra/Export.h"

#include <map>
#include <string>
#include <vector>

class ZAN_API Url {
public:
    /// Reads the text. Throws `InfraException` when it is no URL: the message tells what is wrong,
    /// at which character (the first one is 1) and what would be right. It shows no part of the
    /// text, which may hold a password.
    Url(std::string const& text);

    /// The part before the first colon, as it was written: a letter, then letters, digits, `+`, `-`
    /// or `.`. So it can stand in a file name without leading to another folder.
    std::string const& getProtocol() const;

    /// The host, without the brackets of an IPv6 address; empty when there is none.
    std::string const& getHost() const;

    /// The port, or 0 when there is none.
    int getPort() const;

    /// The path, decoded: with a host it begins with `/` or is empty, without one it is everything
    /// between the protocol and the parameters (`demo` in `embedded:demo`).
    std::string const& getPath() const;

    /// User and password, decoded; empty when there are none. The password is for the adapter: do
    /// not print it.
    std::string const& getUser() const;
    std::string const& getPassword() const;

    /// The decoded value of a parameter, empty for one without `=`; `defaultValue` when the URL has
    /// no such parameter. Names are compared exactly, after decoding.
    std::string getParameter(std::string const& name, std::string const& defaultValue) const;

    /// The decoded names of all parameters, sorted: for an adapter that refuses those it does not
    /// know.
    std::vector<std::string> getParameterNames() const;

    /// The text that the URL was made from, with `***` in place of the password.
    std::string toString() const;

private:
    friend class UrlReaderImpl;

    std::string shown_; // the text given, with the password masked
    std::string protocol_;
    std::string host_;
    int port_ = 0;
    std::string path_;
    std::string user_;
    std::string password_;
    std::map<std::string, std::string> parameters_;
};

#endif
