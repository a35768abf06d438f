// The server takes its orders as lines of its standard input, and answers each with a line. What was asked of it and
// what it gave lies in two files, a line each.
#include "servers/token_server.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "servers/child_process.h"
#include "servers/server_folder.h"

namespace kvtest {
namespace {

std::vector<std::string> linesOf(const std::string& path) {
    std::vector<std::string> lines;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
}

constexpr const char* kFolder = KVUTIL_SERVERS_FOLDER "/oauth";

std::string script() {
    if (!TokenServer::isInstalled()) {
        throw std::runtime_error(std::string("no oauth2-mock-server in ") + kFolder + " (scripts/setup installs it)");
    }
    return std::string(kFolder) + "/token_server.mjs";
}

}  // namespace

bool TokenServer::isInstalled() {
    return std::filesystem::exists(std::string(kFolder) + "/node_modules/oauth2-mock-server");
}

class TokenServer::Impl {
public:
    void order(const std::string& line) {
        process_.write(line + "\n");
        process_.readLine("the token server takes no orders");
    }

    ServerFolder folder_{"tokens"};
    std::string requests_ = folder_ / "requests";
    std::string tokens_ = folder_ / "tokens";
    ChildProcess process_{{"node", script(), requests_, tokens_}, folder_ / "messages"};
    std::string endpoint_ = "http://127.0.0.1:" + process_.readLine("the token server does not listen") + "/token";
};

TokenServer::TokenServer() : impl_(std::make_unique<Impl>()) {}
TokenServer::~TokenServer() = default;

const std::string& TokenServer::endpoint() const { return impl_->endpoint_; }
void TokenServer::setToken(const std::string& token) { impl_->order("token\t" + token); }

void TokenServer::setExpiresIn(std::optional<int> seconds) {
    impl_->order("expires\t" + (seconds ? std::to_string(*seconds) : std::string("never")));
}

void TokenServer::refuse(const std::string& error, const std::string& description) {
    impl_->order("refuse\t" + error + "\t" + description);
}

void TokenServer::accept() { impl_->order("accept"); }
std::vector<std::string> TokenServer::requests() const { return linesOf(impl_->requests_); }
std::vector<std::string> TokenServer::tokens() const { return linesOf(impl_->tokens_); }

}  // namespace kvtest
