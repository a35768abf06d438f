// Taking a node off: the first, the last, any one.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <gtest/gtest.h>

#include "dlist.h"
#include "support/captured_messages.h"
#include "system/listed_items.h"

using namespace kvtest;

namespace {

TEST_F(ListWithThree, HeadAndTailAreTakenOffCleared) {
    EXPECT_EQ(d_ListRemoveHead(list), &item[0].node);
    expectFree(item[0]);
    EXPECT_EQ(valuesOf(list), (Values{1, 2}));
    EXPECT_EQ(d_ListRemoveTail(list), &item[2].node);
    expectFree(item[2]);
    EXPECT_EQ(valuesOf(list), Values{1});
    EXPECT_EQ(d_ListRemoveTail(list), &item[1].node);
    EXPECT_EQ(valuesOf(list), Values{});
    EXPECT_EQ(d_ListRemoveHead(list), nullptr);
    EXPECT_EQ(d_ListRemoveTail(list), nullptr);
}

TEST_F(ListWithThree, LastNodeClearsACountThatWasWrong) {
    list->count = 40;
    d_ListRemoveHead(list);
    EXPECT_EQ(d_ListCount(list), 39u);
    d_ListRemoveHead(list);
    d_ListRemoveHead(list);
    EXPECT_EQ(d_ListCount(list), 0u);
}

TEST_F(ListWithThree, CountDoesNotFallBelowZero) {
    list->count = 0;
    EXPECT_EQ(d_ListRemoveHead(list), &item[0].node);
    EXPECT_EQ(d_ListCount(list), 0u);
}

TEST(List, AnyNodeIsTakenOff) {
    for (std::size_t first : {0u, 1u, 2u}) {
        SCOPED_TRACE(first);
        OwnedList other;
        std::array<Item, 3> part;
        Values left;
        for (std::size_t i = 0; i < 3; ++i) {
            part[i].value = static_cast<int>(i);
            d_ListAddTail(other, &part[i].node);
            if (i != first) left.push_back(part[i].value);
        }
        EXPECT_EQ(d_ListRemove(other, &part[first].node), &part[first].node);
        expectFree(part[first]);
        EXPECT_EQ(valuesOf(other), left);
    }
}

TEST_F(ListWithThree, RemovingANodeOfAnotherListIsReportedAndChangesNeither) {
    OwnedList other;
    d_ListAddTail(other, &item[4].node);
    char expected[128];
    std::snprintf(expected, sizeof expected, "d_ListRemove, Node is not of this list %08X %08X",
                  static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(static_cast<d_List*>(other))),
                  static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(static_cast<d_List*>(list))));
    kvtest::CapturedMessages messages;
    EXPECT_EQ(d_ListRemove(list, &item[4].node), nullptr);
    EXPECT_EQ(messages.count(expected), 1u) << messages.text();
    EXPECT_EQ(valuesOf(list), (Values{0, 1, 2}));
    EXPECT_EQ(valuesOf(other), Values{4});
}

TEST_F(ListWithThree, RemovingANodeOnNoListIsReported) {
    kvtest::CapturedMessages messages;
    EXPECT_EQ(d_ListRemove(list, &item[4].node), nullptr);
    EXPECT_EQ(messages.count("d_ListRemove, Node is not of this list 00000000 "), 1u) << messages.text();
}

// A node that outlived the closing of its list, once it is made anew.
TEST_F(ListWithThree, LeftOverNodeIsTakenOffWithoutTouchingTheList) {
    d_ListClose(list);
    d_ListInit(list);
    for (std::size_t i : {0u, 2u, 1u}) {
        EXPECT_EQ(d_ListRemove(list, &item[i].node), &item[i].node);
        expectFree(item[i]);
    }
    EXPECT_EQ(valuesOf(list), Values{}) << "a count of 0 does not fall";
}

}  // namespace
