#include "readers/xml.h"

#include "core/memory_guard.h"
#include "core/text.h"
#include "core/values.h"

#include <algorithm>
#include <cstdint>

namespace nv {
namespace {

// The root is at depth 0; it and 64 levels of descendants are accepted. The parser recurses once per level,
// so this limit is also what bounds its stack use.
constexpr int kMaxDepth = 64;

// Far beyond any skin, locale or address file (a skin has a few hundred controls): a file of millions of tiny
// elements would otherwise hold gigabytes of tree, and every reader above would walk all of it.
constexpr size_t kMaxElements = 100000;

// A ';' further than this after the '&' does not end a reference: the '&' is then an ordinary character.
constexpr size_t kMaxReferenceLength = 12;

// Thrown at the first error and caught only in parseXml: the message and the byte offset it belongs to.
struct XmlFailure {
    const char* message;
    size_t offset;
};

[[noreturn]] void fail(const char* message, size_t offset) {
    throw XmlFailure{message, offset};
}

bool isSpace(int c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// Bytes of 128 and more pass unexamined, so UTF-8 letters are name characters.
bool isNameStart(int c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == ':' || c >= 128;
}

bool isNameChar(int c) {
    return isNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

// A read position over the input; nothing here reads outside [0, size).
class Cursor {
public:
    Cursor(const char* data, size_t size) : bytes_(data, size) {}

    size_t pos() const { return pos_; }
    bool atEnd() const { return pos_ >= bytes_.size(); }

    // The byte `ahead` bytes past the position (0..255), or -1 beyond the end.
    int peek(size_t ahead = 0) const {
        return ahead < bytes_.size() - pos_ ? static_cast<unsigned char>(bytes_[pos_ + ahead]) : -1;
    }

    bool startsWith(std::string_view prefix) const { return bytes_.substr(pos_).starts_with(prefix); }

    void advance(size_t count) { pos_ += std::min(count, bytes_.size() - pos_); }
    void moveTo(size_t offset) { pos_ = std::min(offset, bytes_.size()); }

    void skipSpace() {
        while (isSpace(peek()))
            ++pos_;
    }

    // The offset of the next occurrence of `what` at or after `from`, or npos.
    size_t find(std::string_view what, size_t from) const { return bytes_.find(what, from); }

    std::string_view slice(size_t begin, size_t end) const { return bytes_.substr(begin, end - begin); }

private:
    std::string_view bytes_;
    size_t pos_ = 0;
};

// "#65" or "#x41" (at least one digit, nothing else) within 0..0x10FFFF.
bool appendCharacterReference(std::string& out, std::string_view name) {
    if (name.size() < 2 || name[0] != '#') return false;
    const bool hex = name[1] == 'x';
    const std::string_view digits = name.substr(hex ? 2 : 1);
    if (digits.empty()) return false;
    uint64_t value = 0;
    for (char c : digits) {
        const int digit = hex ? hexDigitValue(c) : (c >= '0' && c <= '9' ? c - '0' : -1);
        if (digit < 0) return false;
        value = value * (hex ? 16 : 10) + uint64_t(digit);
        if (value > 0x10FFFF) return false; // also keeps the accumulator from ever overflowing
    }
    appendUtf8(out, char32_t(value));
    return true;
}

// Appends the replacement of "&name;" and returns true, or returns false for a name that is not understood.
bool appendReference(std::string& out, std::string_view name) {
    static constexpr struct {
        std::string_view name;
        char character;
    } kNamed[] = {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
    for (const auto& entity : kNamed) {
        if (name == entity.name) {
            out.push_back(entity.character);
            return true;
        }
    }
    return appendCharacterReference(out, name);
}

// Text runs and attribute values: references are replaced, and an '&' that does not start a reference that is
// understood is kept as it stands, decoding going on right after it.
void appendDecoded(std::string& out, std::string_view raw) {
    size_t pos = 0;
    while (pos < raw.size()) {
        const size_t amp = raw.find('&', pos);
        if (amp == std::string_view::npos) {
            out.append(raw.substr(pos));
            return;
        }
        out.append(raw.substr(pos, amp - pos));
        // Only a short window is searched, so text full of '&' stays linear.
        const size_t semicolon = raw.substr(amp + 1, kMaxReferenceLength).find(';');
        if (semicolon != std::string_view::npos && appendReference(out, raw.substr(amp + 1, semicolon))) {
            pos = amp + 1 + semicolon + 1;
        } else {
            out.push_back('&');
            pos = amp + 1;
        }
    }
}

class Parser {
public:
    Parser(const char* data, size_t size) : in_(data, size) {}

    void parseDocument(XmlDocument& document) {
        // Windows editors often save UTF-8 with a byte-order mark; it is not text before the root. Positions
        // stay those of the whole input, so in-place edits keep the mark.
        if (in_.startsWith("\xEF\xBB\xBF")) in_.moveTo(3);
        for (;;) {
            in_.skipSpace();
            if (in_.atEnd()) {
                if (!document.hasRoot) fail("Kok eleman yok", in_.pos());
                return;
            }
            if (in_.startsWith("<?")) {
                skipConstruct(2, "?>");
            } else if (in_.startsWith("<!--")) {
                skipConstruct(4, "-->");
            } else if (in_.startsWith("<!")) {
                // A document type declaration; an internal subset holding '>' is not supported.
                skipConstruct(2, ">");
            } else if (in_.peek() != '<') {
                fail("Beklenmeyen metin", in_.pos());
            } else if (document.hasRoot) {
                fail("Birden fazla kok eleman", in_.pos());
            } else {
                parseElement(document.root, 0);
                document.hasRoot = true;
            }
        }
    }

private:
    // The cursor is on a construct whose opener is `openerLength` bytes long; moves past its terminator. An
    // unclosed construct is reported where it begins, the end of the input would tell the reader nothing.
    void skipConstruct(size_t openerLength, std::string_view terminator) {
        const size_t begin = in_.pos();
        const size_t end = in_.find(terminator, begin + openerLength);
        if (end == std::string_view::npos) fail("Kapanmamis yapi", begin);
        in_.moveTo(end + terminator.size());
    }

    std::string readName() {
        if (!isNameStart(in_.peek())) fail("Gecersiz ad", in_.pos());
        const size_t begin = in_.pos();
        while (isNameChar(in_.peek()))
            in_.advance(1);
        return std::string(in_.slice(begin, in_.pos()));
    }

    // The cursor is on the '<' of a start tag.
    void parseElement(XmlElement& element, int depth) {
        if (depth > kMaxDepth) fail("Cok derin yapi", in_.pos());
        if (++elements_ > kMaxElements) fail("Cok fazla oge", in_.pos());
        element.tagBegin = in_.pos();
        in_.advance(1);
        element.name = readName();
        element.nameEnd = in_.pos();
        for (;;) {
            in_.skipSpace();
            if (in_.atEnd()) fail("Etiket kapanmadi", in_.pos());
            if (in_.peek() == '>') {
                in_.advance(1);
                element.contentBegin = in_.pos();
                parseContent(element, depth);
                return;
            }
            if (in_.peek() == '/') {
                if (in_.peek(1) == -1) fail("Etiket kapanmadi", in_.pos() + 1);
                if (in_.peek(1) == '>') {
                    in_.advance(2);
                    element.contentBegin = element.contentEnd = in_.pos();
                    element.selfClosing = true;
                    return;
                }
            }
            element.attributes.push_back(parseAttribute());
        }
    }

    XmlAttribute parseAttribute() {
        XmlAttribute attribute;
        attribute.name = readName();
        in_.skipSpace();
        if (in_.atEnd()) fail("Etiket kapanmadi", in_.pos());
        if (in_.peek() != '=') fail("Ozellikte '=' yok", in_.pos());
        in_.advance(1);
        in_.skipSpace();
        if (in_.atEnd()) fail("Etiket kapanmadi", in_.pos());
        const int quote = in_.peek();
        if (quote != '"' && quote != '\'') fail("Ozellik degeri tirnaksiz", in_.pos());
        const size_t quoteAt = in_.pos();
        attribute.valueBegin = quoteAt + 1;
        attribute.valueEnd = in_.find(std::string_view(quote == '"' ? "\"" : "'"), attribute.valueBegin);
        if (attribute.valueEnd == std::string_view::npos) fail("Ozellik degeri kapanmadi", quoteAt);
        appendDecoded(attribute.value, in_.slice(attribute.valueBegin, attribute.valueEnd));
        in_.moveTo(attribute.valueEnd + 1);
        return attribute;
    }

    // The cursor is just past the start tag's '>'; returns past the matching closing tag.
    void parseContent(XmlElement& element, int depth) {
        for (;;) {
            if (in_.atEnd()) fail("Eleman kapanmadi", in_.pos());
            if (in_.peek() != '<') {
                // Without a further '<' the run goes to the end of the input (npos is past every offset).
                const size_t begin = in_.pos();
                in_.moveTo(in_.find("<", begin));
                appendDecoded(element.text, in_.slice(begin, in_.pos()));
            } else if (in_.startsWith("<!--")) {
                skipConstruct(4, "-->");
            } else if (in_.startsWith("<![CDATA[")) {
                const size_t begin = in_.pos() + 9;
                const size_t end = in_.find("]]>", begin);
                if (end == std::string_view::npos) fail("CDATA kapanmadi", in_.pos());
                element.text.append(in_.slice(begin, end));
                in_.moveTo(end + 3);
            } else if (in_.startsWith("<?")) {
                skipConstruct(2, "?>");
            } else if (in_.startsWith("</")) {
                element.contentEnd = in_.pos();
                parseClosingTag(element);
                return;
            } else {
                XmlElement child;
                parseElement(child, depth + 1);
                element.children.push_back(std::move(child));
            }
        }
    }

    // The cursor is on "</".
    void parseClosingTag(const XmlElement& element) {
        in_.advance(2);
        const size_t nameBegin = in_.pos();
        if (readName() != element.name) fail("Kapanis etiketi uyusmuyor", nameBegin);
        in_.skipSpace();
        if (in_.peek() != '>') fail("Kapanis etiketi bozuk", in_.pos());
        in_.advance(1);
    }

    Cursor in_;
    size_t elements_ = 0;
};

std::string escape(std::string_view value, bool quotes) {
    std::string out;
    out.reserve(value.size());
    for (char c : value) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += quotes ? "&quot;" : "\"";
            break;
        case '\'':
            out += quotes ? "&apos;" : "'";
            break;
        default:
            out += c;
        }
    }
    return out;
}

} // namespace

const XmlAttribute* XmlElement::findAttribute(std::string_view attributeName) const {
    for (const XmlAttribute& attribute : attributes)
        if (attribute.name == attributeName) return &attribute;
    return nullptr;
}

std::string XmlElement::attribute(std::string_view attributeName, std::string_view defaultValue) const {
    const XmlAttribute* found = findAttribute(attributeName);
    return std::string(found ? std::string_view(found->value) : defaultValue);
}

int XmlElement::intAttribute(std::string_view attributeName, int defaultValue) const {
    const XmlAttribute* found = findAttribute(attributeName);
    return found ? parseInt(found->value, defaultValue) : defaultValue;
}

bool parseXml(const char* data, size_t size, XmlDocument& document, std::wstring* error,
              size_t* errorOffset) {
    document = XmlDocument{};
    if (size == 0) data = ""; // a null pointer with no bytes is an empty document
    try {
        Parser(data, size).parseDocument(document);
        return true;
    } catch (const XmlFailure& failure) {
        document = XmlDocument{};
        const size_t offset = std::min(failure.offset, size);
        if (errorOffset) *errorOffset = offset;
        if (error) {
            const size_t line = 1 + size_t(std::count(data, data + offset, '\n'));
            *error = widenAscii(failure.message) + L" (satir " + std::to_wstring(line) + L")";
        }
        return false;
    } catch (const std::bad_alloc&) { // a tree as large as a 32 MiB file allows
        document = XmlDocument{};
        if (error) *error = kOutOfMemory;
        return false;
    }
}

std::string xmlEscapeAttribute(std::string_view value) {
    return escape(value, true);
}
std::string xmlEscapeText(std::string_view value) {
    return escape(value, false);
}

} // namespace nv
