// The commands of kv.
//
// A command is one file. It declares itself to the parser and leaves behind what is to run if it is the chosen one. A
// new command is its file and its name in the list below.
#pragma once

#include <array>
#include <functional>

namespace CLI {
class App;
}

namespace kv::tool {

/// What a run of kv ends with.
enum class Exit : int { ok = 0, failed = 1, usage = 2 };

/// The command that the arguments chose, ready to run.
using Chosen = std::function<Exit()>;

/// Adds one command to the parser; when it is the one that was asked for, `chosen` is what it does.
using Declare = void(CLI::App& app, Chosen& chosen);

Declare declareAudio, declareCat, declareCfg, declareCp, declareCut, declareEvent, declareEvents, declareFourcc,
    declareLcd, declareLog, declareLs, declareM3u8, declareMkdir, declareMv, declarePut, declareRest, declareRm,
    declareSeq, declareSerial, declareSplit, declareStat, declareSys, declareVerify;

/// In the order in which help lists them.
inline constexpr std::array kCommands{
    declareCat,   declarePut,    declareCp,    declareMv,     declareCut,    declareVerify, declareStat, declareLs,
    declareRm,    declareMkdir,  declareSplit, declareSeq,    declareAudio,  declareM3u8,   declareCfg,  declareLog,
    declareEvent, declareEvents, declareRest,  declareFourcc, declareSerial, declareLcd,    declareSys};

}  // namespace kv::tool
