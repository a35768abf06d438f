// A library to be opened at run time. Started with THROW_AT_START set, it lets an exception out.
#include <cstdlib>
#include <cstring>
#include <stdexcept>

extern "C" __attribute__((visibility("default"))) int answerOfSmallLibrary();
extern "C" int answerOfSmallLibrary() { return 42; }

namespace {

struct Start {
    Start() {
        const char* const what = std::getenv("THROW_AT_START");
        if (what == nullptr) return;
        if (std::strcmp(what, "number") == 0) throw 42;  // of no class at all
        throw std::runtime_error("not today");
    }
} start;

}  // namespace
