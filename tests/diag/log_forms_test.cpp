// The forms of ErrLogGet, each written out in full.
#include <cstdio>
#include <gtest/gtest.h>
#include <string>

#include "diag/log_reader.h"
#include "errlog.h"

namespace {

class LogForms : public kvtest::LogTest {};

constexpr std::uint32_t kCodes[4] = {0x00000005, 0x48010000, 0x80000001, 0xE8023011};

const char* const kPlainLine = "%d@%dms: 0x%08X  %s\n";
const char* const kHtml[4] = {
    "%d@<i>%dms</i>: 0x%08X  %s<BR>\n",
    "%d@<i>%dms</i>: <FONT color=Lime>0x%08X  %s</FONT><BR>\n",
    "%d@<i>%dms</i>: <FONT color=Fuchsia>0x%08X  %s</FONT><BR>\n",
    "%d@<i>%dms</i>: <FONT color=Red>0x%08X  %s</FONT><BR>\n",
};
const char* const kRows[4] = {
    "<tr class=kverrmsg><td class=kverrmsgnum>%d</td><td class=kverrmsgms>%d</td><td class=kverrcode>0x%08X</td>"
    "<td class=kverrmsg>%s</td></tr>\n",
    "<tr class=kverrmsg><td class=kverrmsgnum>%d</td><td class=kverrmsgms>%d</td><td class=kverrcode>0x%08X</td>"
    "<td class=kverrmsg><font color=Lime>%s</font></td></tr>\n",
    "<tr class=kverrmsg><td class=kverrmsgnum>%d</td><td class=kverrmsgms>%d</td><td class=kverrcode>0x%08X</td>"
    "<td class=kverrmsg><font color=Fuchsia>%s</font></td></tr>\n",
    "<tr class=kverrmsg><td class=kverrmsgnum>%d</td><td class=kverrmsgms>%d</td><td class=kverrcode>0x%08X</td>"
    "<td class=kverrmsg><font color=Red>%s</font></td></tr>\n",
};
const char* const kXml =
    "<messageNumber>%d</messageNumber><timeMs>%d</timeMs><errorCode>0x%08X</errorCode><message>%s</message>\n";

/// The newest record by a format that takes number, time, code and text.
std::string formatted(const char* format) {
    const auto* record = reinterpret_cast<kvErrLogRecord*>(d_ListTail(&gErrLogList));
    char text[1024];
    std::snprintf(text, sizeof text, format, static_cast<int>(record->dwNumber), static_cast<int>(record->dwMs),
                  record->dwCode, record->pText);
    return text;
}

std::string newest(std::uint32_t form) { return kvtest::get(kvtest::get(0xFFFFFFFF).next - 1, form).text; }

}  // namespace

TEST_F(LogForms, EveryClassInEveryForm) {
    for (std::size_t i = 0; i < 4; ++i) {
        ErrLogPut(kCodes[i], "a <b> & \"c\"\n");
        for (const std::uint32_t form : {0u, 50u}) EXPECT_EQ(newest(form), formatted(kPlainLine));
        EXPECT_EQ(newest(100), formatted(kHtml[i]));
        EXPECT_EQ(newest(200), formatted(kRows[i]));
        EXPECT_EQ(newest(300), formatted(kXml));
    }
}

TEST_F(LogForms, AllOthersGiveTheTextAlone) {
    ErrLogPut(0xE8023011, "text %s");
    for (const std::uint32_t form : {1u, 49u, 51u, 99u, 101u, 150u, 199u, 201u, 250u, 299u, 301u, 400u, 0xFFFFFFFFu}) {
        EXPECT_EQ(newest(form), "text %s") << form;
    }
}

TEST_F(LogForms, NothingIsEscaped) {
    ErrLogPut(0, "</message>&amp;");
    EXPECT_NE(newest(300).find("<message></message>&amp;</message>"), std::string::npos);
}

TEST_F(LogForms, TimePrintsAsASignedNumber) {
    ErrLogPut(0, "x");
    auto* record = reinterpret_cast<kvErrLogRecord*>(d_ListTail(&gErrLogList));
    record->dwMs = 0xFFFFFFFE;
    EXPECT_EQ(newest(0), "0@-2ms: 0x00000000  x\n");
}

TEST_F(LogForms, LongestTextOfAReportFitsWithItsForm) {
    const std::string text(4096, 'w');
    ErrLogPut(0xFFFFFFFF, text.c_str());
    for (const std::uint32_t form : {0u, 100u, 200u, 300u}) {
        EXPECT_NE(newest(form).find(text), std::string::npos);
        EXPECT_LT(newest(form).size(), 4096u + 256u);
    }
}
