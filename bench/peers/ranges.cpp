#include "bench/peers/ranges.h"

#include <cstring>

#include "bench/comparison.h"

namespace kv::bench {

RangeReader::RangeReader(const std::string& url) : transfer_(curl_easy_init()) {
    require(transfer_ != nullptr, "no transfer can be made");
    curl_easy_setopt(transfer_.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(transfer_.get(), CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(transfer_.get(), CURLOPT_WRITEFUNCTION, &store);
    curl_easy_setopt(transfer_.get(), CURLOPT_WRITEDATA, &window_);
}

void RangeReader::signAs(const std::string& accessKey, const std::string& secretKey) {
    headers_.reset(curl_slist_append(nullptr, "x-amz-content-sha256: UNSIGNED-PAYLOAD"));
    curl_easy_setopt(transfer_.get(), CURLOPT_AWS_SIGV4, "aws:amz:us-east-1:s3");
    curl_easy_setopt(transfer_.get(), CURLOPT_USERPWD, (accessKey + ":" + secretKey).c_str());
    curl_easy_setopt(transfer_.get(), CURLOPT_HTTPHEADER, headers_.get());
}

void RangeReader::readHead() {
    curl_easy_setopt(transfer_.get(), CURLOPT_NOBODY, 1L);
    require(curl_easy_perform(transfer_.get()) == CURLE_OK, "the header request failed");
    curl_easy_setopt(transfer_.get(), CURLOPT_NOBODY, 0L);
}

std::span<const char> RangeReader::read(std::uint64_t from, std::uint64_t count) {
    if (window_.bytes.size() < count) window_.bytes.resize(count);
    window_.used = 0;
    const std::string range = std::to_string(from) + "-" + std::to_string(from + count - 1);
    curl_easy_setopt(transfer_.get(), CURLOPT_RANGE, range.c_str());
    require(curl_easy_perform(transfer_.get()) == CURLE_OK && window_.used == count, "a short range");
    return {window_.bytes.data(), count};
}

std::size_t RangeReader::store(char* data, std::size_t size, std::size_t count, void* target) {
    auto& window = *static_cast<Window*>(target);
    const std::size_t amount = size * count;
    if (amount > window.bytes.size() - window.used) return 0;
    std::memcpy(window.bytes.data() + window.used, data, amount);
    window.used += amount;
    return amount;
}

}  // namespace kv::bench
