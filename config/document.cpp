// Reading and writing of whole files. Reading is bounded, as the XML library is not: it takes any size and any depth,
// and a folder for a file of 8 EiB.
#include "config/document.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "border/nesting.h"
#include "config/limits.h"
#include "config/replace_file.h"
#include "config/write_xml.h"

namespace kv::config {
namespace {

class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return number_; }

private:
    int number_;
};

std::optional<std::string> readWhole(const char* path) {
    // A pipe is not waited for; it is refused as no file.
    const Descriptor file(open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status;
    if (file.number() < 0 || fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    if (static_cast<std::uint64_t>(status.st_size) > kLargestFile) return std::nullopt;
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t used = 0;
    while (used < text.size()) {
        const ssize_t got = read(file.number(), text.data() + used, text.size() - used);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return std::nullopt;
        if (got == 0) break;
        used += static_cast<std::size_t>(got);
    }
    text.resize(used);
    return text;
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

bool loadDocument(const char* path, TiXmlDocument& document) {
    auto text = readWhole(path);
    if (!text) return false;
    normalise(*text);
    if (border::deepestNesting(*text) > kDeepest) return false;
    document.SetTabSize(0);  // nobody asks for lines and columns, which take a tenth of the reading
    // Bytes pass unchanged whatever the file declares. Told otherwise, the XML library would read behind the end of a
    // text that is cut in the middle of a letter.
    document.Parse(text->c_str(), nullptr, TIXML_ENCODING_LEGACY);
    return !document.Error() && document.RootElement() != nullptr;
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
