// Random calls on a store against a simple model of it, with saves and new openings in between.
#include <algorithm>
#include <memory>
#include <random>

#include "config/open_store.h"

namespace {

using namespace kvtest;

/// A key or value of the model: its name, its number (a key has none) and what is in it.
struct Node {
    std::string name;
    std::optional<std::uint32_t> number;
    std::vector<Node> children{};

    Node* child(const std::string& wanted) {
        const auto at = std::ranges::find(children, wanted, &Node::name);
        return at == children.end() ? nullptr : &*at;
    }
};

class RandomWalk : public ::testing::Test {
protected:
    RandomWalk() {
        makeFile(file_, configWith("<K Type=\"0\" />"));
        reopen();
    }

    void reopen() {
        store_.reset();
        store_ = std::make_unique<OpenStore>(file_);
    }

    std::string anyName() { return std::string(1, static_cast<char>('A' + random_() % 5)); }

    /// The path of a key of the model, and the key.
    std::pair<std::string, Node*> anyKey() {
        std::string path = "K";
        Node* at = &root_;
        while (random_() % 3 != 0) {
            Node* next = at->child(anyName());
            if (next == nullptr || next->number) break;
            at = next;
            path += "\\" + at->name;
        }
        return {path, at};
    }

    void step() {
        auto [path, key] = anyKey();
        const std::string name = anyName();
        const auto number = static_cast<std::uint32_t>(random_());
        Node* there = key->child(name);
        const bool exists = there != nullptr;
        KVTiXmlConfig* store = *store_;
        switch (random_() % 8) {
            case 0:
                EXPECT_EQ(kvCFGAddKeyDword(store, path.c_str(), name.c_str(), number, nullptr) == 0, !exists);
                if (!exists) key->children.push_back({name, number});
                break;
            case 1:
                EXPECT_EQ(kvCFGAddKeyString(store, path.c_str(), name.c_str(), "", 0, nullptr) == 0, !exists);
                if (!exists) key->children.push_back({name, std::nullopt});
                break;
            case 2:
                if (exists && !there->number) break;
                EXPECT_EQ(setDword(store, path.c_str(), name.c_str(), number), 0u);
                if (exists) there->number = number;
                if (!exists) key->children.push_back({name, number});
                break;
            case 3:
                EXPECT_EQ(kvCFGDeleteValue(store, path.c_str(), name.c_str()) == 0, exists);
                if (exists) key->children.erase(key->children.begin() + (there - key->children.data()));
                break;
            case 4:
                rename(path, *key, name, anyName());
                break;
            case 5:
                copy(path, *key, name, anyName());
                break;
            case 6:
                EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
                if (random_() % 4 == 0) reopen();
                break;
            default:
                compare(root_, "K");
        }
    }

    void rename(const std::string& path, Node& key, const std::string& name, const std::string& newName) {
        Node* there = key.child(name);
        if (there != nullptr && key.child(newName) != nullptr) return;  // a clash is allowed, and shadows
        EXPECT_EQ(kvCFGRenameKey(*store_, path.c_str(), name.c_str(), newName.c_str()),
                  there == nullptr ? kFailed : 1u);
        if (there != nullptr) there->name = newName;
    }

    void copy(const std::string& path, Node& key, const std::string& name, const std::string& newName) {
        const Node* there = key.child(name);
        if (there != nullptr && key.child(newName) != nullptr) return;
        EXPECT_EQ(kvCFGCopyBranch(*store_, (path + "\\" + name).c_str(), newName.c_str()),
                  there == nullptr ? kFailed : 0u);
        if (there == nullptr) return;
        Node branch = *there;
        branch.name = newName;
        key.children.push_back(branch);
    }

    void compare(const Node& key, const std::string& path) {
        std::vector<std::string> names;
        for (const Node& child : key.children) names.push_back(child.name);
        ASSERT_EQ(namesIn(*store_, path.c_str()), names) << path;
        EXPECT_EQ(kvCFGHasSubKey(*store_, path.c_str()), names.empty() ? 0u : 1u);
        for (const Node& child : key.children) {
            const std::string childPath = path + "\\" + child.name;
            EXPECT_EQ(kvCFGGetType(*store_, childPath.c_str()), child.number ? KVCFG_DWORD : KVCFG_KEY) << childPath;
            if (child.number) {
                EXPECT_EQ(dwordOf(*store_, path.c_str(), child.name.c_str()), child.number) << childPath;
            }
            compare(child, childPath);
        }
    }

    std::random_device::result_type seed_ = std::random_device{}();
    std::mt19937 random_{seed_};
    ScratchFolder scratch_;
    std::string file_ = scratch_ / "a.xml";
    std::unique_ptr<OpenStore> store_;
    Node root_{"K", std::nullopt};
};

TEST_F(RandomWalk, TheStoreDoesWhatTheModelDoes) {
    SCOPED_TRACE("seed " + std::to_string(seed_));
    for (int i = 0; i < 3000 && !HasFailure(); ++i) step();
    compare(root_, "K");
}

}  // namespace
