// What the tests of written S3 objects share: a new object on a client without a network, and the length of its parts.
#pragma once

#include <cerrno>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <regex>
#include <string>
#include <string_view>

#include "file/s3_fake_client.h"

namespace kvtest {

inline constexpr std::uint64_t kPart = 62914560;

/// A new object "clips/a.mxf".
struct Recording {
    explicit Recording(const std::string& key = "clips/a.mxf") : file(client, key, 0) {}

    std::int64_t handle() const { return file.handle(); }
    /// Requests with the handle's own prefix shown as "P/".
    Requests requests(std::string_view operation = {}) const {
        static const std::regex prefix("clips/a_[0-9a-f-]{36}/");
        Requests all = client->requests(operation);
        for (std::string& request : all) request = std::regex_replace(request, prefix, "P/");
        return all;
    }
    /// Sets the end of the file, as kvOSSetEndOfFile does.
    void cutAt(std::uint64_t position) {
        file.record().qwPos = position;
        ASSERT_EQ(kvOSSetEndOfFile(handle()), 1u);
    }
    /// A write at a position that fails; gives the bytes that it took all the same.
    std::uint32_t failAt(std::uint64_t position, std::string_view bytes, int error = FakeClient::kRefused) {
        file.record().qwPos = position;
        std::uint32_t written = 77;
        errno = 0;
        EXPECT_EQ(
            s3::writeObject(file.record(), bytes.data(), {static_cast<std::uint32_t>(bytes.size()), &written, {}}),
            kv::file::Outcome::failed);
        EXPECT_EQ(errno, error);
        return written;
    }
    /// The object that the close makes.
    std::string finished() {
        file.close();
        return client->content("clips/a.mxf");
    }

    std::shared_ptr<FakeClient> client = std::make_shared<FakeClient>();
    FakeHandle file;
};

inline std::string filled(std::uint64_t count, char with) { return std::string(count, with); }

}  // namespace kvtest
