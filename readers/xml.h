#pragma once
// A small, strict, non-validating XML reader for the skin's files. The tree keeps the byte positions of the
// start tags, element contents and attribute values so that writers can edit a file in place.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace nv {

struct XmlAttribute {
    std::string name;
    std::string value;     // entities decoded
    size_t valueBegin = 0; // the raw value in the source: the bytes between the quotes
    size_t valueEnd = 0;
};

struct XmlElement {
    std::string name;
    std::vector<XmlAttribute> attributes; // document order; a repeated name is kept, lookups find the first
    std::string text;                     // every text run (decoded) and CDATA section, appended, untrimmed
    std::vector<XmlElement> children;

    // Byte positions in the parsed source.
    size_t tagBegin = 0;      // the '<' of the start tag
    size_t nameEnd = 0;       // just past the element's name in the start tag
    size_t contentBegin = 0;  // just past the start tag's '>'
    size_t contentEnd = 0;    // the '<' of the closing tag; equals contentBegin for an empty element
    bool selfClosing = false; // written as <name ... />

    const XmlAttribute* findAttribute(std::string_view attributeName) const;
    bool hasAttribute(std::string_view attributeName) const {
        return findAttribute(attributeName) != nullptr;
    }
    // The first attribute of that exact name, or the default.
    std::string attribute(std::string_view attributeName, std::string_view defaultValue = {}) const;
    // The attribute parsed as an integer (parseInt), or the default when absent or not a number.
    int intAttribute(std::string_view attributeName, int defaultValue) const;
};

struct XmlDocument {
    XmlElement root;
    bool hasRoot = false;
};

// Parses UTF-8 bytes. On failure returns false, leaves the document empty and stores the message followed by
// " (satir N)" in error, and the byte offset the message is about in errorOffset.
bool parseXml(const char* data, size_t size, XmlDocument& document, std::wstring* error = nullptr,
              size_t* errorOffset = nullptr);
inline bool parseXml(std::string_view text, XmlDocument& document, std::wstring* error = nullptr,
                     size_t* errorOffset = nullptr) {
    return parseXml(text.data(), text.size(), document, error, errorOffset);
}

// Escaping for output: attributes escape & < > " ' ; text escapes & < > only.
std::string xmlEscapeAttribute(std::string_view value);
std::string xmlEscapeText(std::string_view value);

} // namespace nv
