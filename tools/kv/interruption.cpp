// The handler works on two texts that stand ready, and calls only what a handler may call.
#include "kv/interruption.h"

#include <array>
#include <csignal>
#include <unistd.h>

#include "kv/printable.h"
#include "kv/secrets.h"

namespace kv::tool {
namespace {

constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};

std::string pathToRemove;
std::string messageToSay;

void undoAndEnd(int signal) {
    if (!pathToRemove.empty()) unlink(pathToRemove.c_str());
    // Nobody is left who could act on a failure to write.
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, messageToSay.data(), messageToSay.size());
    std::signal(signal, SIG_DFL);
    raise(signal);
}

sigset_t allSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : kSignals) sigaddset(&set, signal);
    return set;
}

/// A signal that the parent had ignored stays so.
void handle(int signal, void (*handler)(int)) {
    struct sigaction action {};
    sigaction(signal, nullptr, &action);
    if (action.sa_handler == SIG_IGN) return;
    action.sa_handler = handler;
    action.sa_mask = allSignals();
    action.sa_flags = 0;
    sigaction(signal, &action, nullptr);
}

}  // namespace

Undo::Undo(const std::string& path, const std::string& message) {
    pathToRemove = path;
    messageToSay = "kv: " + printable(withoutSecrets(message)) + "\n";
    for (const int signal : kSignals) handle(signal, undoAndEnd);
}

Undo::~Undo() {
    for (const int signal : kSignals) handle(signal, SIG_DFL);
}

SignalsHeldBack::SignalsHeldBack() {
    const sigset_t set = allSignals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

SignalsHeldBack::~SignalsHeldBack() {
    const sigset_t set = allSignals();
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

}  // namespace kv::tool
