// The list itself: making and closing it, its lock, looking at it, counting it.
//
// The clock of the library is replaced here by one that a test can stop (kvOSGetMs below): the library finds this one
// first, because the program comes before its libraries when names are bound.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

#include "dlist.h"
#include "kvos/time.h"
#include "support/captured_messages.h"
#include "support/sanitizers.h"
#include "system/listed_items.h"

using namespace kvtest;

namespace {

/// What the stopped clock shows, call after call; the last value stays. Empty: the library's own clock runs.
std::vector<std::uint32_t> shownByClock;
std::size_t clockCalls = 0;

}  // namespace

uint32_t kvOSGetMs() {
    if (!shownByClock.empty()) return shownByClock[std::min(clockCalls++, shownByClock.size() - 1)];
    static const auto real = reinterpret_cast<std::uint32_t (*)()>(dlsym(RTLD_NEXT, "kvOSGetMs"));
    return real();
}

namespace {

// ---- making and closing

TEST(List, InitialisingMakesItEmpty) {
    shownByClock = {4294967290u};
    d_List list;
    std::fill_n(reinterpret_cast<unsigned char*>(&list), sizeof list, static_cast<unsigned char>(0xA5));
    EXPECT_EQ(d_ListInit(&list), 1u);
    EXPECT_EQ(list.head, nullptr);
    EXPECT_EQ(list.tail, nullptr);
    EXPECT_EQ(list.count, 0u);
    EXPECT_EQ(list.flags, 256u);
    EXPECT_EQ(list.stamp, 4294967290u);
    EXPECT_EQ(list.lock.qwCount, 0u);
    EXPECT_EQ(d_ListClose(&list), 1u);
}

TEST(List, ClosedListRefusesEveryCall) {
    d_List list;
    d_ListInit(&list);
    Item listed;
    Item other;
    d_ListAddTail(&list, &listed.node);
    EXPECT_EQ(d_ListClose(&list), 1u);
    EXPECT_EQ(list.flags, 0u);
    EXPECT_EQ(list.head, nullptr);
    EXPECT_EQ(list.tail, nullptr);
    EXPECT_EQ(list.count, 0u);

    EXPECT_EQ(d_ListClose(&list), 0u);
    EXPECT_EQ(d_ListLock(&list), 0u);
    EXPECT_EQ(d_ListUnLock(&list), 0u);
    EXPECT_EQ(d_ListAddHead(&list, &other.node), 0u);
    EXPECT_EQ(d_ListAddTail(&list, &other.node), 0u);
    EXPECT_EQ(d_ListInsertAt(&list, nullptr, &other.node), nullptr);
    EXPECT_EQ(d_ListInsert(&list, nullptr, &other.node), nullptr);
    EXPECT_EQ(d_ListRemoveHead(&list), nullptr);
    EXPECT_EQ(d_ListRemoveTail(&list), nullptr);
    EXPECT_EQ(d_ListRemove(&list, &listed.node), nullptr);
    EXPECT_EQ(d_ListHead(&list), nullptr);
    EXPECT_EQ(d_ListTail(&list), nullptr);
    EXPECT_EQ(d_ListNext(&listed.node), nullptr);
    EXPECT_EQ(d_ListPrev(&listed.node), nullptr);
    EXPECT_EQ(d_ListParent(&listed.node), nullptr);
    EXPECT_EQ(d_ListCount(&list), 0u);
    EXPECT_EQ(d_ListReCount(&list), 0u);
    expectFree(other);
}

TEST_F(ListWithThree, ClosingLeavesTheNodesAsTheyAre) {
    d_ListClose(list);
    EXPECT_EQ(item[0].node.next, &item[1].node);
    EXPECT_EQ(item[2].node.prev, &item[1].node);
    EXPECT_EQ(item[1].node.parent, static_cast<d_List*>(list));
}

TEST(List, OnlyTheBitOfAnInitialisedListIsLookedAt) {
    OwnedList list;
    list->flags = 0xFFFFFFFFu;
    Item item;
    EXPECT_EQ(d_ListAddTail(list, &item.node), 1u);
    list->flags = ~256u;
    EXPECT_EQ(d_ListCount(list), 0u);
    list->flags = 256u;
    EXPECT_EQ(d_ListCount(list), 1u);
}

TEST(List, NullIsRefused) {
    OwnedList list;
    Item item;
    EXPECT_EQ(d_ListInit(nullptr), 0u);
    EXPECT_EQ(d_ListClose(nullptr), 0u);
    EXPECT_EQ(d_ListLock(nullptr), 0u);
    EXPECT_EQ(d_ListUnLock(nullptr), 0u);
    EXPECT_EQ(d_ListInitNode(nullptr), 0u);
    EXPECT_EQ(d_ListAddHead(nullptr, &item.node), 0u);
    EXPECT_EQ(d_ListAddHead(list, nullptr), 0u);
    EXPECT_EQ(d_ListAddTail(nullptr, &item.node), 0u);
    EXPECT_EQ(d_ListAddTail(list, nullptr), 0u);
    EXPECT_EQ(d_ListInsertAt(nullptr, nullptr, &item.node), nullptr);
    EXPECT_EQ(d_ListInsertAt(list, nullptr, nullptr), nullptr);
    EXPECT_EQ(d_ListInsert(nullptr, nullptr, &item.node), nullptr);
    EXPECT_EQ(d_ListInsert(list, nullptr, nullptr), nullptr);
    EXPECT_EQ(d_ListRemoveHead(nullptr), nullptr);
    EXPECT_EQ(d_ListRemoveTail(nullptr), nullptr);
    EXPECT_EQ(d_ListRemove(nullptr, &item.node), nullptr);
    EXPECT_EQ(d_ListRemove(list, nullptr), nullptr);
    EXPECT_EQ(d_ListHead(nullptr), nullptr);
    EXPECT_EQ(d_ListTail(nullptr), nullptr);
    EXPECT_EQ(d_ListNext(nullptr), nullptr);
    EXPECT_EQ(d_ListPrev(nullptr), nullptr);
    EXPECT_EQ(d_ListParent(nullptr), nullptr);
    EXPECT_EQ(d_ListCount(nullptr), 0u);
    EXPECT_EQ(d_ListReCount(nullptr), 0u);
    EXPECT_EQ(valuesOf(list), Values{});
}

TEST(List, NodeIsClearedWhateverItHeld) {
    Item item;
    std::fill_n(reinterpret_cast<unsigned char*>(&item.node), sizeof item.node, static_cast<unsigned char>(0xA5));
    EXPECT_EQ(d_ListInitNode(&item.node), 1u);
    expectFree(item);
}

TEST(List, NodeOnNoListHasNoNeighbours) {
    Item item;
    EXPECT_EQ(d_ListNext(&item.node), nullptr);
    EXPECT_EQ(d_ListPrev(&item.node), nullptr);
    EXPECT_EQ(d_ListParent(&item.node), nullptr);
}

TEST(List, LockIsRecursiveAndHoldsOthersOut) {
    OwnedList list;
    Item item;
    EXPECT_EQ(d_ListLock(list), 1u);
    EXPECT_EQ(d_ListLock(list), 1u);
    EXPECT_EQ(d_ListAddTail(list, &item.node), 1u);
    std::thread([&] { EXPECT_EQ(kvOSTryEnterCriticalSection(&list->lock), 0u); }).join();
    EXPECT_EQ(d_ListUnLock(list), 1u);
    EXPECT_EQ(d_ListUnLock(list), 1u);
    EXPECT_EQ(list->lock.qwCount, 0u);
    EXPECT_EQ(kvOSTryEnterCriticalSection(&list->lock), 1u);
    pthread_mutex_unlock(&list->lock.mutex);
}

TEST(List, UnlockByAThreadThatDoesNotHoldTheLockOnlyLowersItsDepth) {
    if (kThreadSanitizer) GTEST_SKIP() << "the thread sanitizer takes the misuse itself for a failure";
    OwnedList list;
    d_ListLock(list);
    std::thread([&] {
        EXPECT_EQ(d_ListUnLock(list), 1u);
        EXPECT_EQ(kvOSTryEnterCriticalSection(&list->lock), 0u);
    }).join();
    EXPECT_EQ(list->lock.qwCount, 0u);
    d_ListUnLock(list);
    EXPECT_EQ(list->lock.qwCount, ~std::uint64_t{0});
}

// ---- counting

TEST_F(ListWithThree, RecountMendsTheCountAndStampsTheClock) {
    shownByClock = {123456};
    list->count = 77;
    EXPECT_EQ(d_ListReCount(list), 3u);
    EXPECT_EQ(d_ListCount(list), 3u);
    EXPECT_EQ(list->stamp, 123456u);
}

TEST_F(ListWithThree, RecountOfTenMillisecondsIsSilent) {
    kvtest::CapturedMessages messages;
    shownByClock = {1000, 1010};
    EXPECT_EQ(d_ListReCount(list), 3u);
    EXPECT_EQ(messages.count("d_ListReCount"), 0u);
}

TEST_F(ListWithThree, RecountOfElevenMillisecondsIsReported) {
    kvtest::CapturedMessages messages;
    shownByClock = {1000, 1011};
    EXPECT_EQ(d_ListReCount(list), 3u);
    EXPECT_EQ(messages.count("d_ListReCount lock 11"), 1u) << messages.text();
    EXPECT_EQ(list->stamp, 1000u);
}

TEST_F(ListWithThree, RecountAcrossTheWrapOfTheClockIsMeasuredRight) {
    kvtest::CapturedMessages messages;
    shownByClock = {4294967295u, 14};
    EXPECT_EQ(d_ListReCount(list), 3u);
    EXPECT_EQ(messages.count("d_ListReCount lock 15"), 1u) << messages.text();
}

}  // namespace
