// Skin XML comes from whoever made the skin: any bytes must end in a document or in one located message. On
// success the recorded source spans must be usable for in-place edits, since the build rewrites values
// through them: they lie inside the input, nest properly, and replacing a value's span with its escaped form
// must read back as the same value.

#include "readers/xml.h"

#include <algorithm>
#include <cstdlib>
#include <cwchar>
#include <string>
#include <string_view>
#include <vector>

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

// Checks every recorded span against the source and lists the elements in document order.
struct Walk {
    std::string_view source;
    std::vector<const nv::XmlElement*> elements;

    void element(const nv::XmlElement& e, size_t lower, size_t upper, int depth) {
        elements.push_back(&e);
        check(depth <= 64);
        check(lower <= e.tagBegin && e.tagBegin < e.nameEnd && e.nameEnd <= e.contentBegin);
        check(e.contentBegin <= e.contentEnd && e.contentEnd <= upper);
        check(source[e.tagBegin] == '<' &&
              source.substr(e.tagBegin + 1, e.nameEnd - e.tagBegin - 1) == e.name);
        check(source[e.contentBegin - 1] == '>');
        if (e.selfClosing) check(e.contentBegin == e.contentEnd && source[e.contentBegin - 2] == '/');
        if (!e.selfClosing) check(source.substr(e.contentEnd, 2) == "</");
        for (const nv::XmlAttribute& a : e.attributes) {
            check(e.nameEnd < a.valueBegin && a.valueBegin <= a.valueEnd && a.valueEnd < e.contentBegin);
            const char quote = source[a.valueBegin - 1];
            check((quote == '"' || quote == '\'') && source[a.valueEnd] == quote);
            const std::string_view raw = source.substr(a.valueBegin, a.valueEnd - a.valueBegin);
            if (raw.find('&') == std::string_view::npos) check(raw == a.value);
        }
        size_t next = e.contentBegin;
        for (const nv::XmlElement& child : e.children) {
            element(child, next, e.contentEnd, depth + 1);
            next = child.contentEnd; // siblings follow one another
        }
    }
};

// Replaces [begin, end) of the source with the replacement, parses the result and lists its elements; an edit
// of one value leaves the structure as it was, so the same index finds the same element.
std::vector<const nv::XmlElement*> reparse(std::string_view source, size_t begin, size_t end,
                                           const std::string& replacement, nv::XmlDocument& document) {
    std::string edited(source);
    edited.replace(begin, end - begin, replacement);
    check(nv::parseXml(edited, document));
    Walk walk{edited, {}};
    walk.element(document.root, 0, edited.size(), 0);
    return walk.elements;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view source(reinterpret_cast<const char*>(data), size);
    nv::XmlDocument document;
    std::wstring error;
    if (!nv::parseXml(source.data(), source.size(), document, &error)) {
        const size_t suffix = error.rfind(L" (satir ");
        check(suffix != std::wstring::npos && suffix > 0 && error.back() == L')');
        // The line is one of the input's: at most one more than its line feeds.
        const unsigned long line = std::wcstoul(error.c_str() + suffix + 8, nullptr, 10);
        check(line >= 1 && line <= 1 + size_t(std::count(source.begin(), source.end(), '\n')));
        check(!document.hasRoot && document.root.name.empty() && document.root.children.empty());
        return 0;
    }
    check(document.hasRoot);
    Walk walk{source, {}};
    walk.element(document.root, 0, size, 0);

    // The first attribute and the first childless element are edited the way the build edits them.
    bool attributeDone = false, textDone = false;
    for (size_t i = 0; i < walk.elements.size() && !(attributeDone && textDone); ++i) {
        const nv::XmlElement& e = *walk.elements[i];
        nv::XmlDocument edited;
        if (!attributeDone && !e.attributes.empty()) {
            const nv::XmlAttribute& a = e.attributes[0];
            const auto again =
                reparse(source, a.valueBegin, a.valueEnd, nv::xmlEscapeAttribute(a.value), edited);
            check(again.size() == walk.elements.size() && again[i]->attributes[0].value == a.value);
            attributeDone = true;
        }
        if (!textDone && !e.selfClosing && e.children.empty()) {
            const auto again =
                reparse(source, e.contentBegin, e.contentEnd, nv::xmlEscapeText(e.text), edited);
            check(again.size() == walk.elements.size() && again[i]->text == e.text);
            textDone = true;
        }
    }
    return 0;
}
