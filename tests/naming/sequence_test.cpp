// Sequences of numbered files on disk.
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <vector>

#include "kvos/naming.h"
#include "support/scratch.h"

namespace {

using kvtest::makeFile;
using kvtest::ScratchFolder;

constexpr std::uint32_t kNone = 0xFFFFFFFF;
constexpr std::uint32_t kUntouched = 77;

void makeFiles(const ScratchFolder& folder, std::initializer_list<const char*> names) {
    for (const char* name : names) makeFile(folder / name);
}

/// What FindFilesNumber says of a pattern, asked for everything.
struct Counted {
    std::uint32_t first = kUntouched;
    std::uint32_t digits = kUntouched;
    std::uint32_t result;  // behind the two, which are filled while it is made

    explicit Counted(const std::string& pattern) : result(FindFilesNumber(pattern.c_str(), &first, &digits)) {}
};

/// What FindFistFilesNumber says of a path.
struct Start {
    std::vector<char> path = std::vector<char>(4096, '#');
    std::uint32_t count;

    explicit Start(const std::string& member) : count(FindFistFilesNumber(member.c_str(), path.data())) {}
    bool untouched() const { return path[0] == '#'; }
};

TEST(Sequence, WithFirstTheResultIsOnePastTheLastNumber) {
    const ScratchFolder folder;
    makeFiles(folder, {"clip05.tga", "clip06.tga", "clip07.tga", "clip08.tga", "clip09.tga"});
    const Counted counted(folder / "clip??.tga");
    EXPECT_EQ(counted.result, 10u);
    EXPECT_EQ(counted.first, 5u);
    EXPECT_EQ(counted.digits, 2u);
}

TEST(Sequence, WithoutFirstTheResultIsTheCount) {
    const ScratchFolder folder;
    makeFiles(folder, {"clip05.tga", "clip06.tga", "clip07.tga", "clip08.tga", "clip09.tga"});
    EXPECT_EQ(FindFilesNumber((folder / "clip??.tga").c_str(), nullptr, nullptr), 5u);
}

TEST(Sequence, NothingFoundIsNoNumberAndLeavesTheDigits) {
    const ScratchFolder folder;
    makeFile(folder / "other.tga");
    const Counted counted(folder / "clip*.tga");
    EXPECT_EQ(counted.result, 0u);
    EXPECT_EQ(counted.first, kNone);
    EXPECT_EQ(counted.digits, kUntouched);
}

TEST(Sequence, NullAndOverlongPatternsFindNothing) {
    std::uint32_t first = kUntouched;
    EXPECT_EQ(FindFilesNumber(nullptr, &first, nullptr), 0u);
    EXPECT_EQ(first, kNone);
    EXPECT_EQ(FindFilesNumber(("/d/" + std::string(5000, '*')).c_str(), &first, nullptr), 0u);
}

TEST(Sequence, OnlyNamesAsLongAsTheFirstCount) {
    const ScratchFolder folder;
    makeFiles(folder, {"clip0007.tga", "clip0008.tga", "clip00100.tga", "clip1.tga"});
    const Counted counted(folder / "clip*.tga");
    EXPECT_EQ(counted.first, 7u);
    EXPECT_EQ(counted.result, 7u + 2u);
}

TEST(Sequence, TextsOfNamesAreNotCompared) {
    const ScratchFolder folder;
    makeFiles(folder, {"clip0007.tga", "film0003.tga"});
    EXPECT_EQ(FindFilesNumber((folder / "*.tga").c_str(), nullptr, nullptr), 2u);
    EXPECT_EQ(Counted(folder / "????0*.tga").first, 0u);  // read where the first wildcard stands: at the text
}

TEST(Sequence, APatternWithoutWildcardReadsNoNumber) {
    const ScratchFolder folder;
    makeFile(folder / "clip0007.tga");
    const Counted counted(folder / "clip0007.tga");
    EXPECT_EQ(counted.first, 0u);
    EXPECT_EQ(counted.result, 1u);
    EXPECT_EQ(counted.digits, 4u);
}

TEST(Sequence, TheNameStarFindsTheFolderItselfFirst) {
    const ScratchFolder folder;
    makeFiles(folder, {"7", "8.tga", "clip0012"});
    const Counted counted(folder / "*");
    EXPECT_EQ(counted.digits, 0u);
    EXPECT_EQ(counted.first, 0u);   // that of "."
    EXPECT_EQ(counted.result, 4u);  // ".", "..", "7" and "8.tga"
}

TEST(Sequence, StartIsTheLowestNumberWhateverTheTextAheadOfIt) {
    const ScratchFolder folder;
    makeFiles(folder, {"clip0012", "clip0010", "clip0011", "clip00130", "xyzw0005", "clip.tga"});
    const Start start(folder / "clip0012");
    EXPECT_EQ(start.count, 4u);
    EXPECT_STREQ(start.path.data(), (folder / "xyzw0005").c_str());
}

TEST(Sequence, OfAMemberWithWildcardsTheFirstMatchIsTheStart) {
    const ScratchFolder folder;
    makeFiles(folder, {"clip0012", "clip0010", "clip0011", "clip00130", "xyzw0005", "clip.tga"});
    const Start start(folder / "clip????");
    EXPECT_EQ(start.count, 4u);
    EXPECT_STREQ(start.path.data(), (folder / "clip0010").c_str());
}

// Those of "ab123", although it is no member and not the first entry: the last three of each are read, 9 of "Aaaaa9zz".
TEST(Sequence, TheFirstNumberedEntryTellsHowManyDigitsAreRead) {
    const ScratchFolder folder;
    makeFiles(folder, {"Aaaaa9zz", "ab123", "clip1002", "clip0009", "xyzw3001"});
    const Start start(folder / "clip1002");
    EXPECT_EQ(start.count, 4u);
    EXPECT_STREQ(start.path.data(), (folder / "xyzw3001").c_str());
}

TEST(Sequence, WithoutANumberAnywhereTheFirstMatchIsTheStart) {
    const ScratchFolder folder;
    makeFiles(folder, {"bravo", "alpha", "charlie"});
    const Start start(folder / "delta");
    EXPECT_EQ(start.count, 2u);
    EXPECT_STREQ(start.path.data(), (folder / "alpha").c_str());
}

TEST(Sequence, MoreDigitsThanTheNameHasRoomForAreReadFromItsStart) {
    const ScratchFolder folder;
    makeFiles(folder, {"bb9", "bc7", "705"});
    EXPECT_STREQ(Start(folder / "x??").path.data(), (folder / "bb9").c_str());  // "bb9" reads 0, "705" reads 705
}

TEST(Sequence, ABareNameIsItsOwnFolder) {
    const ScratchFolder folder;
    std::filesystem::current_path(folder.path());
    makeFiles(folder, {"clip0011", "clip0010"});
    EXPECT_EQ(FindFistFilesNumber("clip0012", nullptr), 0u);
    std::filesystem::create_directory("clip0012");
    makeFile("clip0012/film0003");
    const Start start("clip0012");
    EXPECT_EQ(start.count, 1u);
    EXPECT_STREQ(start.path.data(), "clip0012/film0003");
}

TEST(Sequence, AMemberWithAnExtensionMatchesNothing) {
    const ScratchFolder folder;
    makeFiles(folder, {"clip0012.tga", "clip0013.tga"});
    const Start start(folder / "clip0012.tga");
    EXPECT_EQ(start.count, 0u);
    EXPECT_TRUE(start.untouched());
}

TEST(Sequence, AMemberWithoutExtensionMatchesAnyExtension) {
    const ScratchFolder folder;
    makeFiles(folder, {"clip0012.tga", "clip0013", "film0011.mov", "long00011"});
    const Start start(folder / "clip0012");
    EXPECT_EQ(start.count, 3u);
    EXPECT_STREQ(start.path.data(), (folder / "film0011.mov").c_str());
}

TEST(Sequence, TheEarliestEntryWinsATie) {
    const ScratchFolder folder;
    makeFiles(folder, {"clip0012", "beta0010.b", "beta0010.a", "zeta0010"});
    EXPECT_STREQ(Start(folder / "clip0012").path.data(), (folder / "beta0010.a").c_str());
}

TEST(Sequence, AMatchWhoseNumberIsAllOnesCountsButIsNoStart) {
    const ScratchFolder folder;
    makeFiles(folder, {"clip4294967295", "clip9999999999"});
    EXPECT_STREQ(Start(folder / "clip4294967295").path.data(), (folder / "clip9999999999").c_str());
    const ScratchFolder other;
    makeFiles(other, {"clip4294967295"});
    const Start none(other / "clip4294967295");
    EXPECT_EQ(none.count, 1u);
    EXPECT_TRUE(none.untouched());
}

TEST(Sequence, AFolderThatIsNotThereHasNoStart) {
    const ScratchFolder folder;
    const Start start(folder / "none/clip0012");
    EXPECT_EQ(start.count, 0u);
    EXPECT_TRUE(start.untouched());
}

TEST(Sequence, NullAndOverlongMembersHaveNoStart) {
    std::vector<char> path(4096, '#');
    EXPECT_EQ(FindFistFilesNumber(nullptr, path.data()), 0u);
    EXPECT_EQ(FindFistFilesNumber(("/d/" + std::string(5000, 'n')).c_str(), path.data()), 0u);
    EXPECT_EQ(FindFistFilesNumber(("/" + std::string(4091, 'd') + "/nnn").c_str(), path.data()), 0u);
    EXPECT_EQ(path[0], '#');
}

TEST(Sequence, StartMayReplaceTheMember) {
    const ScratchFolder folder;
    makeFiles(folder, {"clip0012", "clip0010"});
    std::vector<char> path(4096, '\0');
    std::strcpy(path.data(), (folder / "clip0012").c_str());
    EXPECT_EQ(FindFistFilesNumber(path.data(), path.data()), 2u);
    EXPECT_STREQ(path.data(), (folder / "clip0010").c_str());
}

}  // namespace
