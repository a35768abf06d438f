// What opening, listing and deleting have in common: from a locator to a client that reaches its bucket.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "file/s3/client.h"
#include "file/s3/parse.h"

namespace kv::file::s3 {

/// Which settings a session follows. Meant: a deletion asks for none, always talks TLS, and never verifies the
/// certificate of a host that the locator names.
enum class Settings { asStored, ofDeletion };

/// The region of a bucket that the provider refuses to tell. Meant: a listing takes the first region, an open and a
/// deletion stay with the one they asked with.
enum class UnknownRegion { staysAsAsked, isTheFirst };

struct Session {
    Address address;
    Credentials credentials;
    ClientConfiguration configuration;
    std::shared_ptr<Client> client;
};

/// Splits the locator, finds credentials and makes the client; at the provider's own hosts with the region that the
/// bucket is in, which is asked for. Nothing, with errno set, for a text that does not fit and for a bucket whose
/// region is another one and refuses as well.
std::optional<Session> beginSession(const std::string& locator, Settings settings, UnknownRegion unknown);

}  // namespace kv::file::s3
