// Enumeration of local directories.
#include "kvos/find.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <glob.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "kvos/attributes.h"
#include "kvos/locator.h"
#include "support/scratch.h"
#include "tests/file/deep_folder.h"

namespace fs = std::filesystem;

namespace {

using Names = std::vector<std::string>;

/// The names that a pattern finds, in the order in which they come.
Names namesOf(const std::string& pattern) {
    Names names;
    kvOSFindData data;
    const std::int64_t search = kvOSFindFirstFile(pattern.c_str(), &data);
    if (search == KVFIND_INVALID) return names;
    do {
        names.emplace_back(data.szName);
    } while (kvOSFindNextFile(search, &data) == 1);
    EXPECT_EQ(errno, -1);
    EXPECT_EQ(kvOSFindClose(search), 1u);
    return names;
}

void makeFiles(kvtest::ScratchFolder& scratch, const Names& names) {
    for (const std::string& name : names) kvtest::makeFile(scratch / name);
}

/// The one entry that a pattern finds.
kvOSFindData onlyEntry(const std::string& pattern) {
    kvOSFindData data{};
    const std::int64_t search = kvOSFindFirstFile(pattern.c_str(), &data);
    EXPECT_NE(search, KVFIND_INVALID) << pattern;
    kvOSFindData further;
    EXPECT_EQ(kvOSFindNextFile(search, &further), 0u);
    kvOSFindClose(search);
    return data;
}

/// What glob itself finds, in its own order.
Names globbed(const std::string& pattern) {
    Names paths;
    glob_t found{};
    if (glob(pattern.c_str(), 0, nullptr, &found) == 0) paths.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
    globfree(&found);
    return paths;
}

std::uint64_t unitsOf(const kvOSFileTime& time) { return std::uint64_t{time.dwHigh} << 32 | time.dwLow; }

bool gGlobFindsNoMemory = false;

void expectRefused(const char* pattern) {
    kvOSFindData data;
    errno = 0;
    EXPECT_EQ(kvOSFindFirstFile(pattern, &data), -1) << pattern;
    EXPECT_EQ(errno, -1) << pattern;
}

}  // namespace

#ifdef __GLIBC__
// Stands in front of the system's own for this whole program, so that a test can let it fail.
extern "C" __attribute__((visibility("default"))) int glob(const char* pattern, int flags,
                                                           int (*onError)(const char*, int), glob_t* found) noexcept {
    if (gGlobFindsNoMemory) return GLOB_NOSPACE;
    using Call = int (*)(const char*, int, int (*)(const char*, int), glob_t*);
    static const auto next = reinterpret_cast<Call>(dlsym(RTLD_NEXT, sizeof(off_t) > sizeof(long) ? "glob64" : "glob"));
    return next(pattern, flags, onError, found);
}
#endif

// ---- what a pattern finds ----

TEST(Find, DeliversNamesInAnyCaseOrder) {
    kvtest::ScratchFolder scratch;
    makeFiles(scratch, {"b.mov", "A.mov", "c.MOV", "a2.mov", "d.txt"});
    EXPECT_EQ(namesOf(scratch / "?*.mov"), (Names{"A.mov", "a2.mov", "b.mov"}));
    EXPECT_EQ(namesOf(scratch / "a*"), (Names{"a2.mov"}));
    EXPECT_EQ(namesOf(scratch / "b.mov"), (Names{"b.mov"}));
}

TEST(Find, NamesThatDifferInCaseAloneStayInTheOrderOfGlob) {
    kvtest::ScratchFolder scratch;
    makeFiles(scratch, {"a", "Z"});  // out of order as glob finds them, so that there is something to sort
    const std::string letters = "midnight";
    for (unsigned capitals = 0; capitals < 1u << letters.size(); ++capitals) {
        std::string name = letters;
        for (std::size_t i = 0; i < name.size(); ++i) {
            if ((capitals >> i & 1) != 0) name[i] = static_cast<char>(name[i] - 'a' + 'A');
        }
        kvtest::makeFile(scratch / name);
    }
    Names expected;
    for (const std::string& path : globbed(scratch / "????????")) expected.push_back(fs::path(path).filename());
    if (expected.size() != 1u << letters.size()) GTEST_SKIP() << "names in two cases are one file here";
    expected.insert(expected.begin(), "a");
    expected.push_back("Z");
    EXPECT_EQ(namesOf(scratch / "?*"), expected);
}

TEST(Find, ALeadingStarFindsHiddenNamesWithTheDotsFirst) {
    kvtest::ScratchFolder scratch;
    makeFiles(scratch, {"!first", "a", "b.x", ".hid", ".z.x"});
    fs::create_directory(scratch / "folder");
    EXPECT_EQ(namesOf(scratch / "*"), (Names{".", "..", "!first", ".hid", ".z.x", "a", "b.x", "folder"}));
    EXPECT_EQ(namesOf(scratch / "*.x"), (Names{".z.x", "b.x"}));
    EXPECT_EQ(namesOf(scratch / "?*"), (Names{"!first", "a", "b.x", "folder"}));
}

TEST(Find, TheExtensionOfAStarAlsoFindsNamesWithout) {
    kvtest::ScratchFolder scratch;
    makeFiles(scratch, {"a", "a.x", "a.y", "ab", ".hid", "b.x"});
    EXPECT_EQ(namesOf(scratch / "*.*"), (Names{".", "..", ".hid", "a", "a.x", "a.y", "ab", "b.x"}));
    EXPECT_EQ(namesOf(scratch / "a.*"), (Names{"a", "a.x", "a.y"}));
    EXPECT_EQ(namesOf(scratch / "a*.*"), (Names{"a", "a.x", "a.y", "ab"}));
    EXPECT_EQ(namesOf(scratch / "a?.*"), (Names{"ab"}));
}

TEST(Find, ANameThatTwoFormsOfThePatternMatchComesTwice) {
    kvtest::ScratchFolder scratch;
    makeFiles(scratch, {"1x", "1x.2x"});
    EXPECT_EQ(namesOf(scratch / "*x.*"), (Names{"1x", "1x.2x", "1x.2x"}));
}

TEST(Find, BracketsMatchThemselves) {
    kvtest::ScratchFolder scratch;
    makeFiles(scratch, {"clip[1].mov", "clip1.mov", "[", "]x"});
    EXPECT_EQ(namesOf(scratch / "clip[1].mov"), (Names{"clip[1].mov"}));
    EXPECT_EQ(namesOf(scratch / "clip[?].*"), (Names{"clip[1].mov"}));
    EXPECT_EQ(namesOf(scratch / "[*"), (Names{"["}));
    EXPECT_EQ(namesOf(scratch / "]*"), (Names{"]x"}));
}

TEST(Find, BracketsInTheDirectoryMatchThemselves) {
    kvtest::ScratchFolder scratch;
    fs::create_directory(scratch / "[a] ]b[");
    fs::create_directory(scratch / "a");
    kvtest::makeFile(scratch / "[a] ]b[/in");
    EXPECT_EQ(namesOf(scratch / "[a] ]b[/i*"), (Names{"in"}));
    EXPECT_EQ(namesOf(scratch / "[a] ]b[/in"), (Names{"in"}));
}

TEST(Find, ABackslashQuotesTheCharacterBehindIt) {
    kvtest::ScratchFolder scratch;
    makeFiles(scratch, {"a\\b", "ab", "*", "x"});
    EXPECT_EQ(namesOf(scratch / "a\\b"), (Names{"ab"}));
    EXPECT_EQ(namesOf(scratch / "a\\\\b"), (Names{"a\\b"}));
    EXPECT_EQ(namesOf(scratch / "\\*"), (Names{"*"}));
    fs::create_directory(scratch / "d\\e");
    kvtest::makeFile(scratch / "d\\e/in");
    EXPECT_EQ(namesOf(scratch / "d\\e/i*"), Names{});
    EXPECT_EQ(namesOf(scratch / "d\\\\e/i*"), (Names{"in"}));
}

TEST(Find, DeliversEveryKindOfName) {
    kvtest::ScratchFolder scratch;
    const std::string longest(255, 'l');
    const std::string longExtension = "e." + std::string(253, 'x');
    const Names names{"a b", "a..b", "dots...", "e\xC3\xA4\xE2\x82\xAC", longExtension, longest, "star*", "y.", "z?.x"};
    makeFiles(scratch, names);
    Names found = namesOf(scratch / "?*");
    Names expected = names;
    std::sort(found.begin(), found.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(found, expected);
}

TEST(Find, FindsNothingInAnEmptyOrMissingDirectory) {
    kvtest::ScratchFolder scratch;
    expectRefused((scratch / "?*").c_str());
    expectRefused((scratch / "missing/*").c_str());
    expectRefused((scratch / "missing").c_str());
    EXPECT_EQ(namesOf(scratch / "*"), (Names{".", ".."}));
}

TEST(Find, RefusesAPatternWithoutAName) {
    expectRefused("");
    expectRefused("/");
    expectRefused("/tmp/");
    expectRefused("/tmp/.*");  // all of it is extension
}

TEST(Find, RefusesWildcardsInTheDirectory) {
    expectRefused("/t*/x");
    expectRefused("/tm?/*");
}

TEST(Find, APatternWithoutAnInnerSlashIsItsOwnDirectory) {
    kvtest::ScratchFolder scratch;
    fs::current_path(scratch.path());
    makeFiles(scratch, {"a.x"});
    expectRefused("*.x");
    expectRefused("a.x");
    expectRefused("/*");
    EXPECT_EQ(namesOf("./*.x"), (Names{"a.x"}));
    EXPECT_FALSE(namesOf("//*").empty());
}

TEST(Find, RefusesNullPointers) {
    expectRefused(nullptr);
    errno = 0;
    EXPECT_EQ(kvOSFindFirstFile("/tmp/*", nullptr), -1);
    EXPECT_EQ(errno, -1);
}

TEST(Find, RefusesAPatternThatDoesNotFit) {
    kvOSFindData data;
    for (const std::string& pattern :
         {std::string(5000, 'x'), "/" + std::string(4095, 'x'), "/d/" + std::string(4092, '*')}) {
        errno = 0;
        EXPECT_EQ(kvOSFindFirstFile(pattern.c_str(), &data), -1);
        EXPECT_EQ(errno, ENAMETOOLONG);
    }
}

TEST(Find, AnEntryWhosePathDoesNotFitIsLeftOutAndTheEndTellsIt) {
    kvtest::ScratchFolder scratch;
    const std::string folder = kvtest::makeDeepFolder(scratch.path(), 4080);
    const kvtest::FileNearby fits(folder, "b");
    const kvtest::FileNearby just(folder, std::string(14, 'c'));
    const kvtest::FileNearby tooLong(folder, std::string(15, 'd'));
    kvOSFindData data;
    const std::int64_t search = kvOSFindFirstFile((folder + "/?*").c_str(), &data);
    ASSERT_NE(search, KVFIND_INVALID);
    EXPECT_STREQ(data.szName, "b");
    EXPECT_EQ(kvOSFindNextFile(search, &data), 1u);
    EXPECT_EQ(data.szName, std::string(14, 'c'));
    EXPECT_EQ(kvOSFindNextFile(search, &data), 0u);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(kvOSFindClose(search), 1u);
    errno = 0;
    EXPECT_EQ(kvOSFindFirstFile((folder + "/d*").c_str(), &data), -1);
    EXPECT_EQ(errno, ENAMETOOLONG);
}

#ifdef __GLIBC__
TEST(Find, AGlobThatFailsIsNoPatternTooLong) {
    kvOSFindData data;
    gGlobFindsNoMemory = true;
    errno = ENAMETOOLONG;  // of some earlier call
    EXPECT_EQ(kvOSFindFirstFile("/dev/null", &data), -1);
    EXPECT_EQ(errno, -1);
    gGlobFindsNoMemory = false;
}
#endif

TEST(Find, AnObjectAddressFindsNoLocalName) {
    kvtest::ScratchFolder scratch;
    fs::create_directories(scratch / "x s3:/bucket");
    fs::current_path(scratch.path());
    kvtest::makeFile("x s3:/bucket/a");
#ifdef KVUTIL_TESTS_WITH_S3
    EXPECT_EQ(namesOf("x s3://bucket/?*"), Names{});
#else
    EXPECT_EQ(namesOf("x s3://bucket/?*"), (Names{"a"}));
#endif
}

TEST(Find, TheRedirectIsNotAppliedToThePattern) {
    kvtest::ScratchFolder scratch;
    makeFiles(scratch, {"a"});
    char source[] = "/from";
    std::string target = scratch.path();
    gszReDir_Source = source;
    gszReDir_NewDir = target.data();
    EXPECT_EQ(namesOf("/from/a*"), Names{});
    gszReDir_Source = gszReDir_NewDir = nullptr;
}

// ---- what an entry says ----

TEST(FindData, OfAFile) {
    kvtest::ScratchFolder scratch;
    const std::string path = scratch / "clip.mov";
    kvtest::makeFile(path, "abcde");
    const timespec times[2] = {{1000000000, 900}, {-5, 100}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);

    const kvOSFindData data = onlyEntry(path);
    EXPECT_STREQ(data.szName, "clip.mov");
    EXPECT_EQ(data.dwAttributes, KVATTR_NORMAL);
    EXPECT_EQ(data.dwSizeHigh, 0u);
    EXPECT_EQ(data.dwSizeLow, 5u);
    EXPECT_EQ(unitsOf(data.ftAccess), FILEUnixTimeToFileTime(1000000000, 900));
    EXPECT_EQ(unitsOf(data.ftWrite), FILEUnixTimeToFileTime(static_cast<std::uint64_t>(-5), 100));
    EXPECT_EQ(unitsOf(data.ftCreation) / 10000000,
              FILEUnixTimeToFileTime(static_cast<std::uint64_t>(status.st_ctime), 0) / 10000000);
}

TEST(FindData, TheSizeOfALocalFileIsItsLow32Bits) {
    kvtest::ScratchFolder scratch;
    kvtest::makeFile(scratch / "large");
    fs::resize_file(scratch / "large", 0x100000007);
    const kvOSFindData data = onlyEntry(scratch / "large");
    EXPECT_EQ(data.dwSizeHigh, 0u);
    EXPECT_EQ(data.dwSizeLow, 7u);
}

TEST(FindData, AttributesAreThoseOfTheCallByName) {
    kvtest::ScratchFolder scratch;
    fs::create_directory(scratch / "folder");
    kvtest::makeFile(scratch / "readonly");
    ASSERT_EQ(chmod((scratch / "readonly").c_str(), 0400), 0);
    ASSERT_EQ(mkfifo((scratch / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(onlyEntry(scratch / "folder").dwAttributes, KVATTR_DIRECTORY);
    EXPECT_EQ(onlyEntry(scratch / "readonly").dwAttributes, KVATTR_READONLY);
    EXPECT_EQ(onlyEntry(scratch / "pipe").dwAttributes, KVATTR_INVALID);
}

TEST(FindData, AttributesAreRedirectedAndAllElseIsNot) {
    kvtest::ScratchFolder scratch;
    std::string listed = scratch / "listed";
    std::string other = scratch / "other";
    fs::create_directory(listed);
    fs::create_directories(other + "/clip");
    kvtest::makeFile(listed + "/clip", "abcde");
    gszReDir_Source = listed.data();
    gszReDir_NewDir = other.data();
    const kvOSFindData data = onlyEntry(listed + "/clip");
    gszReDir_Source = gszReDir_NewDir = nullptr;
    EXPECT_EQ(data.dwAttributes, KVATTR_DIRECTORY);
    EXPECT_STREQ(data.szName, "clip");
    EXPECT_EQ(data.dwSizeLow, 5u);
}

TEST(FindData, ADirectoryThatLooksLikeAQueryIsNamedByWhatItsPathHasMoreThanTheFirst) {
    kvtest::ScratchFolder scratch;
    fs::current_path(scratch.path());
    fs::create_directories("http:/?dir");
    fs::create_directories("http:/x?dir");
    kvtest::makeFile("http:/?file");
    EXPECT_EQ(namesOf("http:/*"), (Names{".", "..", "dir", "", "x"}));
    EXPECT_EQ(namesOf("http:/*dir"), (Names{"", "x"}));  // "?dir" is the first itself: nothing is beyond
}

TEST(FindData, ADanglingLinkIsDeliveredWithTheLinksOwnStatus) {
    kvtest::ScratchFolder scratch;
    fs::create_symlink("nowhere", scratch / "link");
    const kvOSFindData data = onlyEntry(scratch / "link");
    EXPECT_STREQ(data.szName, "link");
    EXPECT_EQ(data.dwAttributes, 0u);
    EXPECT_EQ(data.dwSizeLow, 7u);
}

TEST(FindData, AnEntryThatDisappearedIsPassedOver) {
    kvtest::ScratchFolder scratch;
    makeFiles(scratch, {"a", "b", "c"});
    kvOSFindData data;
    const std::int64_t search = kvOSFindFirstFile((scratch / "?").c_str(), &data);
    ASSERT_NE(search, KVFIND_INVALID);
    EXPECT_STREQ(data.szName, "a");
    fs::remove(scratch / "b");
    EXPECT_EQ(kvOSFindNextFile(search, &data), 1u);
    EXPECT_STREQ(data.szName, "c");
    makeFiles(scratch, {"d"});
    errno = 0;
    EXPECT_EQ(kvOSFindNextFile(search, &data), 0u);
    EXPECT_EQ(errno, -1);
    EXPECT_EQ(kvOSFindNextFile(search, &data), 0u);
    EXPECT_EQ(FindClose(search), 1u);
}

// ---- handles ----

TEST(FindHandles, InvalidOnesAreRefused) {
    kvOSFindData data;
    for (const std::int64_t handle : {std::int64_t{-1}, std::int64_t{0}}) {
        errno = 0;
        EXPECT_EQ(kvOSFindNextFile(handle, &data), 0u);
        EXPECT_EQ(errno, -1);
        EXPECT_EQ(kvOSFindClose(handle), 0u);
        EXPECT_EQ(FindClose(handle), 0u);
    }
}

TEST(FindHandles, ANullRecordFillsNothing) {
    const std::int64_t search = kvOSFindFirstFile("/dev/null", std::make_unique<kvOSFindData>().get());
    ASSERT_NE(search, KVFIND_INVALID);
    EXPECT_EQ(kvOSFindNextFile(search, nullptr), 0u);
    EXPECT_EQ(errno, -1);
    EXPECT_EQ(kvOSFindClose(search), 1u);
}

TEST(FindHandles, TheSeparatorIsASlashButForTheInvalidHandle) {
    EXPECT_STREQ(kvOSFindGetSeparator(0), "/");
    EXPECT_STREQ(kvOSFindGetSeparator(12345), "/");
    EXPECT_EQ(kvOSFindGetSeparator(-1), nullptr);
    EXPECT_EQ(kvOSFindGetSeparatorChar(12345), '/');
    EXPECT_EQ(kvOSFindGetSeparatorChar(-1), '\0');
}

TEST(FindHandles, TwoEnumerationsDoNotMeet) {
    kvtest::ScratchFolder scratch;
    makeFiles(scratch, {"a1", "a2", "b1", "b2"});
    kvOSFindData data;
    const std::int64_t a = kvOSFindFirstFile((scratch / "a*").c_str(), &data);
    const std::int64_t b = kvOSFindFirstFile((scratch / "b*").c_str(), &data);
    EXPECT_EQ(kvOSFindNextFile(a, &data), 1u);
    EXPECT_STREQ(data.szName, "a2");
    EXPECT_EQ(kvOSFindClose(a), 1u);
    EXPECT_EQ(kvOSFindNextFile(b, &data), 1u);
    EXPECT_STREQ(data.szName, "b2");
    EXPECT_EQ(kvOSFindClose(b), 1u);
}

// ---- one run of glob ----

TEST(GlobFromSplitPath, AppendsOnlyWhenAskedAndSortsAll) {
    kvtest::ScratchFolder scratch;
    makeFiles(scratch, {"B", "a", ".h"});
    const std::string directory = scratch.path() + "/";
    glob_t found{};
    EXPECT_EQ(FILEGlobFromSplitPath(directory.c_str(), "?", "", 0, &found), 0);
    EXPECT_EQ(found.gl_pathc, 2u);
    EXPECT_EQ(FILEGlobFromSplitPath(directory.c_str(), ".*", nullptr, 1, &found), 0);
    ASSERT_EQ(found.gl_pathc, 5u);
    const Names expected{".", "..", ".h", "a", "B"};
    for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(found.gl_pathv[i], directory + expected[i]);
    globfree(&found);
}

TEST(GlobFromSplitPath, NothingFoundIsNoError) {
    glob_t found{};
    EXPECT_EQ(FILEGlobFromSplitPath("/nowhere/", "*", ".x", 0, &found), 0);
    EXPECT_EQ(found.gl_pathc, 0u);
    globfree(&found);
}

TEST(GlobFromSplitPath, RefusesWhatDoesNotFit) {
    glob_t found{};
    const std::string half(2048, '[');
    errno = 0;
    EXPECT_NE(FILEGlobFromSplitPath(half.c_str(), half.c_str(), "", 0, &found), 0);
    EXPECT_EQ(errno, ENAMETOOLONG);
    EXPECT_EQ(FILEGlobFromSplitPath(half.c_str(), half.substr(1).c_str(), "", 0, &found), 0);
    globfree(&found);
    EXPECT_NE(FILEGlobFromSplitPath("/", "*", "", 0, nullptr), 0);
}

TEST(GlobOrder, IsThatOfTextInAnyCaseWithTheDotsFirst) {
    std::vector<const char*> paths{"/d/b", "/d/..", "/d/A", "/d/!", "/d/.", "/d/.a", "/d/a1"};
    std::qsort(paths.data(), paths.size(), sizeof paths[0], FILEGlobQsortCompare);
    const Names sorted(paths.begin(), paths.end());
    EXPECT_EQ(sorted, (Names{"/d/.", "/d/..", "/d/!", "/d/.a", "/d/A", "/d/a1", "/d/b"}));
}

TEST(GlobOrder, NamesThatDifferInCaseAloneAreEqual) {
    const char* a = "/d/Clip";
    const char* b = "/D/cLIP";
    EXPECT_EQ(FILEGlobQsortCompare(&a, &b), 0);
    const char* dot = ".";
    const char* dots = "..";
    EXPECT_LT(FILEGlobQsortCompare(&dot, &dots), 0);
    EXPECT_GT(FILEGlobQsortCompare(&dots, &dot), 0);
    EXPECT_LT(FILEGlobQsortCompare(&dots, &a), 0);
}
