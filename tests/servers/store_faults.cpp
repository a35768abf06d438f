// Faults are made by changing an answer that was right.
#include <algorithm>

#include "servers/scripted_store.h"
#include "servers/store_xml.h"

namespace kvtest {

namespace fault {

Fault refused(int status, const std::string& code, const std::string& message) {
    return [=](Answer& answer) { answer = refusal(status, code, message); };
}

Fault wrongRegion(const std::string& used, const std::string& expected) {
    return [=](Answer& answer) {
        answer = refusal(
            400, "AuthorizationHeaderMalformed",
            "The authorization header is malformed; the region '" + used + "' is wrong; expecting '" + expected + "'");
        const std::string end = "</Error>";
        answer.body.insert(answer.body.size() - end.size(), element("Region", expected));
    };
}

Fault cutAfter(std::size_t bytes) {
    return [=](Answer& answer) { answer.cutAfter = bytes; };
}

Fault tooLong(const std::string& more) {
    return [=](Answer& answer) {
        answer.announced = answer.body.size();
        answer.body += more;
    };
}

Fault announcing(std::uint64_t length) {
    return [=](Answer& answer) { answer.announced = length; };
}

Fault body(const std::string& content) {
    return [=](Answer& answer) {
        answer.status = 200;
        answer.reason = "OK";
        answer.body = content;
        std::erase_if(answer.headers, [](const auto& header) { return header.first == "Content-Range"; });
    };
}

Fault without(const std::string& name) {
    return [=](Answer& answer) {
        std::erase_if(answer.headers, [&](const auto& header) { return header.first == name; });
        const std::string end = "</" + name + ">";
        for (std::size_t at = 0; (at = answer.body.find("<" + name + ">", at)) != std::string::npos;) {
            answer.body.erase(at, answer.body.find(end, at) + end.size() - at);
        }
    };
}

Fault dropped() {
    return [](Answer& answer) { answer.unanswered = true; };
}

Fault garbage(const std::string& text) {
    return [=](Answer& answer) { answer.body = text; };
}

}  // namespace fault

}  // namespace kvtest
