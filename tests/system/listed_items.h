// Items to list, and a list of three of them.
//
// valuesOf is how the tests look at a list: it walks both ways, and checks each link, parent and count as it goes.
#pragma once

#include <array>
#include <cstddef>
#include <gtest/gtest.h>
#include <vector>

#include "dlist.h"

namespace kvtest {

struct Item {
    d_ListNode node{};
    int value = 0;
};

inline Item* itemOf(d_ListNode* node) { return reinterpret_cast<Item*>(node); }

class OwnedList {
public:
    OwnedList() { EXPECT_EQ(d_ListInit(&list_), 1u); }
    ~OwnedList() { d_ListClose(&list_); }
    OwnedList(const OwnedList&) = delete;
    OwnedList& operator=(const OwnedList&) = delete;
    operator d_List*() { return &list_; }
    d_List* operator->() { return &list_; }

private:
    d_List list_{};
};

/// The values from head to tail; every backward link, parent and count is checked on the way.
inline std::vector<int> valuesOf(d_List* list) {
    std::vector<int> values;
    d_ListNode* before = nullptr;
    for (d_ListNode* node = d_ListHead(list); node != nullptr; node = d_ListNext(node)) {
        EXPECT_EQ(d_ListPrev(node), before);
        EXPECT_EQ(d_ListParent(node), list);
        values.push_back(itemOf(node)->value);
        before = node;
    }
    EXPECT_EQ(d_ListTail(list), before);
    EXPECT_EQ(d_ListCount(list), values.size());
    return values;
}

using Values = std::vector<int>;

inline void expectFree(const Item& item) {
    EXPECT_EQ(item.node.prev, nullptr);
    EXPECT_EQ(item.node.next, nullptr);
    EXPECT_EQ(item.node.parent, nullptr);
}

class ListWithThree : public ::testing::Test {
protected:
    ListWithThree() {
        for (std::size_t i = 0; i < 5; ++i) item[i].value = static_cast<int>(i);
        for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(d_ListAddTail(list, &item[i].node), 1u);
    }

    OwnedList list;
    std::array<Item, 5> item;  // 0 to 2 are listed
};

}  // namespace kvtest
