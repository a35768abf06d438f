// A real OAuth2 server (oauth2-mock-server on Node.js) that gives tokens for the grants refresh_token, password and
// urn:ietf:params:oauth:grant-type:jwt-bearer.
//
// Its tokens are new ones each time, unless a test sets what they are.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kvtest {

class TokenServer {
public:
    /// Whether npm could fetch it; a test skips where it could not.
    static bool isInstalled();

    /// Starts it and waits until it listens. Throws std::runtime_error with the reason if it can't.
    TokenServer();
    ~TokenServer();
    TokenServer(const TokenServer&) = delete;
    TokenServer& operator=(const TokenServer&) = delete;

    /// Where tokens are asked for: "http://127.0.0.1:PORT/token".
    const std::string& endpoint() const;

    /// From now on "access_token" is this text.
    void setToken(const std::string& token);
    /// From now on "expires_in" is this number; nothing leaves it out.
    void setExpiresIn(std::optional<int> seconds);
    /// From now on every request is refused with status 400, "error" and "error_description".
    void refuse(const std::string& error, const std::string& description);
    /// Ends what refuse() began.
    void accept();

    /// The bodies of all token requests so far, as they were sent.
    std::vector<std::string> requests() const;
    /// The "access_token" of each answer that had one.
    std::vector<std::string> tokens() const;

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace kvtest
