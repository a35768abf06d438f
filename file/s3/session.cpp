// Locator, settings, credentials, region, client: in this order, which the messages of a missing key file show.
//
// The settings may lie behind a redirect that leads to a store, so that reading them opens an object. That open does
// without them.
#include "file/s3/session.h"

#include <cerrno>
#include <cstdint>
#include <string_view>

#include "border/guard.h"
#include "border/relaxed.h"
#include "file/s3/credentials.h"
#include "file/s3/object.h"
#include "file/s3/region.h"
#include "hosts.h"
#include "kvcfg.h"
#include "kvos/s3.h"

uint32_t sdwS3DisableSSL = 0;
uint32_t sdwS3VerifySSL = 1;

namespace kv::file::s3 {
namespace {

/// True while the thread reads settings.
thread_local bool isReadingSettings = false;

class ReadingSettings {
public:
    ReadingSettings() { isReadingSettings = true; }
    ~ReadingSettings() { isReadingSettings = false; }
    ReadingSettings(const ReadingSettings&) = delete;
    ReadingSettings& operator=(const ReadingSettings&) = delete;
};

/// A setting that is missing or no number leaves the variable as it was.
void readSetting(const char* name, std::uint32_t& variable) {
    std::uint32_t value = border::relaxedLoad(variable);
    if (kvCFGValueDword(KVSTDCONFIG, "MediaKiln\\Default", name, &value, 0) == 0) border::relaxedStore(variable, value);
}

void readSettings() {
    if (isReadingSettings) return;
    const ReadingSettings reading;
    readSetting("S3DisableSSL", sdwS3DisableSSL);
    readSetting("S3VerifySSL", sdwS3VerifySSL);
}

ClientConfiguration configurationFor(const std::string& host, Settings settings) {
    ClientConfiguration configuration;
    if (!host.empty()) {
        configuration.endpointOverride = host;
        configuration.verifySsl = settings == Settings::asStored && border::relaxedLoad(sdwS3VerifySSL) != 0;
    }
    configuration.useHttps = settings == Settings::ofDeletion || border::relaxedLoad(sdwS3DisableSSL) == 0;
    return configuration;
}

/// The credentials of the locator; where it has not both keys, those of a key file, whose region comes with them.
Credentials credentialsOf(const Address& address, std::string& region) {
    if (!address.accessKey.empty() && !address.secretKey.empty()) return {address.accessKey, address.secretKey, {}};
    const auto keys = keyFileOf(address.bucket);
    if (!keys) return {};
    region = keys->region;
    return {keys->accessKey, keys->secretKey, {}};
}

bool isAtProvider(std::string_view locator) {
    return locator.find(hosts::kS3ServiceDomain) != std::string_view::npos ||
           locator.find(hosts::kS3GeneralDomain) != std::string_view::npos;
}

bool makeClientOf(Session& session) {
    session.client = makeClient(session.credentials, session.configuration, false, true);
    if (session.client == nullptr) errno = ENOMEM;
    return session.client != nullptr;
}

/// Finds the bucket's region with one request, and with another one that it is right where it is a new one.
bool moveToRegion(Session& session, UnknownRegion unknown) {
    const std::string asked = session.configuration.region;
    const std::string region = regionOf(*session.client, session.address.bucket, asked,
                                        unknown == UnknownRegion::isTheFirst ? kFirstRegion : asked);
    if (region == asked) return true;
    session.configuration.region = region;
    if (!makeClientOf(session)) return false;
    return session.client->getBucketLocation({.bucket = bareBucket(session.address.bucket)}).isSuccess();
}

bool connect(Session& session, bool isProvider, std::string region, UnknownRegion unknown) {
    if (region.empty() && isProvider) region = preferredRegion();
    if (!region.empty()) session.configuration.region = region;
    return makeClientOf(session) && (!isProvider || moveToRegion(session, unknown));
}

}  // namespace

std::optional<Session> beginSession(const std::string& locator, Settings settings, UnknownRegion unknown) {
    Session session;
    session.address = addressIn(locator);
    if (!fits(session.address)) {
        errno = ENAMETOOLONG;
        return std::nullopt;
    }
    if (settings == Settings::asStored) readSettings();
    std::string region;
    session.configuration = configurationFor(session.address.host, settings);
    session.credentials = credentialsOf(session.address, region);
    if (connect(session, isAtProvider(locator), region, unknown)) return session;
    const border::KeepErrno keep;
    session.client.reset();
    return std::nullopt;
}

}  // namespace kv::file::s3
