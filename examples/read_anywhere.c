// Reads a clip from wherever its locator says and prints its size and a checksum of its bytes.
#include <inttypes.h>
#include <stdio.h>

#include "kvos/file.h"

int main(int argc, char** argv) {
    static uint8_t block[1 << 20];
    uint32_t got = 0, sum = 0;
    uint64_t size = 0;
    int64_t clip =
        argc < 2 ? KVFILE_INVALID : kvOSCreateFile(argv[1], KVFILE_READ, 3, NULL, KVFILE_OPEN_EXISTING, 0, 0);
    if (clip == KVFILE_INVALID) return 1;
    while (kvOSReadFile(clip, block, sizeof block, &got, NULL) && got > 0) {
        for (uint32_t i = 0; i < got; ++i) sum = sum * 31 + block[i];
        size += got;
    }
    uint32_t whole = kvOSfeof(clip);
    printf("%" PRIu64 " bytes, checksum %08" PRIX32 "%s\n", size, sum, whole ? "" : ", and not to the end");
    return kvOSCloseFile(clip) && whole ? 0 : 1;
}
