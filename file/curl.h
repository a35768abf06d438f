// What all uses of the transfer library share here: handles that talk under the switch for standard error, and failures
// told as errno.
#pragma once

#include <curl/curl.h>

namespace kv::file {

/// A new transfer for HTTP, HTTPS and FTP alone, or null. What it says when it is verbose goes to standard error as the
/// library's messages do, so that one switch silences both.
CURL* newTransfer() noexcept;

/// Sets errno to what comes nearest to the reason that a transfer failed for.
void setErrno(CURL* transfer, CURLcode result) noexcept;

/// The status of the last answer; 0 without one.
long statusOf(CURL* transfer) noexcept;

struct CloseTransfer {
    void operator()(CURL* transfer) const noexcept { curl_easy_cleanup(transfer); }
};

}  // namespace kv::file
