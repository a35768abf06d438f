// Configuration files as XML documents.
#pragma once

#include <tinyxml.h>

namespace kv::config {

inline constexpr const char* kRootName = "KorvaneConfig";

/// Reads a file into an empty document. False for what is missing, no file, too large, nested too deep, no XML or
/// without any element; the document is then of no use.
bool loadDocument(const char* path, TiXmlDocument& document);

/// Writes a document, with `root` in the place of its KorvaneConfig element, to a file. False with errno set; unless
/// the file could only be written in place, it is then as it was.
bool saveDocument(const char* path, const TiXmlDocument& document, const TiXmlElement& root);

}  // namespace kv::config
