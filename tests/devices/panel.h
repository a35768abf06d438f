// The panel of a test: its process, its device, what it is told and what it saw.
#pragma once

#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <string_view>
#include <unistd.h>

#include "devices/frame.h"
#include "servers/child_process.h"
#include "support/scratch.h"

namespace kvtest {

/// Only for what opens the line twice: a pseudo-terminal stays exclusive for as long as its other side is open, while a
/// real line is free once it is closed. Root is not kept out.
inline bool mayReopen() { return geteuid() == 0; }

class Panel {
public:
    Panel() : process_({PANEL_SIMULATOR}, folder_ / "messages") {
        device_ = process_.readLine("the panel does not start").substr(3);  // "at DEVICE"
    }

    const std::string& device() const { return device_; }

    /// What the next commands get, one each: "answer", "silence", "hang up", "late" or bytes.
    void next(std::initializer_list<std::string_view> answers) {
        for (const std::string_view answer : answers) process_.write("next " + std::string(answer) + "\n");
    }
    void next(const Bytes& bytes) { next({hexOf(bytes)}); }
    void hangUp() { process_.write("hang up\n"); }
    void answerTheLate() { process_.write("go\n"); }
    void setSpeed(unsigned baud) { process_.write("speed " + std::to_string(baud) + "\n"); }

    /// The next thing that it saw: "frame BAUD HEX" or "noise BAUD HEX". Waits for it.
    std::string saw() { return process_.readLine("the panel saw nothing"); }

    static std::string frame(unsigned baud, std::uint8_t command, const Bytes& data) {
        return "frame " + std::to_string(baud) + " " + hexOf(frameOf(command, data));
    }
    static std::string noise(unsigned baud, std::uint8_t command, const Bytes& data) {
        return "noise " + std::to_string(baud) + " " + hexOf(frameOf(command, data));
    }

private:
    ScratchFolder folder_;
    ChildProcess process_;
    std::string device_;
};

}  // namespace kvtest
