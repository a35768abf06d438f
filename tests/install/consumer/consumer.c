/* Uses the installed library from C. */
#include <kvos.h>
#include <stdio.h>

int main(void) {
    const int64_t file = kvOSCreateFile("mem://clip", KVFILE_READ | KVFILE_WRITE, 1, NULL, KVFILE_CREATE_ALWAYS, 0, 0);
    const int good = kvOSfputs("from C", file) == 1 && kvOSGetFileSize(file, NULL) == 6;
    return kvOSCloseFile(file) == 1 && good ? 0 : 1;
}
