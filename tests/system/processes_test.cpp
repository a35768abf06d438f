// Programs that are started: what arrives at them, in a program that writes it down.
#include <cerrno>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "kvos/process.h"
#include "support/captured_messages.h"
#include "support/scratch.h"

namespace {

using kvtest::CapturedMessages;
using Words = std::vector<std::string>;

std::uint32_t start(const char* application, const char* line, kvOSProcessInformation* information) {
    return kvOSCreateProcess(application, line, nullptr, nullptr, 0, 0, nullptr, nullptr, nullptr, information);
}

/// The arguments that arrive behind the program's own name.
Words arrived(const char* line) {
    const kvtest::ScratchFolder folder;
    const std::string file = folder / "arguments";
    setenv("ARGUMENTS_FILE", file.c_str(), 1);
    kvOSProcessInformation information{};
    EXPECT_EQ(start(ARGUMENT_WRITER, line, &information), 1u);
    int status = 0;
    EXPECT_EQ(waitpid(static_cast<pid_t>(information.dwProcessId), &status, 0),
              static_cast<pid_t>(information.dwProcessId));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 7) << status;
    Words words;
    const std::string content = kvtest::contentOf(file);
    for (std::size_t at = 0; at < content.size(); at += words.back().size() + 1) words.emplace_back(&content[at]);
    EXPECT_FALSE(words.empty());
    if (words.empty()) return words;
    EXPECT_EQ(words.front(), ARGUMENT_WRITER);
    words.erase(words.begin());
    return words;
}

TEST(Processes, EmptyLineGivesTheApplicationAlone) {
    EXPECT_EQ(arrived(""), Words{});
    EXPECT_EQ(arrived("    "), Words{});
    EXPECT_EQ(arrived(nullptr), Words{});
}

TEST(Processes, LineIsSplitAtBlanksAlone) {
    EXPECT_EQ(arrived("one two"), (Words{"one", "two"}));
    EXPECT_EQ(arrived("  one   two  "), (Words{"one", "two"}));
    EXPECT_EQ(arrived("a\tb 'c d' \\ e"), (Words{"a\tb", "'c", "d'", "\\", "e"}));
}

TEST(Processes, QuotedPathArrivesAsOneWithoutItsQuotes) {
    EXPECT_EQ(arrived("-i \"/my clips/one two.mov\" -o x"), (Words{"-i", "/my clips/one two.mov", "-o", "x"}));
    EXPECT_EQ(arrived("\"a b\" \"c d\""), (Words{"a b", "c d"}));
}

TEST(Processes, BlanksInQuotesStayAsTheyAre) {
    EXPECT_EQ(arrived("\"a   b  c\" d"), (Words{"a   b  c", "d"}));
    EXPECT_EQ(arrived("\" a \" b"), (Words{" a ", "b"}));
}

TEST(Processes, PieceThatIsQuotedByItselfRunsOn) {
    EXPECT_EQ(arrived("\"one\" two three\" four"), (Words{"one\" two three", "four"}));
    EXPECT_EQ(arrived("\"one\" two"), (Words{"one\" two"}));
    EXPECT_EQ(arrived("\"one\""), Words{"one\""});
    EXPECT_EQ(arrived("\"one\" \"two\" three"), (Words{"one\" \"two", "three"}));
}

TEST(Processes, QuoteWithoutAnEndRunsToTheEndOfTheLine) {
    EXPECT_EQ(arrived("a \"b c  d "), (Words{"a", "b c  d"}));
    EXPECT_EQ(arrived("a \""), (Words{"a", ""}));
    EXPECT_EQ(arrived("\" b"), Words{" b"});
}

TEST(Processes, QuotesInsideAPieceAreNothingSpecial) {
    EXPECT_EQ(arrived("a\"b c\"d --x=\"y z\""), (Words{"a\"b", "c\"d", "--x=\"y", "z\""}));
}

TEST(Processes, NoMoreThan254ArgumentsAreTaken) {
    std::string line;
    Words expected;
    for (int i = 0; i < 300; ++i) {
        line += std::to_string(i) + " ";
        if (i < 254) expected.push_back(std::to_string(i));
    }
    EXPECT_EQ(arrived(line.c_str()), expected);
}

TEST(Processes, LongLineArrivesWhole) {
    const std::string word(100000, 'w');
    EXPECT_EQ(arrived(("a " + word).c_str()), (Words{"a", word}));
}

TEST(Processes, IdStandsAtBothPlacesAndTheRestStays) {
    kvOSProcessInformation information{11, 22, 33, 44};
    ASSERT_EQ(start("/bin/sh", "-c true", &information), 1u);
    EXPECT_EQ(information.dwProcessId, information.dwThreadId);
    EXPECT_EQ(information.hProcess, 11);
    EXPECT_EQ(information.hThread, 22);
    int status = -1;
    EXPECT_EQ(waitpid(static_cast<pid_t>(information.dwProcessId), &status, 0),
              static_cast<pid_t>(information.dwProcessId));
    EXPECT_EQ(status, 0);
}

TEST(Processes, InformationMayBeNull) {
    EXPECT_EQ(start("/bin/sh", "-c true", nullptr), 1u);
    EXPECT_GT(wait(nullptr), 0);
}

TEST(Processes, ChangedEnvironmentIsHandedOn) {
    setenv("TO_END_WITH", "23", 1);
    kvOSProcessInformation information{};
    ASSERT_EQ(start("/bin/sh", "-c \"exit $TO_END_WITH\"", &information), 1u);
    int status = -1;
    waitpid(static_cast<pid_t>(information.dwProcessId), &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 23);
}

TEST(Processes, ListIsLoggedBetweenTwoLines) {
    CapturedMessages messages;
    ASSERT_EQ(start("/bin/sh", "-c \"exit 0\"", nullptr), 1u);
    wait(nullptr);
    const std::string text = messages.text();
    std::size_t at = 0;
    for (const char* part : {"Process Launch\n", "/bin/sh ", "-c ", "exit 0 ", "Process Launch\n"}) {
        at = text.find(part, at);
        ASSERT_NE(at, std::string::npos) << part << " in " << text;
        ++at;
    }
    EXPECT_EQ(messages.count("Process Launch\n"), 2u);
}

TEST(Processes, FailureIsLoggedAndClearsTheIds) {
    kvOSProcessInformation information{1, 2, 3, 4};
    CapturedMessages messages;
    errno = 0;
    EXPECT_EQ(start("/no/such/program", "a", &information), 0u);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(information.dwProcessId, 0u);
    EXPECT_EQ(information.dwThreadId, 0u);
    EXPECT_EQ(messages.count("Process Launch\n"), 2u);
    EXPECT_EQ(messages.count("\nkvOSCreateProcess(FAILED) rtn=2, lasterr=2 "), 1u) << messages.text();
}

TEST(Processes, ProgramIsNotLookedForInTheSearchPath) { EXPECT_EQ(start("sh", "-c true", nullptr), 0u); }

TEST(Processes, NullApplicationIsRefused) {
    kvOSProcessInformation information{1, 2, 3, 4};
    CapturedMessages messages;
    EXPECT_EQ(start(nullptr, "a", &information), 0u);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(information.dwProcessId, 0u);
    EXPECT_EQ(messages.count("\nkvOSCreateProcess(FAILED) rtn=22, lasterr=22 "), 1u);
    EXPECT_EQ(messages.count("Process Launch"), 0u);
}

}  // namespace
