// Opening, making and closing of stores, and the default store that opens itself.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <unistd.h>
#include <utility>

#include "border/text.h"
#include "config/document.h"
#include "config/process.h"
#include "config/saving_lock.h"
#include "config/store.h"
#include "errlog.h"
#include "kvos/attributes.h"
#include "kvos/naming.h"

namespace kv::config {

constinit Process process;

namespace {

constexpr const char* kDefaultName = "config.xml";
constexpr int kNewestBackup = 0;
constexpr int kOldestBackup = 5;  // one beyond the ring that a save keeps
constexpr std::uint32_t kConfigDirMode = 0777;

using Store = std::unique_ptr<KVTiXmlConfig>;

bool namesDefaultInAnyCase(const char* path) {
    return border::findAnyCase(path, kDefaultName) != std::string_view::npos;
}
bool namesDefault(const char* path) { return std::strstr(path, kDefaultName) != nullptr; }

Store storeWith(const TiXmlElement& root, const char* path) {
    auto store = std::make_unique<KVTiXmlConfig>();
    store->pRoot = root.Clone()->ToElement();
    border::copyText(store->szPath, sizeof store->szPath, path);
    store->fOpened = 1;
    return store;
}

// ---- damaged files -----------------------------------------------------------------------------------------------

/// Finds the newest backup that is whole; its name comes out in `backup`. Unreadable if there is none, but one among
/// them that can't be read.
Loaded findBackup(const char* path, border::PathBuffer& backup) {
    int error = 0;
    for (int index = kNewestBackup; index <= kOldestBackup; ++index) {
        TiXmlDocument probe;
        border::copyText(backup, sizeof backup, path);
        if (GetFileBackups(backup, border::kPathSize, index) != 0) continue;
        const Loaded loaded = loadDocument(backup, probe);
        if (loaded == Loaded::whole && probe.RootElement() != nullptr) return loaded;
        if (loaded == Loaded::unreadable) error = errno;
    }
    if (error == 0) return Loaded::nothing;
    errno = error;
    return Loaded::unreadable;
}

/// Puts a backup in the place of a file that is missing or damaged. A kill on the way leaves the backup or the file.
Loaded restoreBackup(const char* path, TiXmlDocument& document) {
    border::PathBuffer backup;
    if (const Loaded found = findBackup(path, backup); found != Loaded::whole) return found;
    const std::string bad = std::string(path) + ".bad";
    unlink(bad.c_str());
    std::rename(path, bad.c_str());
    std::rename(backup, path);
    document.Clear();
    document.ClearError();
    return loadDocument(path, document);
}

// ---- new files ---------------------------------------------------------------------------------------------------

/// The name of the file without its extension, each run of blanks being one "_".
std::string keyNamedAfter(const char* path) {
    border::PathBuffer drive, directory, name;
    char extension[256];
    kvOSSplitPath(path, drive, directory, name, extension);
    std::string key;
    char* rest = nullptr;
    for (char* piece = strtok_r(name, " ", &rest); piece != nullptr; piece = strtok_r(nullptr, " ", &rest)) {
        if (!key.empty()) key += '_';
        key += piece;
    }
    return key;
}

void describeNew(TiXmlDocument& document) {
    document.Clear();
    document.ClearError();
    document.LinkEndChild(new TiXmlDeclaration("1.0", "iso-8859-1", ""));
    TiXmlNode* root = document.LinkEndChild(new TiXmlElement(kRootName));
    root->LinkEndChild(new TiXmlComment("KorvaneConfig xml structure version 1,0"));
    root->LinkEndChild(new TiXmlComment("Key Types 0=Key,1=String,2=Dword,3=Binary"));
}

/// The path is stored last: while the tree is filled there is no file, and the saving that ends the filling finds none.
Store makeStore(const char* path) {
    TiXmlDocument document;
    describeNew(document);
    Store store = storeWith(*document.FirstChildElement(kRootName), "");
    process.madeAnew = true;
    if (namesDefault(path)) {
        kvCFGDefaultZMW(store.get());
    } else {
        const std::string key = keyNamedAfter(path);
        if (isTag(key)) addString(*store, key.c_str(), nullptr, nullptr, KVCFG_KEY, nullptr);
    }
    border::copyText(store->szPath, sizeof store->szPath, path);
    saveDocument(path, document, *store->pRoot);  // meant: a failure is not told
    return store;
}

Store open(const char* path, std::uint32_t flags) {
    TiXmlDocument document;
    Loaded loaded = loadDocument(path, document);
    if (loaded == Loaded::nothing && (flags & KVCFG_NO_BACKUPS) == 0) loaded = restoreBackup(path, document);
    if (loaded == Loaded::unreadable) return nullptr;  // no user either: once it can be read, it is opened anew
    if (namesDefaultInAnyCase(path)) ++process.defaultUsers;
    if (loaded == Loaded::nothing) return makeStore(path);
    const TiXmlElement* root = document.FirstChildElement(kRootName);
    if (root != nullptr) return storeWith(*root, path);
    errno = EINVAL;
    return nullptr;
}

// ---- the default store -------------------------------------------------------------------------------------------

void readDisableSave(KVTiXmlConfig& store) {
    std::uint32_t disabled = 0;
    if (kvCFGValueDword(&store, "ZMW\\Config", "DisableSave", &disabled, 0) == 0) {
        process.savingDisabled = disabled != 0;
    } else {
        disabled = 0;
        kvCFGValueDword(&store, "ZMW\\Config", "DisableSave", &disabled, 1);
    }
}

/// Takes one user of the default store away; how many are left.
std::int32_t leaveDefault() {
    std::int32_t users = process.defaultUsers.load();
    while (users > 0 && !process.defaultUsers.compare_exchange_weak(users, users - 1)) {
    }
    return users > 0 ? users - 1 : 0;
}

/// Makes a store the default one, unless there is one by now. The first report of a process reads the settings of the
/// log, and so opens the default store itself: any report on the way here may have done that.
KVTiXmlConfig* publish(Store store) {
    KVTiXmlConfig* present = nullptr;
    if (!process.defaultStore.compare_exchange_strong(present, store.get())) {
        leaveDefault();
        return present;
    }
    readDisableSave(*store);
    return store.release();
}

KVTiXmlConfig* openDefault() {
    border::PathBuffer path;
    path[0] = '\0';
    kvOSGetConfigDir(path, 0);
    if (path[0] != '\0' && kvOSFileExists(path) == 0) kvOSMakeDir(path, kConfigDirMode);
    if (!border::appendText(path, sizeof path, kDefaultName)) return nullptr;
    if (kvErrLog_IsOpen() != 0) ErrOut("\nLoading configuration: '%s'", path);
    KVTiXmlConfig* present = process.defaultStore.load(std::memory_order_acquire);
    if (present != nullptr) return present;
    Store store = open(path, 0);
    return store != nullptr ? publish(std::move(store)) : process.defaultStore.load(std::memory_order_acquire);
}

// ---- closing -----------------------------------------------------------------------------------------------------

void saveAtClose(KVTiXmlConfig& store) {
    const std::lock_guard saving(savingLock);
    if (kvOSFileIsReadOnly(store.szPath) == 0) store.SaveConfig();
}

}  // namespace
}  // namespace kv::config

using namespace kv::config;
namespace border = kv::border;

KVTiXmlConfig::KVTiXmlConfig() : pRoot(nullptr), fOpened(0), fModified(0), szPath{}, lock{} {
    kvOSInitializeCriticalSection(&lock);
}

KVTiXmlConfig::~KVTiXmlConfig() {
    delete pRoot;
    kvOSDeleteCriticalSection(&lock);
}

KVTiXmlConfig* kvCFGCheckHandle(KVTiXmlConfig* hConfig) {
    if (hConfig != KVSTDCONFIG) return hConfig;
    KVTiXmlConfig* store = process.defaultStore.load(std::memory_order_acquire);
    return store != nullptr ? store : border::atBorder(store, openDefault);
}

KVTiXmlConfig* kvCFGOpen(const char* pPath, std::uint32_t dwFlags) {
    KVTiXmlConfig* const none = nullptr;
    if (pPath == nullptr) return none;
    if (std::strlen(pPath) >= border::kPathSize) {
        errno = ENAMETOOLONG;
        return none;
    }
    return border::atBorder(none, [&] { return open(pPath, dwFlags).release(); });
}

std::uint32_t kvCFGClose(KVTiXmlConfig* hConfig, std::uint32_t fSave) {
    KVTiXmlConfig* store = hConfig;
    if (hConfig == KVSTDCONFIG) {
        if (leaveDefault() > 0) return 1;
        store = process.defaultStore.load(std::memory_order_acquire);
        if (store == nullptr) return 0;
    }
    if (!isOpened(store)) return kFailed;
    if (store == process.defaultStore.load(std::memory_order_acquire)) {
        process.defaultStore = nullptr;
        process.madeAnew = false;
    }
    if (fSave != 0) saveAtClose(*store);
    delete store;
    return 0;
}

KVTiXmlConfig* kvCFGDefaultIfOpen(void) { return process.defaultStore.load(std::memory_order_acquire); }

std::uint32_t kvCFGKVSTDCONFIGIsOpen(void) { return kvCFGDefaultIfOpen() != nullptr ? 1 : 0; }

std::uint32_t kvCFGDisableSave(std::uint32_t fDisable) {
    return process.savingDisabled.exchange(fDisable != 0) ? 1 : 0;
}

std::uint32_t kvCFGPath(KVTiXmlConfig* hConfig, char* pBuffer) {
    return withStore(hConfig, kFailed, [&](KVTiXmlConfig& store) {
        if (pBuffer == nullptr) return kFailed;
        border::copyText(pBuffer, border::kPathSize, store.szPath);
        return 0u;
    });
}
