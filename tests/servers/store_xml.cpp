#include "servers/store_xml.h"

namespace kvtest {
namespace {

constexpr std::string_view kHead = R"(<?xml version="1.0" encoding="UTF-8"?>)";
constexpr std::string_view kNamespace = R"( xmlns="http://s3.amazonaws.com/doc/2006-03-01/")";

}  // namespace

std::string asXmlText(std::string_view text) {
    std::string xml;
    for (const char character : text) {
        switch (character) {
            case '<':
                xml += "&lt;";
                break;
            case '>':
                xml += "&gt;";
                break;
            case '&':
                xml += "&amp;";
                break;
            case '"':
                xml += "&quot;";
                break;
            case '\'':
                xml += "&#39;";
                break;
            default:
                xml += character;
        }
    }
    return xml;
}

std::string element(std::string_view name, std::string_view text) {
    const std::string tag(name);
    return "<" + tag + ">" + asXmlText(text) + "</" + tag + ">";
}

std::string document(std::string_view name, const std::string& content) {
    const std::string tag(name);
    return std::string(kHead) + "<" + tag + std::string(kNamespace) + ">" + content + "</" + tag + ">";
}

Answer refusal(int status, const std::string& code, const std::string& message) {
    return {.status = status,
            .reason = code,
            .headers = {{"Content-Type", "application/xml"}},
            .body = std::string(kHead) + "<Error>" + element("Code", code) + element("Message", message) +
                    element("RequestId", "0000000000000001") + "</Error>"};
}

}  // namespace kvtest
