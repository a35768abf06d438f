// The client against a server that answers as told: what its tests share. What real stores make of its requests is in
// s3_client_store_test.cpp.
#pragma once

#include <csignal>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <pthread.h>
#include <string>
#include <thread>

#include "file/s3/client.h"
#include "servers/scripted_server.h"

namespace s3client {

using namespace kv::file::s3;
using kvtest::Request;
using kvtest::ScriptedServer;
using Framing = kvtest::Answer::Framing;

inline const Credentials kKeys{"ACCESSKEY", "SECRETKEY", ""};
inline constexpr char kContent[] = "0123456789abcdefghij";

inline ScriptedServer answering(const kvtest::Answer& answer) {
    return ScriptedServer([answer](const Request&) { return answer; });
}

inline ClientConfiguration plainHttp(const std::string& host) {
    ClientConfiguration configuration;
    configuration.endpointOverride = host;
    configuration.useHttps = false;
    return configuration;
}

inline std::shared_ptr<Client> clientOf(const ScriptedServer& server, const Credentials& credentials = kKeys) {
    return makeClient(credentials, plainHttp(server.host()), false, true);
}

/// The server under a name that stands for this machine.
inline std::string named(const ScriptedServer& server, const std::string& name) {
    return name + server.host().substr(server.host().rfind(':'));
}

inline std::span<const std::byte> bytesOf(std::string_view text) { return std::as_bytes(std::span(text)); }

/// The outcome of a GetObject and what stands in the destination then.
struct Got {
    std::string text;  // what was received; the error's name where it failed
    std::uint64_t contentLength = 0;
};

inline Got get(Client& client, const std::string& range, std::size_t room = 100) {
    std::string buffer(room, '.');
    const auto answer = client.getObject({"bucket", "key", range, std::as_writable_bytes(std::span(buffer))});
    if (!answer.isSuccess()) return {"(" + answer.error().exceptionName + ")", 0};
    const ObjectBody& body = answer.result();
    EXPECT_EQ(buffer.find_first_not_of('.', body.received), std::string::npos) << "bytes behind those received";
    return {buffer.substr(0, body.received), body.contentLength};
}

inline kvtest::Answer part(const std::string& contentRange, const std::string& body) {
    return {.status = 206, .reason = "Partial Content", .headers = {{"Content-Range", contentRange}}, .body = body};
}

template <class Result>
std::string failureOf(const Answer<Result>& answer) {
    return answer.isSuccess() ? "(success)" : answer.error().exceptionName;
}

/// What a handler tells the test.
struct Waiting : AsyncCallerContext {
    explicit Waiting(const std::string& identifier) : AsyncCallerContext(identifier) {}
    std::string buffer = std::string(100, '.');
    mutable std::promise<std::string> outcome;
    mutable std::thread::id thread;
    mutable sigset_t blocked;

    std::span<std::byte> destination() { return std::as_writable_bytes(std::span(buffer)); }
};

inline void tellOutcome(Client&, const GetObjectRequest& request, const Answer<ObjectBody>& outcome,
                        const std::shared_ptr<const AsyncCallerContext>& context) {
    const auto& waiting = static_cast<const Waiting&>(*context);
    waiting.thread = std::this_thread::get_id();
    pthread_sigmask(SIG_SETMASK, nullptr, &waiting.blocked);
    waiting.outcome.set_value(request.key + " " + failureOf(outcome));
}

}  // namespace s3client
