// Comments of keys and values. One counts only while it is the last thing in its element.
#include <cstring>

#include "config/store.h"

namespace kv::config {
namespace {

void writeComment(KVTiXmlConfig& store, TiXmlElement& element, TiXmlNode* old, const char* text) {
    const char* comment = text == nullptr ? "" : text;
    if (old == nullptr) {
        element.LinkEndChild(new TiXmlComment(comment));  // meant: an empty one as well
    } else if (*comment == '\0') {
        element.RemoveChild(old);
    } else {
        old->SetValue(comment);
    }
    markModified(store);
}

}  // namespace
}  // namespace kv::config

using namespace kv::config;

std::uint32_t kvCFGValueComment(KVTiXmlConfig* hConfig, const char* pPath, char* pBuffer, std::uint32_t fWrite) {
    return withElement(hConfig, pPath, kFailed, [&](KVTiXmlConfig& store, TiXmlElement& element) -> std::uint32_t {
        TiXmlNode* last = element.LastChild();
        TiXmlNode* comment = last != nullptr && last->ToComment() != nullptr ? last : nullptr;
        if (fWrite != 0) {
            if (!isComment(pBuffer)) return kFailed;
            writeComment(store, element, comment, pBuffer);
        } else if (comment != nullptr && pBuffer != nullptr) {
            std::memcpy(pBuffer, comment->Value(), comment->ValueStr().size() + 1);
        }
        return 0;
    });
}
