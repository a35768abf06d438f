// The list read back: the way to a message, and the forms of its text.
//
// A reader usually wants the message behind the one it got last, so that the way begins there.
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <unistd.h>

#include "border/guard.h"
#include "border/relaxed.h"
#include "diag/log_list.h"
#include "errlog.h"

namespace kv::diag {
namespace {

constexpr std::uint32_t kNoMessage = 0xFFFFFFFF;
constexpr std::uint32_t kEndOfList = 0xFFFFFFFF;  // as an index: how far the list goes

/// What stands around a text, ahead of it number, time and code.
struct Form {
    const char* head;
    const char* tail;
};

using FormsByClass = std::array<Form, 4>;

constexpr FormsByClass sameForAll(Form form) { return {form, form, form, form}; }

constexpr FormsByClass kPlain = sameForAll({"", ""});
constexpr FormsByClass kLine = sameForAll({"%d@%dms: 0x%08X  ", "\n"});
constexpr FormsByClass kHtml{{
    {"%d@<i>%dms</i>: 0x%08X  ", "<BR>\n"},
    {"%d@<i>%dms</i>: <FONT color=Lime>0x%08X  ", "</FONT><BR>\n"},
    {"%d@<i>%dms</i>: <FONT color=Fuchsia>0x%08X  ", "</FONT><BR>\n"},
    {"%d@<i>%dms</i>: <FONT color=Red>0x%08X  ", "</FONT><BR>\n"},
}};
#define KV_ROW                                                                     \
    "<tr class=kverrmsg><td class=kverrmsgnum>%d</td><td class=kverrmsgms>%d</td>" \
    "<td class=kverrcode>0x%08X</td><td class=kverrmsg>"
constexpr FormsByClass kHtmlTable{{
    {KV_ROW, "</td></tr>\n"},
    {KV_ROW "<font color=Lime>", "</font></td></tr>\n"},
    {KV_ROW "<font color=Fuchsia>", "</font></td></tr>\n"},
    {KV_ROW "<font color=Red>", "</font></td></tr>\n"},
}};
#undef KV_ROW
constexpr FormsByClass kXml =
    sameForAll({"<messageNumber>%d</messageNumber><timeMs>%d</timeMs>"
                "<errorCode>0x%08X</errorCode><message>",
                "</message>\n"});

const FormsByClass& formsOf(std::uint32_t form) {
    switch (form) {
        case KVERRLOG_FORM_LINE:
        case 50:
            return kLine;
        case KVERRLOG_FORM_HTML:
            return kHtml;
        case KVERRLOG_FORM_HTML_TABLE:
            return kHtmlTable;
        case KVERRLOG_FORM_XML:
            return kXml;
        default:
            return kPlain;
    }
}

char* append(char* target, const char* text) {
    const std::size_t length = std::strlen(text);
    std::memcpy(target, text, length + 1);
    return target + length;
}

void writeForm(char* out, const kvErrLogRecord& record, std::uint32_t form) {
    const Form& chosen = formsOf(form)[record.dwCode >> 30];
    char head[256];
    border::formatText(head, sizeof head, chosen.head, static_cast<int>(record.dwNumber), static_cast<int>(record.dwMs),
                       record.dwCode);
    append(append(append(out, head), record.pText), chosen.tail);
}

/// Counts the steps of a way through the list. Many in a row let others run, though not into the list.
class Steps {
public:
    void count() {
        if (++taken_ % 30 == 0) usleep(1000);
    }

private:
    std::uint32_t taken_ = 0;
};

/// The record of that number, or of the next one; null if there is neither.
const kvErrLogRecord* findFrom(kvErrLogRecord* start, std::uint32_t wanted) {
    Steps steps;
    const kvErrLogRecord* record = start;
    while (record != nullptr && record->dwNumber > wanted) {
        record = before(*record);
        if (record == nullptr) return firstRecord();  // nothing so old is left: the oldest will do
        steps.count();
    }
    while (record != nullptr && record->dwNumber < wanted) {
        record = after(*record);
        steps.count();
    }
    const bool found = record != nullptr && (record->dwNumber == wanted || record->dwNumber == wanted + 1);
    return found ? record : nullptr;
}

/// Where the list stands by now for index 0, which means the oldest.
std::uint32_t oldestPossible(std::uint32_t nextNumber) { return nextNumber > 1000 ? nextNumber - 1000 : 0; }

const kvErrLogRecord* find(const LogState& log, std::uint32_t index) {
    kvErrLogRecord* start = log.lastReturned;
    if (start == nullptr) {
        start = firstRecord();
        if (index == 0 && start != nullptr) index = start->dwNumber;
    }
    return findFrom(start, index);
}

std::uint32_t endOfList() {
    const LockedLog log;
    const kvErrLogRecord* first = firstRecord();
    return gErrLogList.count + (first == nullptr ? 0 : first->dwNumber);
}

void store(std::uint32_t* target, std::uint32_t value) {
    if (target != nullptr) *target = value;
}

}  // namespace
}  // namespace kv::diag

std::uint32_t ErrLogGet(std::uint32_t dwIndex, std::uint32_t dwForm, std::uint32_t* pdwNumber,
                        std::uint32_t* pdwReserved1, std::uint32_t* pdwReserved2, std::uint32_t* pdwReserved3,
                        std::uint32_t* pdwReserved4, std::uint32_t* pdwCode, char* pBuffer) {
    using namespace kv::diag;
    if (kv::border::relaxedLoad(gfEnableList) == 0) return 0;
    const kv::border::KeepErrno keep;
    if (dwIndex == kEndOfList) return endOfList();
    if (pBuffer == nullptr) return kNoMessage;
    bool ended = false;
    const std::uint32_t next = kv::border::atBorder(kNoMessage, [&] {
        const LockedLog log;
        if (dwIndex == 0) dwIndex = oldestPossible(log->nextNumber);
        const kvErrLogRecord* record = find(*log, dwIndex);
        log->lastReturned = const_cast<kvErrLogRecord*>(record);
        ended = true;
        if (record == nullptr) return kNoMessage;
        store(pdwNumber, record->dwNumber);
        store(pdwCode, record->dwCode);
        for (std::uint32_t* reserved : {pdwReserved1, pdwReserved2, pdwReserved3, pdwReserved4}) store(reserved, 0);
        writeForm(pBuffer, *record, dwForm);
        return record->dwNumber + 1;
    });
    if (!ended) {
        ErrFmtOut(0x80000000, nullptr, 0, "WARNING(gen): %s\n\r", "Error retrieving error message from log list");
        LockedLog()->lastReturned = nullptr;
    }
    return next;
}

std::uint32_t ErrLogGetStartMs(void) {
    if (kv::border::relaxedLoad(gfEnableList) == 0) return 0;
    return kv::diag::LockedLog()->startTime_ms;
}

std::uint32_t ErrLogGetCurrentMs(void) {
    return kv::border::relaxedLoad(gfEnableList) == 0 ? 0 : kv::diag::wallClock().count_ms();
}

std::uint32_t ErrLogGetLastChange(void) {
    if (kv::border::relaxedLoad(gfEnableList) == 0) return 0;
    const kv::diag::LockedLog log;
    const kvErrLogRecord* last = kv::diag::lastRecord();
    return last == nullptr ? 0 : last->dwMs;
}
