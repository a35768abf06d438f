// What stands between an exported call and the C++ behind it.
#include "border/guard.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace {

using kv::border::atBorder;
using kv::border::KeepErrno;

TEST(Guard, PassesTheResultOn) {
    EXPECT_EQ(atBorder(-1, [] { return 7; }), 7);
    EXPECT_EQ(*atBorder(std::unique_ptr<int>(), [] { return std::make_unique<int>(8); }), 8);
}

TEST(Guard, MakesEveryExceptionTheFailureValue) {
    EXPECT_EQ(atBorder(-1, []() -> int { throw std::runtime_error("x"); }), -1);
    EXPECT_EQ(atBorder(-2, []() -> int { throw std::bad_alloc(); }), -2);
    EXPECT_EQ(atBorder(-3, []() -> int { throw 5; }), -3);
    EXPECT_EQ(atBorder<void*>(nullptr, []() -> void* { throw std::string("x"); }), nullptr);
}

TEST(Guard, NeverThrowsItself) {
    const auto body = []() -> int { throw 5; };
    static_assert(noexcept(atBorder(-1, body)));
    EXPECT_EQ(atBorder(-1, body), -1);
}

TEST(Guard, LeavesErrnoAsTheBodyLeftIt) {
    errno = 0;
    atBorder(-1, []() -> int {
        errno = ENOSPC;
        throw std::runtime_error("x");
    });
    EXPECT_EQ(errno, ENOSPC);
    atBorder(-1, [] { return errno = EACCES; });
    EXPECT_EQ(errno, EACCES);
}

TEST(Guard, TellsWhatItCaughtWhenAsked) {
    std::string told;
    const auto tell = [&told](const char* what) { told += what; };
    EXPECT_EQ(atBorder(
                  -1, [] { return 7; }, tell),
              7);
    EXPECT_EQ(told, "");
    EXPECT_EQ(atBorder(
                  -1, []() -> int { throw std::runtime_error("x"); }, tell),
              -1);
    EXPECT_EQ(told, "x");
    EXPECT_EQ(atBorder(
                  -2, []() -> int { throw 5; }, tell),
              -2);  // which has no text
    EXPECT_EQ(told, "x");
}

TEST(Guard, UnwindsWhatTheBodyHeld) {
    bool gone = false;
    struct Held {
        bool& gone;
        ~Held() { gone = true; }
    };
    atBorder(-1, [&]() -> int {
        const Held held{gone};
        throw 5;
    });
    EXPECT_TRUE(gone);
}

TEST(KeepErrno, RestoresWhatItFoundWhenTheScopeEnds) {
    errno = EIO;
    {
        const KeepErrno keep;
        errno = EBADF;
        EXPECT_EQ(keep.value(), EIO);
    }
    EXPECT_EQ(errno, EIO);
}

TEST(KeepErrno, OutlastsAnException) {
    EXPECT_EQ(atBorder(-1,
                       []() -> int {
                           errno = EIO;
                           const KeepErrno keep;
                           errno = EBADF;
                           throw 5;
                       }),
              -1);
    EXPECT_EQ(errno, EIO);
}

TEST(KeepErrno, OfTheOuterScopeWins) {
    errno = EIO;
    {
        const KeepErrno outer;
        errno = EBADF;
        {
            const KeepErrno inner;
            errno = EPERM;
        }
        EXPECT_EQ(errno, EBADF);
    }
    EXPECT_EQ(errno, EIO);
}

static_assert(!std::is_copy_constructible_v<KeepErrno> && !std::is_copy_assignable_v<KeepErrno>);

}  // namespace
