// References by number, as "&#233;", to letters beyond ASCII.
#pragma once

#include <string>

namespace kv::config {

/// Makes a file's text such that the XML library, to which every letter is one byte, reads its references as what they
/// stand for: in a file in UTF-8 they become the bytes of their letters. False for a letter that the file has no bytes
/// for, as the euro in iso-8859-1; it could be neither kept nor written back.
bool settleReferences(std::string& text);

}  // namespace kv::config
