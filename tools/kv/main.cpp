// kv: the library's file layer from a shell.
//
// Data go to standard output and messages to standard error, never the one among the other. The library's own messages
// are switched off before anything else runs, and on again by --verbose.
#include <exception>
#include <string>
#include <utility>

#include <CLI/CLI.hpp>

#include "errlog.h"
#include "kv/arguments.h"
#include "kv/commands.h"
#include "kv/complaint.h"
#include "kv/secrets.h"
#include "kv/standard_streams.h"
#include "kvos/locator.h"

namespace kv::tool {
namespace {

std::string about() {
    const bool takesObjects = kvOSUseAws("s3://host/bucket/key") != 0;
    return "Reads, writes, copies, lists and names files through one set of calls, wherever they are: local paths, "
           "scratch files in memory (mem://...), URLs (http, https, ftp)" +
           std::string(takesObjects ? ", objects of a store (s3://...)." : ".");
}

void describe(CLI::App& app, Chosen& chosen) {
    app.name("kv");
    app.set_version_flag("--version", "kv " KV_VERSION);
    app.add_flag_callback(
        "-v,--verbose", [] { gdwOutputToStdDebug = 1; }, "Show the library's messages on standard error");
    app.footer("Example: kv cat clip0000.yuv > copy.yuv\nExit codes: 0 done, 1 failed, 2 wrong usage.");
    app.require_subcommand(1);
    app.fallthrough();  // kv -v cat and kv cat -v are the same
    app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    for (Declare* declare : kCommands) declare(app, chosen);
    for (CLI::App* command : app.get_subcommands({})) command->group("Commands");
}

/// What is wrong with the arguments, without the parser's word "subcommand", which nobody typed.
std::string mistake(const CLI::App& app, const CLI::ParseError& error) {
    auto unexpected = app.remaining(true);
    if (app.get_subcommands().empty()) {
        return unexpected.empty() ? "no command given" : "'" + unmarked(unexpected.front()) + "' is no command";
    }
    const bool extra = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError);
    if (!extra || unexpected.empty()) return error.what();
    return "'" + unmarked(unexpected.front()) + "' was not expected";
}

/// Help and version are what was asked for; everything else is a mistake in the arguments.
Exit answer(const CLI::App& app, const CLI::ParseError& error) {
    if (error.get_name() == "CallForHelp") return writeOut(app.help());
    if (error.get_name() == "CallForVersion") return writeOut(std::string(error.what()) + "\n");
    const auto commands = app.get_subcommands();
    const std::string command = commands.empty() ? "kv" : "kv " + commands.front()->get_name();
    complain(mistake(app, error) + " (see " + command + " --help)");
    return Exit::usage;
}

Exit run(int argc, char** argv) {
    CLI::App app(about());
    Chosen chosen;
    describe(app, chosen);
    try {
        auto arguments = markedArguments(argc, argv);
        hideSecrets(argc, argv);
        app.parse(std::move(arguments));
    } catch (const CLI::ParseError& error) {
        return answer(app, error);
    }
    return chosen();
}

}  // namespace
}  // namespace kv::tool

int main(int argc, char** argv) {
    gdwOutputToStdDebug = 0;
    try {
        return static_cast<int>(kv::tool::run(argc, argv));
    } catch (const std::exception& error) {
        kv::tool::complain(error.what());
        return static_cast<int>(kv::tool::Exit::failed);
    }
}
