// HTTP, HTTPS and FTP URLs as a kind of file. Opening is in url_open.cpp, the transfers in url_read.cpp and
// url_write.cpp; positions and sizes are kept in the record.
#include "file/url.h"

#include "file/curl.h"
#include "file/token.h"

namespace kv::file {
namespace {

/// Redirects that the transfer library follows by itself in one request; it would follow a circle for ever.
constexpr long kMostRedirects = 30;

bool closeUrl(kvOSFileHandle& file) {
    curl_slist_free_all(file.pHeaders);
    if (file.pFile != nullptr) curl_easy_cleanup(file.pFile);
    freeTokenTexts(file);
    freeRecord(file);
    return true;
}

}  // namespace

void setOptionsOfFile(CURL* transfer) noexcept {
    curl_easy_setopt(transfer, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(transfer, CURLOPT_MAXREDIRS, kMostRedirects);
    curl_easy_setopt(transfer, CURLOPT_FAILONERROR, 1L);
    trustAnyCertificate(transfer);
}

void trustAnyCertificate(CURL* transfer) noexcept {
    curl_easy_setopt(transfer, CURLOPT_SSL_VERIFYPEER, 0L);
    curl_easy_setopt(transfer, CURLOPT_SSL_VERIFYHOST, 0L);
}

constinit const FileKind kUrlFile{
    .read = readUrl, .write = writeUrl, .close = closeUrl, .repeatsWrites = true, .seeksWhenWriting = false};

}  // namespace kv::file
