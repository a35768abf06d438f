// Saving: to the store's own file, with backups before and after, or to another file.
//
// The tree is written with its lock held. Backups and copies report what fails, so they are made with the lock of
// saving alone; other threads may read and write the store meanwhile.
#include <cerrno>
#include <cstring>
#include <mutex>

#include "border/text.h"
#include "config/document.h"
#include "config/process.h"
#include "config/saving_lock.h"
#include "config/store.h"
#include "errlog.h"
#include "kvos/attributes.h"
#include "kvos/copy.h"
#include "kvos/naming.h"

namespace kv::config {

std::recursive_mutex savingLock;

namespace {

constexpr std::uint32_t kBackups = 5;
constexpr std::uint32_t kReadOnly = 0xFFFFFFFE;

std::uint32_t reported(const char* message) {
    ErrOut("%s", message);
    return kFailed;
}

std::uint32_t whileNotOpened() { return process.madeAnew ? 0 : kFailed; }

void copyPath(KVTiXmlConfig& store, border::PathBuffer& path) {
    const CDAutoLock locked(&store.lock);
    border::copyText(path, sizeof path, store.szPath);
}

bool isModified(KVTiXmlConfig& store) {
    const CDAutoLock locked(&store.lock);
    return store.fModified != 0;
}

/// Writes the tree. A file that is gone or damaged counts as saved. Meant.
bool writeTree(KVTiXmlConfig& store) {
    const CDAutoLock locked(&store.lock);
    if (store.SaveConfig() == kFailed) return false;
    store.fModified = 0;
    return true;
}

std::uint32_t save(KVTiXmlConfig& store, const char* path, std::uint32_t force) {
    const std::lock_guard saving(savingLock);
    border::PathBuffer own;
    copyPath(store, own);
    if (path != nullptr && std::strcmp(path, own) != 0) return kvCFGSaveAs(&store, path, force);
    if (path != nullptr && kvOSFileIsReadOnly(own) != 0) {
        reported("Can not save : file is read only");
        return kReadOnly;
    }
    if (!isModified(store)) return 0;
    MakeFileBackups(own, kBackups);
    if (!writeTree(store)) return reported("Error Saving config file");
    MakeFileBackups(own, kBackups);  // so that the new file is among them too
    return 0;
}

/// The target has to be there for the tree to be written into it.
void prepareTarget(KVTiXmlConfig& store, const char* target) {
    if (kvOSFileExists(target) != 0) return;
    border::PathBuffer own;
    copyPath(store, own);
    kvOSCopyFile(own, target, 1);
    kvOSSetFileReadOnly(target, 0);
}

std::uint32_t saveAs(KVTiXmlConfig& store, const char* target) {
    const std::lock_guard saving(savingLock);
    prepareTarget(store, target);
    bool written;
    {
        const CDAutoLock locked(&store.lock);
        border::copyText(store.szPath, sizeof store.szPath, target);
        markModified(store);
        written = writeTree(store);
    }
    return written ? 0 : reported("Confg save failed");
}

/// What comes first in both calls: disabled, no store, not opened; then `body(store)`.
template <class Body>
std::uint32_t unlessDisabled(KVTiXmlConfig* handle, std::uint32_t force, Body&& body) {
    if (force == 0 && process.savingDisabled) return 0;
    KVTiXmlConfig* store = kvCFGCheckHandle(handle);
    if (store == nullptr) return reported("Can not save : Config not opened");
    if (!isOpened(store)) return whileNotOpened();
    return border::atBorder(kFailed, [&] { return body(*store); });
}

}  // namespace
}  // namespace kv::config

using namespace kv::config;
namespace border = kv::border;

std::uint32_t KVTiXmlConfig::SaveConfig() {
    return border::atBorder(kFailed, [&]() -> std::uint32_t {
        const CDAutoLock locked(&lock);
        if (fOpened == 0 || fModified == 0) return 0;
        TiXmlDocument document;
        if (loadDocument(szPath, document) != Loaded::whole) return 0;
        if (document.FirstChildElement(kRootName) == nullptr) return 0;
        if (!saveDocument(szPath, document, *pRoot)) return kFailed;
        fModified = 0;
        return 1;
    });
}

std::uint32_t kvCFGSave(KVTiXmlConfig* hConfig, const char* pPath, std::uint32_t fForce) {
    return unlessDisabled(hConfig, fForce, [&](KVTiXmlConfig& store) { return save(store, pPath, fForce); });
}

std::uint32_t kvCFGSaveAs(KVTiXmlConfig* hConfig, const char* pPath, std::uint32_t fForce) {
    return unlessDisabled(hConfig, fForce, [&](KVTiXmlConfig& store) {
        if (pPath == nullptr) return kFailed;
        const std::size_t length = std::strlen(pPath);
        if (length > 0 && length < border::kPathSize) return saveAs(store, pPath);
        errno = length == 0 ? ENOENT : ENAMETOOLONG;
        return kFailed;
    });
}

std::uint32_t kvCFGIsModified(KVTiXmlConfig* hConfig) {
    return border::atBorder(0u, [&] {
        KVTiXmlConfig* store = kvCFGCheckHandle(hConfig);
        if (!isOpened(store) || !isModified(*store)) return 0u;
        border::PathBuffer path;
        copyPath(*store, path);
        return kvOSFileIsReadOnly(path) == 0 ? 1u : 0u;
    });
}
