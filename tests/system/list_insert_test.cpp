// Listing a node: first, last, before another, after another.
#include <array>
#include <cstddef>
#include <gtest/gtest.h>

#include "dlist.h"
#include "system/listed_items.h"

using namespace kvtest;

namespace {

TEST(List, HeadsPileUpAndTailsQueue) {
    OwnedList list;
    std::array<Item, 4> item;
    for (std::size_t i = 0; i < 4; ++i) item[i].value = static_cast<int>(i);
    EXPECT_EQ(d_ListAddHead(list, &item[0].node), 1u);
    EXPECT_EQ(d_ListAddHead(list, &item[1].node), 1u);
    EXPECT_EQ(d_ListAddTail(list, &item[2].node), 1u);
    EXPECT_EQ(d_ListAddTail(list, &item[3].node), 1u);
    EXPECT_EQ(valuesOf(list), (Values{1, 0, 2, 3}));
}

TEST_F(ListWithThree, SecondAddOfANodeIsRefused) {
    EXPECT_EQ(d_ListAddTail(list, &item[1].node), 0u);
    EXPECT_EQ(d_ListAddHead(list, &item[1].node), 0u);
    EXPECT_EQ(d_ListInsertAt(list, &item[0].node, &item[1].node), nullptr);
    EXPECT_EQ(d_ListInsertAt(list, &item[1].node, &item[1].node), nullptr);
    EXPECT_EQ(d_ListInsert(list, &item[0].node, &item[1].node), nullptr);
    EXPECT_EQ(valuesOf(list), (Values{0, 1, 2}));
}

TEST_F(ListWithThree, NodeOfAnotherListIsRefused) {
    OwnedList other;
    EXPECT_EQ(d_ListAddTail(other, &item[1].node), 0u);
    EXPECT_EQ(d_ListInsertAt(other, nullptr, &item[1].node), nullptr);
    EXPECT_EQ(valuesOf(other), Values{});
    EXPECT_EQ(valuesOf(list), (Values{0, 1, 2}));
}

TEST(List, InsertAtNullOnAnEmptyListMakesHeadAndTail) {
    OwnedList list;
    Item item;
    EXPECT_EQ(d_ListInsertAt(list, nullptr, &item.node), &item.node);
    EXPECT_EQ(d_ListHead(list), &item.node);
    EXPECT_EQ(d_ListTail(list), &item.node);
    EXPECT_EQ(d_ListCount(list), 1u);
}

TEST_F(ListWithThree, InsertAtNullAddsLast) {
    EXPECT_EQ(d_ListInsertAt(list, nullptr, &item[3].node), &item[3].node);
    EXPECT_EQ(valuesOf(list), (Values{0, 1, 2, 3}));
}

TEST_F(ListWithThree, InsertAtTheHeadAddsFirst) {
    EXPECT_EQ(d_ListInsertAt(list, &item[0].node, &item[3].node), &item[3].node);
    EXPECT_EQ(valuesOf(list), (Values{3, 0, 1, 2}));
}

TEST_F(ListWithThree, InsertAtANodeGoesBeforeIt) {
    EXPECT_EQ(d_ListInsertAt(list, &item[1].node, &item[3].node), &item[3].node);
    EXPECT_EQ(d_ListInsertAt(list, &item[2].node, &item[4].node), &item[4].node);
    EXPECT_EQ(valuesOf(list), (Values{0, 3, 1, 4, 2}));
}

TEST_F(ListWithThree, InsertNextToAStrangerIsRefusedAndLeavesTheNodeFree) {
    OwnedList other;
    d_ListAddTail(other, &item[4].node);
    EXPECT_EQ(d_ListInsertAt(list, &item[4].node, &item[3].node), nullptr);
    EXPECT_EQ(d_ListInsert(list, &item[4].node, &item[3].node), nullptr);
    Item nowhere;
    EXPECT_EQ(d_ListInsertAt(list, &nowhere.node, &item[3].node), nullptr);
    EXPECT_EQ(d_ListInsert(list, &nowhere.node, &item[3].node), nullptr);
    expectFree(item[3]);
    EXPECT_EQ(valuesOf(list), (Values{0, 1, 2}));
    EXPECT_EQ(valuesOf(other), Values{4});
}

TEST(List, InsertAfterTheOnlyNodeMakesTheNewOneTheTail) {
    OwnedList list;
    Item first;
    Item second;
    d_ListAddTail(list, &first.node);
    EXPECT_EQ(d_ListInsert(list, &first.node, &second.node), &second.node);
    EXPECT_EQ(d_ListTail(list), &second.node);
    EXPECT_EQ(d_ListHead(list), &first.node);
    EXPECT_EQ(d_ListNext(&first.node), &second.node);
}

TEST(List, InsertAfterNullOnAnEmptyListMakesHeadAndTail) {
    OwnedList list;
    Item item;
    EXPECT_EQ(d_ListInsert(list, nullptr, &item.node), &item.node);
    EXPECT_EQ(valuesOf(list), Values{0});
}

TEST_F(ListWithThree, InsertGoesAfterTheNode) {
    EXPECT_EQ(d_ListInsert(list, &item[0].node, &item[3].node), &item[3].node);
    EXPECT_EQ(d_ListInsert(list, &item[2].node, &item[4].node), &item[4].node);
    EXPECT_EQ(valuesOf(list), (Values{0, 3, 1, 2, 4}));
}

TEST_F(ListWithThree, InsertAfterNullAddsLast) {
    EXPECT_EQ(d_ListInsert(list, nullptr, &item[3].node), &item[3].node);
    EXPECT_EQ(valuesOf(list), (Values{0, 1, 2, 3}));
}

// ---- nodes that outlived the closing of their list, once it is made anew

TEST_F(ListWithThree, LeftOverNeighbourOfAnEmptyListMakesTheNewNodeTheOnlyOne) {
    d_ListClose(list);
    d_ListInit(list);
    EXPECT_EQ(d_ListInsertAt(list, &item[1].node, &item[3].node), &item[3].node);
    EXPECT_EQ(valuesOf(list), Values{3});
    d_ListRemove(list, &item[3].node);
    EXPECT_EQ(d_ListInsert(list, &item[1].node, &item[4].node), &item[4].node);
    EXPECT_EQ(valuesOf(list), Values{4});
}

TEST_F(ListWithThree, LeftOverNodeIsListedAgainAfterItsOwnInitialisation) {
    d_ListClose(list);
    d_ListInit(list);
    EXPECT_EQ(d_ListAddTail(list, &item[1].node), 0u);
    d_ListInitNode(&item[1].node);
    EXPECT_EQ(d_ListAddTail(list, &item[1].node), 1u);
    EXPECT_EQ(valuesOf(list), Values{1});
}

}  // namespace
