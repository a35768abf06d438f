// What an object store says in XML.
//
// The texts come from anybody: each is bounded in size, in number of tags and in nesting before the XML library sees
// it. A refusal can arrive in an answer that began as a success, so that each of these may give an error.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "file/s3/client.h"

namespace kv::file::s3 {

/// Bytes of an answer.
inline constexpr std::size_t kLargestAnswer = std::size_t{64} << 20;

/// What stands in an answer where another was expected.
inline constexpr std::string_view kMalformedAnswer = "MalformedAnswer";

/// The error in a refusal's body. What the body does not tell, as after HEAD, is made from the status: the name is
/// "NotFound" for 404, "AccessDenied" for 403 and else "HTTP 503", the message "HTTP 404". Neither is ever empty.
Error errorIn(long status, std::string_view body);

Answer<BucketLocation> locationIn(std::string_view body);

/// Both versions of a listing. Where the store gives no marker for the next page, it is the last text of this one.
Answer<Listing> listingIn(std::string_view body);

Answer<MultipartUpload> uploadIn(std::string_view body);
Answer<CopiedPart> copiedPartIn(std::string_view body);
Answer<CompletedUpload> completedUploadIn(std::string_view body);

/// The body that joins the parts of an upload.
std::string completionOf(const std::vector<CompletedPart>& parts);

}  // namespace kv::file::s3
