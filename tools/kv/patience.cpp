// The timer repeats, since a single signal could come just ahead of the read that it is meant for.
#include "kv/patience.h"

#include <csignal>
#include <sys/time.h>

namespace kv::tool {
namespace {

void startTimer(std::chrono::milliseconds interval) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(interval);
    const auto rest_us = std::chrono::duration_cast<std::chrono::microseconds>(interval - seconds);
    const timeval period{static_cast<time_t>(seconds.count()), static_cast<suseconds_t>(rest_us.count())};
    const itimerval timer{period, period};
    setitimer(ITIMER_REAL, &timer, nullptr);
}

}  // namespace

Patience::Patience(std::chrono::milliseconds interval) {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    sigemptyset(&action.sa_mask);
    sigaction(SIGALRM, &action, nullptr);  // without SA_RESTART: the read ends
    startTimer(interval);
}

Patience::~Patience() { startTimer(std::chrono::milliseconds(0)); }

}  // namespace kv::tool
