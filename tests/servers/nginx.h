// A real web server: nginx with a configuration, a document root, a certificate and ports of its own.
//
// The same documents are served in several manners, chosen by the first folder of the path; "clip" is any path below
// root():
//
//   /clip                  plainly: ranges, a length, no compression
//   /gzip/clip             compressed when the client accepts it, then without a length
//   /chunked/clip          in chunks without a length; ranges are not known there
//   /slow/clip             at most 64 KiB a second, after the first 64 KiB
//   /nohead/clip           HEAD is refused with 405
//   /protected/clip        401 without the header "Authorization: Bearer <token>"
//   /redirect/302/clip     a redirect to /clip; likewise 303 and 307
//   /redirect/loop         a redirect to itself
//   /dav/clip              as /clip; PUT stores and DELETE removes, folders are made as needed
//   /moved/clip            as /clip; DELETE removes. /moved itself is an S3 bucket of "eu-central-1", and says so to a
//                          request that is signed for another region
//   /lost/clip             the same, but nobody may ask /lost from that region either
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kvtest {

/// One line of the access log.
struct ServedRequest {
    std::string connection;  // the server's number of the connection
    int ofConnection = 0;    // counted from 1 on each connection
    std::string method;
    std::string target;  // as sent, with its query
    int status = 0;
    std::uint64_t sent = 0;  // bytes of the body that were sent
    std::string range;       // headers of the request; empty if it had none
    std::string authorization;
    std::string contentType;
};

class Nginx {
public:
    /// Starts it and waits until it answers. Throws std::runtime_error with the reason if it can't.
    explicit Nginx(const std::string& bearerToken = "token");
    ~Nginx();
    Nginx(const Nginx&) = delete;
    Nginx& operator=(const Nginx&) = delete;

    /// The folder of the documents.
    const std::string& root() const;
    /// Makes a document, and its folders.
    void makeDocument(const std::string& path, std::string_view content) const;

    std::string host() const;        // "127.0.0.1:PORT"
    std::string secureHost() const;  // the same for https
    std::string url(std::string_view path) const;
    std::string secureUrl(std::string_view path) const;
    /// The file with the certificate of the https port: made for 127.0.0.1 and localhost, signed by itself.
    const std::string& certificate() const;

    /// Kills it in the middle of whatever it does. Connections end, new ones are refused.
    void stop();
    /// Starts it again on the same ports.
    void start();

    /// All requests answered so far, since the first start; one that stop() cut is not among them.
    std::vector<ServedRequest> requests() const;
    /// Connections that these requests came on.
    std::size_t connections() const;

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace kvtest
