// Where the requests of a client go: the host of a bucket, and the path of a key there.
//
// A bucket is part of the host name ("virtual") where its name and the endpoint allow that, else the first segment of
// the path. The endpoint comes out of a locator, that is from anybody: what could not stand in a host name is refused,
// so that no text of it gets into a header or into another part of the URL.
#pragma once

#include <string>
#include <string_view>

#include "file/s3/client.h"

namespace kv::file::s3 {

struct Place {
    std::string host;  // with the port where one is given
    std::string path;  // percent-encoded, beginning with "/"
};

class Endpoint {
public:
    explicit Endpoint(const ClientConfiguration& configuration);

    /// Whether the endpoint can be a host, with or without a port.
    bool isUsable() const;
    /// Whether the bucket may become a part of the host name.
    bool allowsVirtual(std::string_view bucket) const;

    Place virtualPlace(const std::string& bucket, std::string_view key) const;
    Place pathPlace(std::string_view bucket, std::string_view key) const;

    std::string url(const Place& place, const std::string& query) const;

private:
    std::string host_;
    bool tls_;
};

}  // namespace kv::file::s3
