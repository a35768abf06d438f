// XML documents as text.
#pragma once

#include <string>
#include <tinyxml.h>

namespace kv::config {

/// The document as the XML library prints it, with `root` in the place of its KorvaneConfig element, but for one thing:
/// every "&" is escaped. The XML library lets what looks like the start of a character reference pass as it is, with
/// all that follows up to the next ";", so that a value could close its element.
std::string xmlText(const TiXmlDocument& document, const TiXmlElement& root);

}  // namespace kv::config
