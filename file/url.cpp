// HTTP, HTTPS and FTP URLs as a kind of file. Opening is in url_open.cpp, the transfers in url_read.cpp and
// url_write.cpp; positions and sizes are kept in the record.
#include "file/url.h"

#include "file/curl.h"
#include "file/token.h"

namespace kv::file {
namespace {

bool closeUrl(kvOSFileHandle& file) {
    curl_slist_free_all(file.pHeaders);
    if (file.pFile != nullptr) curl_easy_cleanup(file.pFile);
    freeTokenTexts(file);
    freeRecord(file);
    return true;
}

}  // namespace

constinit const FileKind kUrlFile{
    .read = readUrl, .write = writeUrl, .close = closeUrl, .repeatsWrites = true, .seeksWhenWriting = false};

}  // namespace kv::file
