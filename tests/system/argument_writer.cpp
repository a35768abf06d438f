// Writes its arguments into the file that ARGUMENTS_FILE names, each with a terminator, and ends with 7.
#include <cstdio>
#include <cstdlib>
#include <cstring>

int main(int argc, char** argv) {
    std::FILE* const file = std::fopen(std::getenv("ARGUMENTS_FILE"), "wb");
    if (file == nullptr) return 1;
    for (int i = 0; i < argc; ++i) std::fwrite(argv[i], 1, std::strlen(argv[i]) + 1, file);
    return std::fclose(file) == 0 ? 7 : 2;
}
