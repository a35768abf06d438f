// A library to be opened at run time. Started with THROW_AT_START set, it lets an exception out.
#include <cstdlib>
#include <stdexcept>

extern "C" __attribute__((visibility("default"))) int answerOfSmallLibrary();
extern "C" int answerOfSmallLibrary() { return 42; }

namespace {

struct Start {
    Start() {
        if (std::getenv("THROW_AT_START") != nullptr) throw std::runtime_error("not today");
    }
} start;

}  // namespace
