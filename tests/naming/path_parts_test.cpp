// Paths taken apart and joined.
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "kvos/naming.h"

namespace {

struct Parts {
    std::string drive, dir, name, ext;
    bool operator==(const Parts&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Parts& parts) {
    return out << "[" << parts.drive << "][" << parts.dir << "][" << parts.name << "][" << parts.ext << "]";
}

/// Buffers of exactly the sizes that callers give, on the heap, so that a write past one is seen by the sanitizers.
struct Buffers {
    std::vector<char> drive = std::vector<char>(4096, '#');
    std::vector<char> dir = std::vector<char>(4096, '#');
    std::vector<char> name = std::vector<char>(4096, '#');
    std::vector<char> ext = std::vector<char>(256, '#');

    Parts parts() const { return {drive.data(), dir.data(), name.data(), ext.data()}; }
};

Parts split(const std::string& path) {
    Buffers out;
    kvOSSplitPath(path.c_str(), out.drive.data(), out.dir.data(), out.name.data(), out.ext.data());
    return out.parts();
}

std::string make(const char* drive, const char* dir, const char* name, const char* ext) {
    std::vector<char> out(4096, '#');
    kvOSMakePath(out.data(), drive, dir, name, ext);
    return out.data();
}

std::string make(const Parts& parts) {
    return make(parts.drive.c_str(), parts.dir.c_str(), parts.name.c_str(), parts.ext.c_str());
}

TEST(PathParts, PathsComeApartAsTheTableSays) {
    EXPECT_EQ(split("dir/name.ext"), (Parts{"", "dir/", "name", ".ext"}));
    EXPECT_EQ(split("/a/b/c.d.e"), (Parts{"", "/a/b/", "c.d", ".e"}));
    EXPECT_EQ(split("/a/b/"), (Parts{"", "/a/b/", "", ""}));
    EXPECT_EQ(split("C:/a/b.c"), (Parts{"C:", "/a/", "b", ".c"}));
    EXPECT_EQ(split("/a/.hid"), (Parts{"", "/a/", "", ".hid"}));
    EXPECT_EQ(split(".hid"), (Parts{"", ".hid/", ".hid", ""}));
    EXPECT_EQ(split("a"), (Parts{"", "a/", "a", ""}));
    EXPECT_EQ(split("/a"), (Parts{"", "/a/", "a", ""}));
    EXPECT_EQ(split("/a.b/c"), (Parts{"", "/a.b/", "c", ""}));
    EXPECT_EQ(split("C:/"), (Parts{"C:", "/", "", ""}));
    EXPECT_EQ(split("/"), (Parts{"", "/", "", ""}));
}

TEST(PathParts, APathWithoutSlashIsItsOwnDirectory) {
    EXPECT_EQ(split("name.ext"), (Parts{"", "name.ext/", "name", ".ext"}));
    EXPECT_EQ(split("/name.ext"), (Parts{"", "/name.ext/", "name", ".ext"}));
}

TEST(PathParts, ABareNameBehindADriveKeepsTheDriveInItsName) {
    EXPECT_EQ(split("C:name.ext"), (Parts{"C:", "name.ext/", "C:name", ".ext"}));
    EXPECT_EQ(split("C:"), (Parts{"C:", "", "C:", ""}));
}

TEST(PathParts, TheFirstCharacterIsNeverADotOfAnExtension) {
    EXPECT_EQ(split("."), (Parts{"", "./", ".", ""}));
    EXPECT_EQ(split(".."), (Parts{"", "../", ".", "."}));
    EXPECT_EQ(split("/.b"), (Parts{"", "/.b/", "", ".b"}));
    EXPECT_EQ(split("a."), (Parts{"", "a./", "a", "."}));
}

TEST(PathParts, AnEmptyPathHasEmptyParts) { EXPECT_EQ(split(""), (Parts{"", "", "", ""})); }

TEST(PathParts, AnUnwantedDriveStaysInTheDirectory) {
    Buffers out;
    kvOSSplitPath("C:/a/b.c", nullptr, out.dir.data(), out.name.data(), out.ext.data());
    EXPECT_STREQ(out.dir.data(), "C:/a/");
    EXPECT_STREQ(out.name.data(), "b");
    kvOSSplitPath("C:/", nullptr, out.dir.data(), out.name.data(), out.ext.data());
    EXPECT_STREQ(out.dir.data(), "C:/");
    kvOSSplitPath("C:name.ext", nullptr, out.dir.data(), out.name.data(), out.ext.data());
    EXPECT_STREQ(out.dir.data(), "C:name.ext/");
    EXPECT_STREQ(out.name.data(), "C:name");
}

TEST(PathParts, EachPartCanBeAskedForAlone) {
    Buffers out;
    kvOSSplitPath("C:/a/b.c", out.drive.data(), nullptr, nullptr, nullptr);
    kvOSSplitPath("C:/a/b.c", nullptr, nullptr, out.name.data(), nullptr);
    kvOSSplitPath("C:/a/b.c", nullptr, nullptr, nullptr, out.ext.data());
    kvOSSplitPath("C:/a/b.c", nullptr, nullptr, nullptr, nullptr);
    EXPECT_STREQ(out.drive.data(), "C:");
    EXPECT_EQ(out.dir[0], '#');
    EXPECT_STREQ(out.name.data(), "b");
    EXPECT_STREQ(out.ext.data(), ".c");
}

TEST(PathParts, ANullPathWritesNothing) {
    Buffers out;
    kvOSSplitPath(nullptr, out.drive.data(), out.dir.data(), out.name.data(), out.ext.data());
    EXPECT_EQ(out.drive[0], '#');
    EXPECT_EQ(out.dir[0], '#');
    EXPECT_EQ(out.name[0], '#');
    EXPECT_EQ(out.ext[0], '#');
}

TEST(PathParts, QueryOfALocatorIsDropped) {
    EXPECT_EQ(split("http://host/a/b.mov?x=1.2"), (Parts{"", "http://host/a/", "b", ".mov"}));
    EXPECT_EQ(split("HTTPS://host/a/b?x=/c.d?e"), (Parts{"", "HTTPS://host/a/", "b", ""}));
    EXPECT_EQ(split("s3://bucket/a/?list"), (Parts{"", "s3://bucket/a/", "", ""}));
}

TEST(PathParts, QuestionMarkOfALocalPathIsAnOrdinaryCharacter) {
    EXPECT_EQ(split("/a/b?.mov"), (Parts{"", "/a/", "b?", ".mov"}));
    EXPECT_EQ(split("/a?b/c.d"), (Parts{"", "/a?b/", "c", ".d"}));
}

TEST(PathParts, ALongQueryDoesNotCount) {
    EXPECT_EQ(split("http://host/a.mov?" + std::string(5000, 'q')), (Parts{"", "http://host/", "a", ".mov"}));
}

TEST(PathParts, APathThatFitsNoBufferGivesEmptyPartsAndAnError) {
    errno = 0;
    EXPECT_EQ(split("/d/" + std::string(4093, 'n')), (Parts{}));
    EXPECT_EQ(errno, ENAMETOOLONG);
    errno = 0;
    EXPECT_EQ(split(std::string(100000, 'n') + "/x.y"), (Parts{}));
    EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST(PathParts, TheLongestPathComesApart) {
    const std::string name(4092, 'n');
    errno = 0;
    EXPECT_EQ(split("/d/" + name), (Parts{"", "/d/", name, ""}));
    EXPECT_EQ(errno, 0);
}

TEST(PathParts, TheSlashOfABareNameHasToFitToo) {
    const std::string fits(4094, 'n');
    EXPECT_EQ(split(fits), (Parts{"", fits + "/", fits, ""}));
    errno = 0;
    EXPECT_EQ(split(std::string(4095, 'n')), (Parts{}));
    EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST(PathParts, AnExtensionTooLongForItsBufferStaysWithTheName) {
    const std::string longest = "." + std::string(254, 'e');
    EXPECT_EQ(split("/d/a" + longest), (Parts{"", "/d/", "a", longest}));
    EXPECT_EQ(split("/d/a" + longest + "e"), (Parts{"", "/d/", "a" + longest + "e", ""}));
}

TEST(PathParts, JoiningAddsTheSlash) {
    EXPECT_EQ(make(nullptr, "/a", "b", ".c"), "/a/b.c");
    EXPECT_EQ(make("C:", "/a/", "b", ".c"), "C:/a/b.c");
    EXPECT_EQ(make("C:", nullptr, "b", ".c"), "C:/b.c");
    EXPECT_EQ(make("C:", "", nullptr, nullptr), "C:/");
    EXPECT_EQ(make(nullptr, nullptr, "b", ".c"), "b.c");
    EXPECT_EQ(make(nullptr, nullptr, nullptr, nullptr), "");
}

TEST(PathParts, JoiningLeavesExactlyOneDot) {
    EXPECT_EQ(make(nullptr, "/a/", "b", "c"), "/a/b.c");
    EXPECT_EQ(make(nullptr, "/a/", "b.", "c"), "/a/b.c");
    EXPECT_EQ(make(nullptr, "/a/", "b.", ".c"), "/a/b.c");
    EXPECT_EQ(make(nullptr, "/a/", "b.", ""), "/a/b.");
    EXPECT_EQ(make(nullptr, "/a/", "b", nullptr), "/a/b");
    EXPECT_EQ(make(nullptr, "/a/", "", ".c"), "/a/.c");
    EXPECT_EQ(make(nullptr, nullptr, nullptr, "c"), ".c");
}

TEST(PathParts, APathTooLongToJoinLeavesAnEmptyText) {
    const std::string dir = "/" + std::string(4090, 'd') + "/";
    errno = 0;
    EXPECT_EQ(make(nullptr, dir.c_str(), "nnn", nullptr), dir + "nnn");
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(make(nullptr, dir.c_str(), "nnn", ".x"), "");
    EXPECT_EQ(errno, ENAMETOOLONG);
}

/// The same rules told the slow way: one pass forwards that remembers the last "/" and the last "." behind it.
Parts modelOf(std::string path) {
    if (path.starts_with("http:") || path.starts_with("s3:")) path = path.substr(0, path.find('?'));
    Parts parts;
    if (path.size() > 1 && path[1] == ':') parts.drive = path.substr(0, 2);
    parts.dir = path.substr(parts.drive.size());
    if (!path.empty() && path.back() == '/') return parts;
    std::size_t slash = 0;
    std::size_t dot = 0;
    for (std::size_t i = 1; i < path.size(); ++i) {
        if (path[i] == '/') {
            slash = i;
            dot = 0;
        }
        if (path[i] == '.') dot = i;
    }
    const std::string stem = dot != 0 ? path.substr(0, dot) : path;
    if (dot != 0) parts.ext = path.substr(dot);
    if (slash != 0) {
        parts.name = stem.substr(slash + 1);
        parts.dir = path.substr(0, slash + 1).substr(parts.drive.size());
    } else {
        parts.name = !stem.empty() && stem[0] == '/' ? stem.substr(1) : stem;
        if (!parts.dir.empty()) parts.dir += '/';
    }
    return parts;
}

constexpr unsigned kSeed = 20240309;

std::string randomPath(std::mt19937& random) {
    static constexpr char kCharacters[] = {'/', '/', '.', '.', ':', '?', '*', 'a', 'b', 'C', '1', '2', '\\', ' '};
    static const char* const kBeginnings[] = {"", "", "", "http://h/", "s3://b/", "C:/", "/", "x:"};
    std::string path = kBeginnings[random() % 8];
    for (std::size_t left = random() % 14; left > 0; --left) path += kCharacters[random() % sizeof kCharacters];
    return path;
}

TEST(PathParts, RandomPathsComeApartLikeTheModel) {
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    std::mt19937 random(kSeed);
    for (int i = 0; i < 50000; ++i) {
        const std::string path = randomPath(random);
        ASSERT_EQ(split(path), modelOf(path)) << path;
    }
}

TEST(PathParts, RandomPathsWithADirectoryComeTogetherAgain) {
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    std::mt19937 random(kSeed);
    int joined = 0;
    for (int i = 0; i < 50000; ++i) {
        const std::string path = randomPath(random);
        const bool bare = path.find('/', 1) == std::string::npos && !path.ends_with('/');
        // Joining puts one dot where two stood, and a query is gone for good.
        if (bare || path.find('?') != std::string::npos || path.find("..") != std::string::npos) continue;
        ASSERT_EQ(make(split(path)), path);
        ++joined;
    }
    EXPECT_GT(joined, 5000);
}

}  // namespace
