/* The headers are C, and the library is usable from it: a memory file is written and read back. */
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "dlist.h"
#include "errlog.h"
#include "kvos.h"

int main(void) {
    char buffer[6] = "";
    uint32_t got = 0;
    const int64_t file = kvOSCreateFile("mem://c", KVFILE_READ | KVFILE_WRITE, 1, NULL, KVFILE_CREATE_ALWAYS, 0, 0);
    if (file == KVFILE_INVALID) return 1;
    if (kvOSWriteFile(file, "hello", 5, NULL, NULL) != 1) return 2;
    if (kvOSSeek(file, 0) != 0) return 3;
    if (kvOSReadFile(file, buffer, 5, &got, NULL) != 1 || got != 5 || strcmp(buffer, "hello") != 0) return 4;
    if (kvOSCloseFile(file) != 1) return 5;
    gdwOutputToStdDebug = 0;
    if (kvOSCreateFile("/no/such/file", KVFILE_READ, 3, NULL, KVFILE_OPEN_EXISTING, 0, 0) != KVFILE_INVALID) return 6;
    puts(FormatWinMsg(kvOSGetLastError()));
    return 0;
}
