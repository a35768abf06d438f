// The library gives forms to messages of its list, so that each message goes into the list, gets the number and the
// time that it has in the file, and is read back.
#include "kv/log_forms.h"

#include "dlist.h"
#include "errlog.h"

namespace kv::tool {
namespace {

constexpr std::int32_t kNoNumber = -1;
constexpr std::size_t kRoomForForm = 512;

/// The list with one message in it at a time, and no file behind it.
class OneMessageList {
public:
    OneMessageList() {
        gfReadReg = 1;
        gfEnableList = 1;
        gfEnableLog = 0;
    }
    OneMessageList(const OneMessageList&) = delete;
    OneMessageList& operator=(const OneMessageList&) = delete;
    ~OneMessageList() { ErrLogSetMode(KVERRLOG_MODE_CLEAR, nullptr); }

    std::string formOf(const LogMessage& message, std::uint32_t form) {
        ErrLogSetMode(KVERRLOG_MODE_CLEAR, nullptr);
        // An empty text would not be kept.
        ErrLogPut(message.code, message.text.empty() ? " " : message.text.c_str());
        restore(message);
        std::string text(message.text.size() + kRoomForForm, '\0');
        ErrLogGet(0, form, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, text.data());
        text.resize(text.find('\0'));
        return text;
    }

private:
    static void restore(const LogMessage& message) {
        d_ListLock(&gErrLogList);
        if (auto* record = reinterpret_cast<kvErrLogRecord*>(gErrLogList.tail)) {
            record->dwNumber = static_cast<std::uint32_t>(message.number.value_or(kNoNumber));
            record->dwMs = static_cast<std::uint32_t>(momentOf(message));
        }
        d_ListUnLock(&gErrLogList);
    }
};

std::string escaped(const std::string& text) {
    std::string safe;
    safe.reserve(text.size());
    for (const char c : text) {
        switch (c) {
            case '&':
                safe += "&amp;";
                break;
            case '<':
                safe += "&lt;";
                break;
            case '>':
                safe += "&gt;";
                break;
            default:
                safe += c;
        }
    }
    return safe;
}

constexpr const char* kStyle =
    "body{background:#14161a;color:#d8dce2;font:14px/1.4 monospace;margin:2em}\n"
    "h1{font-size:18px}\n"
    "table{border-collapse:collapse;width:100%}\n"
    "th,td{text-align:left;vertical-align:top;padding:2px 12px 2px 0;border-bottom:1px solid #2c3038}\n"
    "td.kverrmsgnum,td.kverrmsgms{text-align:right}\n"
    "td.kverrmsg{white-space:pre-wrap;overflow-wrap:anywhere;width:70%}\n";

}  // namespace

std::string inForm(const std::vector<LogMessage>& messages, std::uint32_t form) {
    OneMessageList list;
    std::string all;
    for (const LogMessage& message : messages) all += list.formOf(message, form);
    return all;
}

std::string asPage(const std::string& title, std::vector<LogMessage> messages) {
    for (LogMessage& message : messages) {
        message.text = escaped(message.text);
        if (message.repeats > 1) message.text += " [repeat x" + std::to_string(message.repeats) + "]";
    }
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>" + escaped(title) +
           "</title>\n<style>\n" + kStyle + "</style>\n</head>\n<body>\n<h1>" + escaped(title) +
           "</h1>\n<table>\n<thead><tr><th>Number</th><th>Time (ms)</th><th>Code</th><th>Message</th></tr></thead>\n"
           "<tbody>\n" +
           inForm(messages, KVERRLOG_FORM_HTML_TABLE) + "</tbody>\n</table>\n</body>\n</html>\n";
}

}  // namespace kv::tool
