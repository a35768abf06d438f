// One list, and one node, under eight threads.
#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

#include "dlist.h"
#include "system/listed_items.h"

using namespace kvtest;

namespace {

constexpr int kThreads = 8;

template <class Body>
void onAllThreads(Body body) {
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int i = 0; i < kThreads; ++i) threads.emplace_back([&body, i] { body(i); });
    for (std::thread& thread : threads) thread.join();
}

TEST(List, ThreadsAddRemoveAndCountOnOneList) {
    OwnedList list;
    std::vector<std::array<Item, 20>> items(kThreads);
    onAllThreads([&](int thread) {
        std::array<Item, 20>& mine = items[static_cast<std::size_t>(thread)];
        for (int round = 0; round < 200; ++round) {
            for (std::size_t i = 0; i < mine.size(); ++i) {
                d_ListNode* node = &mine[i].node;
                d_ListNode* beside = i == 0 ? nullptr : &mine[i - 1].node;
                switch ((i + static_cast<std::size_t>(round)) % 4) {
                    case 0:
                        EXPECT_EQ(d_ListAddHead(list, node), 1u);
                        break;
                    case 1:
                        EXPECT_EQ(d_ListAddTail(list, node), 1u);
                        break;
                    case 2:
                        EXPECT_EQ(d_ListInsert(list, beside, node), node);
                        break;
                    default:
                        EXPECT_EQ(d_ListInsertAt(list, beside, node), node);
                        break;
                }
                EXPECT_EQ(d_ListParent(node), static_cast<d_List*>(list));
                EXPECT_GE(d_ListCount(list), i + 1);
            }
            EXPECT_GE(d_ListReCount(list), mine.size());
            for (Item& item : mine) EXPECT_EQ(d_ListRemove(list, &item.node), &item.node);
        }
    });
    EXPECT_EQ(valuesOf(list), Values{});
}

TEST(List, ThreadsThatTakeFromBothEndsTakeEachNodeOnce) {
    OwnedList list;
    constexpr int kItems = 8000;
    std::vector<Item> items(kItems);
    for (Item& item : items) d_ListAddTail(list, &item.node);
    std::atomic<int> taken = 0;
    onAllThreads([&](int thread) {
        while (d_ListNode* node = thread % 2 == 0 ? d_ListRemoveHead(list) : d_ListRemoveTail(list)) {
            ++itemOf(node)->value;
            ++taken;
        }
    });
    EXPECT_EQ(taken, kItems);
    EXPECT_TRUE(std::all_of(items.begin(), items.end(), [](const Item& item) { return item.value == 1; }));
}

TEST(List, OfThreadsThatAddOneNodeToDifferentListsOneSucceeds) {
    std::array<OwnedList, kThreads> lists;
    std::vector<Item> items(2000);
    std::atomic<int> added = 0;
    onAllThreads([&](int thread) {
        d_List* mine = lists[static_cast<std::size_t>(thread)];
        for (Item& item : items) added += static_cast<int>(d_ListAddTail(mine, &item.node));
    });
    EXPECT_EQ(added, 2000);
    std::size_t listed = 0;
    for (OwnedList& list : lists) listed += valuesOf(list).size();
    EXPECT_EQ(listed, items.size());
}

TEST(List, LockHoldsAWalkTogether) {
    OwnedList list;
    std::vector<std::array<Item, 4>> items(kThreads);
    onAllThreads([&](int thread) {
        for (int round = 0; round < 300; ++round) {
            for (Item& item : items[static_cast<std::size_t>(thread)]) d_ListAddTail(list, &item.node);
            d_ListLock(list);
            std::uint32_t walked = 0;
            for (d_ListNode* node = d_ListHead(list); node != nullptr; node = d_ListNext(node)) ++walked;
            EXPECT_EQ(walked, d_ListCount(list));
            d_ListUnLock(list);
            for (Item& item : items[static_cast<std::size_t>(thread)]) d_ListRemove(list, &item.node);
        }
    });
    EXPECT_EQ(d_ListCount(list), 0u);
}

}  // namespace
