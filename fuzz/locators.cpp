// Locators as text: the redirect, the scheme tests, the repairs in place and the absolute path.
//
// What must hold: a repair in place never makes a text longer nor writes behind it, an output of 4096 bytes is never
// overrun, what does not fit is refused whole, and the scheme tests agree with each other. No file is opened. Lines:
// text, prefix of the redirect, its replacement (a redirect only if the prefix is not empty).
#include <cerrno>
#include <cwchar>
#include <memory>
#include <string>
#include <string_view>
#include <strings.h>

#include "fuzz/input.h"
#include "kvos/locator.h"

namespace {

using kv::fuzz::ExactBuffer;
using kv::fuzz::Input;
using kv::fuzz::kPathSize;
using kv::fuzz::must;

void testSchemes(const std::string& text) {
    ExactBuffer source(text);
    const bool isFile = kvOSIsNetworkFile(source) == 1;
    const bool isStream = kvOSIsNetworkStream(source) == 1;
    must(kvOSIsNetworkSource(source) == (isFile || isStream ? 1 : 0), "a source is a file or a stream");
    must(kvOSFUseCurl(source) == 0 || isFile, "what is opened as a URL is a network file");
    must(!isFile || !isStream, "a text has one scheme");
    must(kvOSUseAws(source) <= 1 && (kvOSUseAws(source) == 0 || text[0] != '/'), "a rooted path is no object");
}

void repairSeparators(const std::string& text) {
    ExactBuffer fixed(text);
    must(kvOSFixSeparators(fixed) == 0, "the result is 0");
    must(fixed.text().size() <= text.size(), "a repair never makes a text longer");
    if (text.find('%') == std::string::npos) {
        must(fixed.text().find('\\') == std::string_view::npos, "only an escape leaves a backslash");
    }

    ExactBuffer plain(text);
    kvOSFixHTTPSeparators(plain);
    must(plain.text().size() == text.size() && plain.text().find('\\') == std::string_view::npos,
         "every backslash is turned, and nothing else moves");

    const std::unique_ptr<wchar_t[]> wide(new wchar_t[text.size() + 1]);
    for (std::size_t i = 0; i <= text.size(); ++i) wide[i] = static_cast<unsigned char>(text.c_str()[i]);
    kvOSFixSeparatorsW(wide.get());
    for (std::size_t i = 0; i < text.size(); ++i) {
        must(wide[i] == static_cast<unsigned char>(plain.text()[i]), "wide and narrow texts are repaired alike");
    }
}

void legalize(const std::string& text) {
    ExactBuffer legal(text);
    kvOSLegalizePath(legal);
    must(legal.text().size() == text.size(), "each byte becomes one byte");
    must(legal.text().find_first_of("\"*?:|<>") == std::string_view::npos, "no refused character is left");
    for (const char c : legal.text()) must(c >= ' ', "no control or high byte is left");
    must(text.empty() || (legal.text()[0] != '.' && (legal.text()[0] != ' ' || text[0] != ' ')), "the first is no dot");
}

void makeAbsolute(const std::string& text) {
    ExactBuffer full(kPathSize);
    errno = 0;
    if (kvOSFullPath(full, ExactBuffer(text), kPathSize) == nullptr) {
        must(full.text().empty() && errno == ENAMETOOLONG, "a path that does not fit is refused whole");
        return;
    }
    must(text.ends_with(full.text()) || full.text().ends_with(text), "nothing is changed but the beginning");
    if (text.size() >= kPathSize) return;
    ExactBuffer inPlace(kPathSize);
    inPlace.put(text);
    must(kvOSFullPath(inPlace, inPlace, 1) == inPlace.data() && inPlace.text() == full.text(),
         "in place it is the same");
}

void redirect(const std::string& text, const std::string& prefix, const std::string& newDir) {
    ExactBuffer source(prefix);
    ExactBuffer replacement(newDir);
    if (!prefix.empty()) {
        gszReDir_Source = source;
        gszReDir_NewDir = replacement;
    }
    ExactBuffer target(kPathSize);
    errno = 0;
    kvOSReDir(ExactBuffer(text), target);
    gszReDir_Source = nullptr;
    gszReDir_NewDir = nullptr;

    const bool matches = !prefix.empty() && strncasecmp(text.c_str(), prefix.c_str(), prefix.size()) == 0;
    const std::string expected = matches ? newDir + text.substr(prefix.size()) : text;
    if (expected.size() < kPathSize) {
        must(target.text() == expected && errno == 0, "the prefix is replaced, once");
    } else {
        must(target.text().empty() && errno == ENAMETOOLONG, "a path that does not fit is refused whole");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const std::string text = input.text();
    const std::string prefix = input.text();
    const std::string newDir = input.text();
    testSchemes(text);
    repairSeparators(text);
    legalize(text);
    makeAbsolute(text);
    redirect(text, prefix, newDir);
    return 0;
}
