// A management library of the graphics vendor's form, whose devices are those of the environment: VENDOR_DEVICES holds
// one word a device, its load or "-" for one that does not tell.
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#pragma GCC visibility push(default)

extern "C" {

struct Utilization {
    unsigned gpu;
    unsigned memory;
};

int nvmlInit_v2();
int nvmlDeviceGetCount_v2(unsigned* count);
int nvmlDeviceGetHandleByIndex_v2(unsigned index, void** device);
int nvmlDeviceGetUtilizationRates(void* device, Utilization* utilization);
}

#pragma GCC visibility pop

namespace {

constexpr int kNotSupported = 3;
constexpr int kDriverNotLoaded = 9;
bool isStarted = false;

std::vector<std::string>& devices() {
    static std::vector<std::string> all;
    return all;
}

}  // namespace

int nvmlInit_v2() {
    const char* const words = std::getenv("VENDOR_DEVICES");
    if (words == nullptr) return kDriverNotLoaded;
    std::istringstream text(words);
    for (std::string word; text >> word;) devices().push_back(word);
    isStarted = true;
    return 0;
}

int nvmlDeviceGetCount_v2(unsigned* count) {
    if (!isStarted) return 1;
    *count = static_cast<unsigned>(devices().size());
    return 0;
}

int nvmlDeviceGetHandleByIndex_v2(unsigned index, void** device) {
    *device = &devices().at(index);
    return 0;
}

int nvmlDeviceGetUtilizationRates(void* device, Utilization* utilization) {
    const auto& word = *static_cast<const std::string*>(device);
    if (word == "-") return kNotSupported;
    *utilization = {static_cast<unsigned>(std::stoul(word)), 99};
    return 0;
}
