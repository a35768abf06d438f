// Reading and writing of whole files. Reading is bounded, as the XML library is not: it takes any size and any depth,
// and a folder for a file of 8 EiB. It tells what is no good from what can't be read for the moment: the one is
// replaced by whoever opens a store, and the other must not be.
#include "config/document.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "border/guard.h"
#include "border/nesting.h"
#include "config/limits.h"
#include "config/references.h"
#include "config/replace_file.h"
#include "config/write_xml.h"

namespace kv::config {
namespace {

class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        const border::KeepErrno keep;
        if (number_ >= 0) close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return number_; }

private:
    int number_;
};

/// Why a file can't be opened. In a folder that can't be entered there is none, as far as this user goes: nor can this
/// user harm one there.
Loaded whyNotOpened(const char* path) {
    if (errno == ENOENT || errno == ENOTDIR) return Loaded::nothing;
    if (errno != EACCES) return Loaded::unreadable;
    struct stat status;
    const bool isThere = lstat(path, &status) == 0;
    errno = EACCES;
    return isThere ? Loaded::unreadable : Loaded::nothing;
}

Loaded readWhole(const char* path, std::string& text) {
    // A pipe is not waited for; it is refused as no file.
    const Descriptor file(open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (file.number() < 0) return whyNotOpened(path);
    struct stat status;
    if (fstat(file.number(), &status) != 0) return Loaded::unreadable;
    if (!S_ISREG(status.st_mode)) return Loaded::nothing;
    if (static_cast<std::uint64_t>(status.st_size) > kLargestFile) return Loaded::nothing;
    text.resize(static_cast<std::size_t>(status.st_size));
    std::size_t used = 0;
    while (used < text.size()) {
        const ssize_t got = read(file.number(), text.data() + used, text.size() - used);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return Loaded::unreadable;
        if (got == 0) break;
        used += static_cast<std::size_t>(got);
    }
    text.resize(used);
    return Loaded::whole;
}

/// As the XML library's own reading of files has it: a text ends at a zero byte, every line end is a line feed.
void normalise(std::string& text) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(kByteOrderMark)) text.erase(0, kByteOrderMark.size());
    text.resize(std::min(text.find('\0'), text.size()));
    std::size_t out = std::min(text.find('\r'), text.size());
    for (std::size_t in = out; in < text.size(); ++in) {
        if (text[in] != '\r') {
            text[out++] = text[in];
        } else if (in + 1 == text.size() || text[in + 1] != '\n') {
            text[out++] = '\n';
        }
    }
    text.resize(out);
}

}  // namespace

Loaded loadDocument(const char* path, TiXmlDocument& document) {
    std::string text;
    if (const Loaded loaded = readWhole(path, text); loaded != Loaded::whole) return loaded;
    normalise(text);
    const std::size_t deepest = border::deepestNesting(text);
    if (deepest > kDeepest) return Loaded::nothing;
    const bool isSettled = settleReferences(text);
    document.SetTabSize(0);  // nobody asks for lines and columns, which take a tenth of the reading
    // Bytes pass unchanged whatever the file declares. Told otherwise, the XML library would read behind the end of a
    // text that is cut in the middle of a letter.
    document.Parse(text.c_str(), nullptr, TIXML_ENCODING_LEGACY);
    // Behind a DOCTYPE with declarations of its own the library stops without an error, ahead of a root that is there.
    if (document.Error() || deepest == 0) return Loaded::nothing;
    if (isSettled) return Loaded::whole;
    errno = EILSEQ;
    return Loaded::unreadable;
}

bool saveDocument(const char* path, const TiXmlDocument& document, const TiXmlElement& root) {
    const std::string text = xmlText(document, root);
    if (text.size() > kLargestFile) {
        errno = EFBIG;
        return false;
    }
    return replaceFile(path, text);
}

}  // namespace kv::config
