// The server is one process without a master, so that what was answered is in its log before the next event: a request
// to /ready, which is not logged itself, therefore waits for the lines of all answers that a test has had.
#include "servers/nginx.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "servers/child_process.h"
#include "servers/server_folder.h"
#include "servers/sockets.h"

namespace kvtest {
namespace {

constexpr int kTriesWithOtherPorts = 5;

/// Names in capitals are replaced. Fields of the log are parted by tabs, which no URL holds.
constexpr std::string_view kConfiguration = R"(
daemon off;
master_process off;
pid FOLDER/nginx.pid;
error_log stderr warn;
events { worker_connections 256; }
http {
    types { application/json json; video/mp4 mp4; }
    default_type application/octet-stream;
    log_format fields '$connection\t$connection_requests\t$request_method\t$request_uri\t$status\t$body_bytes_sent\t'
                      '$http_range\t$http_authorization\t$http_content_type\t.';
    access_log FOLDER/access.log fields;
    client_body_temp_path FOLDER/body;
    proxy_temp_path FOLDER/proxy;
    fastcgi_temp_path FOLDER/fastcgi;
    uwsgi_temp_path FOLDER/uwsgi;
    scgi_temp_path FOLDER/scgi;
    client_max_body_size 0;
    lingering_close off;
    keepalive_timeout 300;
    keepalive_requests 1000000;
    server {
        listen 127.0.0.1:PLAIN_PORT;
        listen 127.0.0.1:SECURE_PORT ssl;
        ssl_certificate FOLDER/certificate.pem;
        ssl_certificate_key FOLDER/key.pem;
        root ROOT;
        location = /ready { access_log off; return 204; }
        location /gzip/ { alias ROOT/; gzip on; gzip_types *; gzip_min_length 1; }
        location /chunked/ { alias ROOT/; ssi on; ssi_types *; ssi_min_file_chunk 1; }
        location /slow/ { alias ROOT/; limit_rate 64k; limit_rate_after 64k; }
        location /nohead/ { alias ROOT/; if ($request_method = HEAD) { return 405; } }
        location /protected/ {
            alias ROOT/;
            if ($http_authorization != "Bearer TOKEN") { return 401; }
        }
        location = /redirect/loop { return 302 /redirect/loop; }
        location ~ ^/redirect/302/(.*)$ { return 302 /$1; }
        location ~ ^/redirect/303/(.*)$ { return 303 /$1; }
        location ~ ^/redirect/307/(.*)$ { return 307 /$1; }
        location /dav/ { alias ROOT/; dav_methods PUT DELETE; create_full_put_path on; }
        location = /moved {
            if ($http_authorization ~ "/eu-central-1/") { return 200 "<LocationConstraint/>"; }
            return 400 "<Error><Message>the region is wrong; expecting 'eu-central-1'</Message></Error>";
        }
        location = /lost {
            if ($http_authorization ~ "/eu-central-1/") { return 403; }
            return 400 "<Error><Message>the region is wrong; expecting 'eu-central-1'</Message></Error>";
        }
        location ~ ^/(moved|lost)/(.*)$ { root ROOT; rewrite ^/(moved|lost)/(.*)$ /dav/$2 last; }
    }
}
)";

void replaceAll(std::string& text, std::string_view name, std::string_view value) {
    for (std::size_t at = 0; (at = text.find(name, at)) != std::string::npos; at += value.size()) {
        text.replace(at, name.size(), value);
    }
}

void makeCertificate(const ServerFolder& folder) {
    const std::string messages = folder / "openssl.log";
    ChildProcess shell({"sh", "-c",
                        "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2"
                        " -subj /CN=localhost -addext subjectAltName=DNS:localhost,IP:127.0.0.1"
                        " -keyout \"$0/key.pem\" -out \"$0/certificate.pem\" && echo made",
                        folder.path()},
                       messages);
    shell.readLine("openssl made no certificate");
}

std::vector<std::string> fieldsOf(const std::string& line) {
    std::vector<std::string> fields;
    std::istringstream in(line);
    for (std::string field; std::getline(in, field, '\t');) fields.push_back(field == "-" ? "" : field);
    return fields;
}

}  // namespace

class Nginx::Impl {
public:
    explicit Impl(const std::string& token) : token_(token) {
        root_ = folder_.makeFolder("documents");
        makeCertificate(folder_);
        for (int tries = 1; !startsOnFreePorts(tries == kTriesWithOtherPorts); ++tries) {
        }
    }

    void start() {
        process_.emplace(
            std::vector<std::string>{"nginx", "-p", folder_.path(), "-e", messages_, "-c", folder_ / "nginx.conf"},
            messages_);
        const auto deadline = std::chrono::steady_clock::now() + kPatience;
        while (!answers()) {
            if (!process_->isRunning() || std::chrono::steady_clock::now() > deadline) {
                process_.reset();
                throw std::runtime_error("nginx does not serve: " + messagesIn(messages_));
            }
            std::this_thread::yield();
        }
    }

    /// What was answered in full is in the log first; what was not is cut.
    void stop() {
        if (process_) answers();
        process_.reset();
    }

    std::vector<ServedRequest> requests() const {
        if (process_) answers();
        std::vector<ServedRequest> all;
        std::ifstream log(folder_ / "access.log");
        for (std::string line; std::getline(log, line);) {
            const auto fields = fieldsOf(line);
            if (fields.size() != 10) continue;  // a line that the kill cut
            all.push_back({fields[0], std::stoi(fields[1]), fields[2], fields[3], std::stoi(fields[4]),
                           std::stoull(fields[5]), fields[6], fields[7], fields[8]});
        }
        return all;
    }

    ServerFolder folder_{"nginx"};
    std::string root_;
    std::string certificate_ = folder_ / "certificate.pem";
    std::uint16_t plainPort_ = 0;
    std::uint16_t securePort_ = 0;

private:
    /// Another process may take a port ahead of the server: that is no failure yet, unless it is the last attempt.
    bool startsOnFreePorts(bool isLast) {
        plainPort_ = freePort();
        securePort_ = freePort();
        configure();
        try {
            start();
        } catch (const std::runtime_error&) {
            if (isLast || messagesIn(messages_).find("ddress already in use") == std::string::npos) throw;
            std::filesystem::remove(messages_);
            return false;
        }
        return true;
    }

    bool answers() const { return exchange(plainPort_, "GET /ready HTTP/1.0\r\n\r\n").starts_with("HTTP/1.1 204"); }

    void configure() const {
        std::string text(kConfiguration);
        replaceAll(text, "FOLDER", folder_.path());
        replaceAll(text, "ROOT", root_);
        replaceAll(text, "PLAIN_PORT", std::to_string(plainPort_));
        replaceAll(text, "SECURE_PORT", std::to_string(securePort_));
        replaceAll(text, "TOKEN", token_);
        std::ofstream(folder_ / "nginx.conf") << text;
    }

    std::string token_;
    std::string messages_ = folder_ / "error.log";
    std::optional<ChildProcess> process_;
};

Nginx::Nginx(const std::string& bearerToken) : impl_(std::make_unique<Impl>(bearerToken)) {}
Nginx::~Nginx() = default;

const std::string& Nginx::root() const { return impl_->root_; }

void Nginx::makeDocument(const std::string& path, std::string_view content) const {
    const std::filesystem::path file(root() + "/" + path);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(content.data(), static_cast<std::streamsize>(content.size())).flush();
    if (!out) throw std::runtime_error("no document " + file.string());
}

std::string Nginx::host() const { return localHost(impl_->plainPort_); }
std::string Nginx::secureHost() const { return localHost(impl_->securePort_); }
std::string Nginx::url(std::string_view path) const { return "http://" + host() + std::string(path); }
std::string Nginx::secureUrl(std::string_view path) const { return "https://" + secureHost() + std::string(path); }
const std::string& Nginx::certificate() const { return impl_->certificate_; }
void Nginx::stop() { impl_->stop(); }
void Nginx::start() { impl_->start(); }
std::vector<ServedRequest> Nginx::requests() const { return impl_->requests(); }

std::size_t Nginx::connections() const {
    std::set<std::string> numbers;
    for (const ServedRequest& request : requests()) numbers.insert(request.connection);
    return numbers.size();
}

}  // namespace kvtest
