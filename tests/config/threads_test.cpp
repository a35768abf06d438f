// Several threads on one store.
#include <thread>

#include "config/open_store.h"
#include "errlog.h"
#include "support/captured_messages.h"

namespace {

using namespace kvtest;

TEST(Threads, EachSeesItsOwnValuesWhileOthersWriteAndSave) {
    const ScratchFolder scratch;
    const std::string file = scratch / "a.xml";
    makeFile(file, configWith("<K Type=\"0\" />"));
    {
        OpenStore store(file);
        std::vector<std::thread> threads;
        for (int number = 0; number < 4; ++number) {
            threads.emplace_back([&store, number] {
                const std::string name = "T" + std::to_string(number);
                for (std::uint32_t i = 0; i < 150; ++i) {
                    EXPECT_EQ(setDword(store, "K", name.c_str(), i), 0u);
                    EXPECT_EQ(dwordOf(store, "K", name.c_str()), i);
                    if (i % 50 == 0) {
                        EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
                    }
                    if (i % 25 == 0) kvCFGEnumKey(store, nullptr, nullptr, nullptr, 1);
                }
            });
        }
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(kvCFGSave(store, nullptr, 0), 0u);
    }
    OpenStore again(file);
    for (const char* name : {"T0", "T1", "T2", "T3"}) EXPECT_EQ(dwordOf(again, "K", name), 149u);
}

TEST_F(DefaultStore, SavesWhoseBackupsFailAndReportsFromElsewhereDoNotWaitForEachOther) {
    makeFile(path(), configWith("<ZMW Type=\"0\" />"));
    // A folder in the way of the newest backup: every save reports.
    std::filesystem::create_directories(directory_ + "config.000.xml/in");
    CapturedMessages messages;
    kvCFGCheckHandle(KVSTDCONFIG);
    std::thread reporter([] {
        for (int i = 0; i < 500; ++i) ErrOut("reported\n");
    });
    for (std::uint32_t i = 0; i < 50; ++i) {
        EXPECT_EQ(setDword(KVSTDCONFIG, "ZMW", "D", i), 0u);
        EXPECT_EQ(kvCFGSave(KVSTDCONFIG, nullptr, 0), 0u);
    }
    reporter.join();
    OpenStore again(path());
    EXPECT_EQ(dwordOf(again, "ZMW", "D"), 49u);
}

}  // namespace
