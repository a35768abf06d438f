// A long random comparison of two lists with std::list.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <iterator>
#include <list>
#include <random>
#include <string>

#include "dlist.h"
#include "system/listed_items.h"

using namespace kvtest;

namespace {

/// Two lists over one pool of items, and what std::list makes of the same calls.
class Model {
public:
    explicit Model(std::uint32_t seed) : random_(seed) {
        for (std::size_t i = 0; i < item_.size(); ++i) item_[i].value = static_cast<int>(i);
    }

    void step() {
        const std::size_t side = pick(2);
        d_List* list = list_[side];
        std::list<Item*>& model = model_[side];
        Item* item = &item_[pick(item_.size())];
        Item* beside = pick(8) == 0 ? nullptr : &item_[pick(item_.size())];
        d_ListNode* besideNode = beside == nullptr ? nullptr : &beside->node;
        const bool isFree = where(item) == 2;
        const bool fits = isFree && (beside == nullptr || where(beside) == side);
        switch (pick(8)) {
            case 0:
                EXPECT_EQ(d_ListAddHead(list, &item->node), isFree ? 1u : 0u);
                if (isFree) model.push_front(item);
                break;
            case 1:
                EXPECT_EQ(d_ListAddTail(list, &item->node), isFree ? 1u : 0u);
                if (isFree) model.push_back(item);
                break;
            case 2:
                EXPECT_EQ(d_ListInsertAt(list, besideNode, &item->node), fits ? &item->node : nullptr);
                if (fits) model.insert(std::find(model.begin(), model.end(), beside), item);
                break;
            case 3:
                EXPECT_EQ(d_ListInsert(list, besideNode, &item->node), fits ? &item->node : nullptr);
                if (fits && beside == nullptr) model.push_back(item);
                if (fits && beside != nullptr) {
                    model.insert(std::next(std::find(model.begin(), model.end(), beside)), item);
                }
                break;
            case 4:
                EXPECT_EQ(d_ListRemoveHead(list), model.empty() ? nullptr : &model.front()->node);
                if (!model.empty()) model.pop_front();
                break;
            case 5:
                EXPECT_EQ(d_ListRemoveTail(list), model.empty() ? nullptr : &model.back()->node);
                if (!model.empty()) model.pop_back();
                break;
            case 6:
                if (where(item) != side) break;  // would be reported
                EXPECT_EQ(d_ListRemove(list, &item->node), &item->node);
                model.remove(item);
                break;
            default:
                EXPECT_EQ(d_ListReCount(list), model.size());
                break;
        }
    }

    void compare() {
        for (std::size_t side = 0; side < 2; ++side) {
            Values expected;
            for (const Item* item : model_[side]) expected.push_back(item->value);
            ASSERT_EQ(valuesOf(list_[side]), expected);
        }
        for (const Item& item : item_) {
            if (where(&item) == 2) expectFree(item);
        }
    }

private:
    std::size_t pick(std::size_t below) { return random_() % below; }

    /// The list that the model has the item on; 2 for none.
    std::size_t where(const Item* item) const {
        for (std::size_t side = 0; side < 2; ++side) {
            if (std::find(model_[side].begin(), model_[side].end(), item) != model_[side].end()) return side;
        }
        return 2;
    }

    std::mt19937 random_;
    std::array<Item, 24> item_;
    std::array<OwnedList, 2> list_;
    std::array<std::list<Item*>, 2> model_;
};

class ListModel : public ::testing::TestWithParam<std::uint32_t> {};

TEST_P(ListModel, IsFollowedOverThousandsOfRandomSteps) {
    const std::uint32_t seed = GetParam();
    SCOPED_TRACE("seed " + std::to_string(seed));
    Model model(seed);
    for (int i = 0; i < 20000 && !::testing::Test::HasFailure(); ++i) {
        SCOPED_TRACE("step " + std::to_string(i));
        model.step();
        model.compare();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ListModel, ::testing::Values(1u, 2u, 20261121u));

}  // namespace
