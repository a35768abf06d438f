// Uses the installed library from C++, its C++-only declarations included.
#include <errlog.h>
#include <kvos.h>
#include <string>

int main() {
    kvOSCriticalSection section;
    kvOSInitializeCriticalSection(&section);
    std::string text;
    {
        CDAutoLock lock(&section);
        text = FormatWinMsg(0xE8023011);
    }
    kvOSDeleteCriticalSection(&section);
    return text == "ERROR [MediaFile] File->Not Found " && gvecNames.empty() ? 0 : 1;
}
