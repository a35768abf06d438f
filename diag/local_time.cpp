// Local time follows TZ, which is read anew each time, as by localtime. A stamp is remembered for its second only, and
// only for the same TZ, so that remembering shows nowhere but in the time it takes.
#include "diag/local_time.h"

#include <cstdlib>
#include <cstring>
#include <sys/time.h>

#include "border/guard.h"
#include "border/text.h"
#include "errlog.h"

namespace kv::diag {
Moment wallClock() noexcept {
    timeval now{};
    gettimeofday(&now, nullptr);
    return {now.tv_sec, static_cast<int>(now.tv_usec / 1000)};
}

std::tm localFields(const Moment& moment) noexcept {
    tzset();  // localtime_r need not look at the environment
    std::tm fields{};
    localtime_r(&moment.second, &fields);
    return fields;
}

void writeClockTime(const std::tm& fields, char (&out)[16]) noexcept {
    border::formatText(out, sizeof out, "%2d:%2d:%2d", fields.tm_hour % 100, fields.tm_min % 100, fields.tm_sec % 100);
}

bool LineStamp::holds(const Moment& moment, const char* zone) const noexcept {
    if (moment.second != second_ || (zone != nullptr) != zoneGiven_) return false;
    return zone == nullptr || std::strcmp(zone, zone_) == 0;
}

void LineStamp::fill(const Moment& moment, const char* zone) noexcept {
    const std::tm fields = localFields(moment);
    border::formatText(text_, sizeof text_ - 4, "%04d-%02d-%02dT%02d:%02d:%02d.", fields.tm_year + 1900,
                       fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec);
    length_ = std::strlen(text_);
    zoneGiven_ = zone != nullptr;
    const bool remembered = border::copyText(zone_, sizeof zone_, border::orEmpty(zone));
    second_ = remembered ? moment.second : -1;
}

std::string_view LineStamp::of(const Moment& moment) noexcept {
    const char* zone = std::getenv("TZ");
    if (!holds(moment, zone)) fill(moment, zone);
    const int milliseconds = moment.milliseconds;
    text_[length_] = static_cast<char>('0' + milliseconds / 100);
    text_[length_ + 1] = static_cast<char>('0' + milliseconds / 10 % 10);
    text_[length_ + 2] = static_cast<char>('0' + milliseconds % 10);
    return {text_, length_ + 3};
}

}  // namespace kv::diag

std::uint32_t ErrGetMs(char* pBuffer) {
    if (pBuffer == nullptr) return 0;
    const kv::border::KeepErrno keep;  // a zone that is not there is looked for
    char text[16];
    kv::diag::writeClockTime(kv::diag::localFields(kv::diag::wallClock()), text);
    kv::border::copyText(pBuffer, 9, text);
    return 0;
}
