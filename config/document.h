// Configuration files as XML documents.
#pragma once

#include <tinyxml.h>

namespace kv::config {

inline constexpr const char* kRootName = "KorvaneConfig";

/// What came of the reading of a file.
enum class Loaded {
    whole,       // it is in the document, in which an element that the XML library did not come to is missing
    nothing,     // missing, no file, too large, nested too deep, no XML or without any element: to be replaced
    unreadable,  // it may be good, but can't be read now or by this user, or not be kept: to be left as it is
};

/// Reads a file into an empty document, which is of no use unless the file is whole. errno tells why one is unreadable.
Loaded loadDocument(const char* path, TiXmlDocument& document);

/// Writes a document, with `root` in the place of its KorvaneConfig element, to a file. False with errno set; unless
/// the file could only be written in place, it is then as it was.
bool saveDocument(const char* path, const TiXmlDocument& document, const TiXmlElement& root);

}  // namespace kv::config
