// The printing of a document: four blanks a level, an element with nothing but a text on one line.
#include "config/write_xml.h"

#include <cstdio>
#include <cstring>
#include <string_view>

#include "config/document.h"

namespace kv::config {
namespace {

class Printer {
public:
    void node(const TiXmlNode& node, int depth) {
        switch (node.Type()) {
            case TiXmlNode::TINYXML_ELEMENT:
                return element(*node.ToElement(), depth);
            case TiXmlNode::TINYXML_TEXT:
                return text(*node.ToText(), depth);
            case TiXmlNode::TINYXML_COMMENT:
                return enclosed("<!--", node, "-->", depth);
            case TiXmlNode::TINYXML_UNKNOWN:
                return enclosed("<", node, ">", depth);
            case TiXmlNode::TINYXML_DECLARATION:
                return declaration(*node.ToDeclaration());
            default:
                return;
        }
    }
    void endLine() { out_ += '\n'; }
    std::string take() { return std::move(out_); }

private:
    void indent(int depth) { out_.append(static_cast<std::size_t>(depth) * 4, ' '); }

    void escaped(std::string_view bytes) {
        for (const char character : bytes) {
            switch (character) {
                case '&':
                    out_ += "&amp;";
                    break;
                case '<':
                    out_ += "&lt;";
                    break;
                case '>':
                    out_ += "&gt;";
                    break;
                case '"':
                    out_ += "&quot;";
                    break;
                case '\'':
                    out_ += "&apos;";
                    break;
                default:
                    plainOrNumber(character);
            }
        }
    }

    void plainOrNumber(char character) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte >= 32) {
            out_ += character;
            return;
        }
        char number[8];
        std::snprintf(number, sizeof number, "&#x%02X;", byte);
        out_ += number;
    }

    void element(const TiXmlElement& element, int depth) {
        indent(depth);
        out_ += '<';
        out_ += element.ValueTStr();
        for (const TiXmlAttribute* at = element.FirstAttribute(); at != nullptr; at = at->Next()) attribute(*at);
        const TiXmlNode* first = element.FirstChild();
        if (first == nullptr) {
            out_ += " />";
            return;
        }
        out_ += '>';
        if (first == element.LastChild() && first->ToText() != nullptr) {
            node(*first, depth + 1);
        } else {
            for (const TiXmlNode* child = first; child != nullptr; child = child->NextSibling()) {
                if (child->ToText() == nullptr) endLine();
                node(*child, depth + 1);
            }
            endLine();
            indent(depth);
        }
        out_ += "</";
        out_ += element.ValueTStr();
        out_ += '>';
    }

    void attribute(const TiXmlAttribute& attribute) {
        const char quote = attribute.ValueStr().find('"') == std::string::npos ? '"' : '\'';
        out_ += ' ';
        escaped(attribute.NameTStr());
        out_ += '=';
        out_ += quote;
        escaped(attribute.ValueStr());
        out_ += quote;
    }

    void text(const TiXmlText& text, int depth) {
        if (!text.CDATA()) return escaped(text.ValueTStr());
        endLine();
        enclosed("<![CDATA[", text, "]]>", depth);
        endLine();
    }

    void enclosed(const char* before, const TiXmlNode& node, const char* behind, int depth) {
        indent(depth);
        out_ += before;
        out_ += node.ValueTStr();
        out_ += behind;
    }

    void declaration(const TiXmlDeclaration& declaration) {
        out_ += "<?xml ";
        declared("version", declaration.Version());
        declared("encoding", declaration.Encoding());
        declared("standalone", declaration.Standalone());
        out_ += "?>";
    }

    /// A value that could not be read back, which no sensible declaration has, is left out.
    void declared(const char* name, const char* value) {
        if (*value == '\0' || std::strpbrk(value, "\"'&=<>") != nullptr) return;
        out_ += name;
        out_ += "=\"";
        out_ += value;
        out_ += "\" ";
    }

    std::string out_;
};

}  // namespace

std::string xmlText(const TiXmlDocument& document, const TiXmlElement& root) {
    const TiXmlElement* replaced = document.FirstChildElement(kRootName);
    Printer printer;
    for (const TiXmlNode* node = document.FirstChild(); node != nullptr; node = node->NextSibling()) {
        printer.node(node == replaced ? root : *node, 0);
        printer.endLine();
    }
    return printer.take();
}

}  // namespace kv::config
