// An XML text from somebody else, made safe for the XML library and read with it.
#pragma once

#include <string>
#include <string_view>
#include <tinyxml.h>

namespace kv::file::s3 {

/// Reads the text, or says false: for one that is no XML, holds a zero byte, or passes the bounds.
bool readXml(std::string_view text, TiXmlDocument& document);

/// The text in an element; empty for a null one and for one that holds none.
std::string textIn(const TiXmlElement* element);

/// The text in the first child of that name.
std::string textOf(const TiXmlElement& parent, const char* child);

}  // namespace kv::file::s3
