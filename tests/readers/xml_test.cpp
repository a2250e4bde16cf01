#include "readers/xml.h"

#include <gtest/gtest.h>

#include <string>

namespace nv {
namespace {

std::wstring parseError(std::string_view text) {
    XmlDocument document;
    std::wstring error;
    EXPECT_FALSE(parseXml(text, document, &error)) << text;
    EXPECT_FALSE(document.hasRoot);
    return error;
}

TEST(Xml, ReportsEachErrorWithItsLine) {
    const std::pair<const char*, const wchar_t*> cases[] = {
        {"<?xml version='1.0'?>\n<!-- yorum -->\n", L"Kok eleman yok (satir 3)"},
        {"<a/>\n\n<b/>", L"Birden fazla kok eleman (satir 3)"},
        {"<a/>\nmetin", L"Beklenmeyen metin (satir 2)"},
        {"<a/>\n<?pi\n", L"Kapanmamis yapi (satir 2)"},
        {"<!DOCTYPE a\n", L"Kapanmamis yapi (satir 1)"},
        {"<a>\n<!-- -->\n<!-- x->\n</a>", L"Kapanmamis yapi (satir 3)"},
        {"<1a/>", L"Gecersiz ad (satir 1)"},
        {"<\na/>", L"Gecersiz ad (satir 1)"}, // found on the line feed itself, which ends line 1
        {"<a\n b='1'\n -c='2'/>", L"Gecersiz ad (satir 3)"},
        {"<a>\n</", L"Gecersiz ad (satir 2)"},
        {"<a\nb='1'\n", L"Etiket kapanmadi (satir 3)"},
        {"<a b", L"Etiket kapanmadi (satir 1)"},
        {"<a b = ", L"Etiket kapanmadi (satir 1)"},
        {"<a/", L"Etiket kapanmadi (satir 1)"},
        {"<a\nb c='1'/>", L"Ozellikte '=' yok (satir 2)"},
        {"<a\nb=\"1/>\n</a>", L"Ozellik degeri kapanmadi (satir 2)"}, // where the value opens
        {"<a b='1\"/>", L"Ozellik degeri kapanmadi (satir 1)"},
        {"<a>\n<b/>\nmetin", L"Eleman kapanmadi (satir 3)"},
        {"<a>\n</ab>", L"Kapanis etiketi uyusmuyor (satir 2)"},
        {"<a>\n</a x>", L"Kapanis etiketi bozuk (satir 2)"},
        {"<a>\n<![CDATA[x]]</a>", L"CDATA kapanmadi (satir 2)"},
        {"<skin>\r\n\t<control type=\"button\"/>\r\n\t<control x=1/>\r\n</skin>\r\n",
         L"Ozellik degeri tirnaksiz (satir 3)"},
    };
    for (const auto& [text, error] : cases)
        EXPECT_EQ(parseError(text), error) << text;
}

TEST(Xml, AcceptsTheRootAndSixtyFourLevelsBelowIt) {
    auto nested = [](int elements) {
        std::string text;
        for (int i = 0; i < 2 * elements; ++i)
            text += i < elements ? "<e>\n" : "</e>";
        return text;
    };
    XmlDocument document;
    ASSERT_TRUE(parseXml(nested(65), document));
    EXPECT_EQ(parseError(nested(66)), L"Cok derin yapi (satir 66)");
    EXPECT_EQ(parseError(nested(200000)), L"Cok derin yapi (satir 66)"); // stops instead of recursing on
}

TEST(Xml, RefusesMoreThanAHundredThousandElements) {
    auto flat = [](int children) {
        std::string text = "<r>";
        for (int i = 0; i < children; ++i)
            text += i % 1000 == 999 ? "<c/>\n" : "<c/>";
        return text + "</r>";
    };
    XmlDocument document;
    ASSERT_TRUE(parseXml(flat(99999), document));
    EXPECT_EQ(document.root.children.size(), 99999u);
    EXPECT_EQ(parseError(flat(100000)), L"Cok fazla oge (satir 100)");
}

TEST(Xml, DecodesReferencesInTextAndAttributes) {
    const std::pair<const char*, const char*> cases[] = {
        {"&amp;&lt;&gt;&quot;&apos;&#65;&#x4a;&#x4A;&#x11F;", "&<>\"'AJJ\xC4\x9F"},
        {"&#x10FFFF;&#x110000;&#1114112;", "\xF4\x8F\xBF\xBF&#x110000;&#1114112;"},
        {"&nbsp;&AMP;&#X41;&#;&#x;&#1a;& amp; a & b &amp", "&nbsp;&AMP;&#X41;&#;&#x;&#1a;& amp; a & b &amp"},
        {"&&amp;&a&lt;", "&&&a<"},
        {"&#0000000065;&#00000000065;", "A&#00000000065;"}, // the ';' 12 bytes after the '&', then 13
    };
    for (const auto& [raw, decoded] : cases) {
        XmlDocument document;
        const std::string text = std::string("<a v='") + raw + "'>" + raw + "</a>";
        ASSERT_TRUE(parseXml(text, document)) << text;
        EXPECT_EQ(document.root.attribute("v"), decoded) << raw;
        EXPECT_EQ(document.root.text, decoded) << raw;
    }
}

TEST(Xml, KeepsTextInDocumentOrderAndFindsTheFirstAttributeOfAnExactName) {
    XmlDocument document;
    ASSERT_TRUE(
        parseXml("<?xml version=\"1.0\"?>\r\n<!DOCTYPE skin>\n<!-- bas -->\n<skin>\n\t<a>x &amp; "
                 "<![CDATA[<b>&amp;</b>]]> y<!-- not -->z<?pi a?></a>\n\t<b/>\n</skin>\n<!-- son --><?pi?>\n",
                 document));
    EXPECT_EQ(document.root.text, "\n\t\n\t\n");
    ASSERT_EQ(document.root.children.size(), 2u);
    EXPECT_EQ(document.root.children[0].text, "x & <b>&amp;</b> yz");

    ASSERT_TRUE(parseXml("<c x='12' x=\"3\" y=\" 7 \"z='a\"b' n:.-_1=\"\"\xC4\x9F=\"\xC3\xBC\"/>", document));
    const XmlElement& c = document.root;
    EXPECT_EQ(c.attribute("x"), "12");
    EXPECT_EQ(c.attribute("X", "yok"), "yok");
    EXPECT_EQ(c.attribute("z") + c.attribute("n:.-_1", "yok") + c.attribute("\xC4\x9F"), "a\"b\xC3\xBC");
    EXPECT_EQ(c.intAttribute("y", 0), 7);
    EXPECT_EQ(c.intAttribute("z", 5), 5);
    EXPECT_EQ(c.intAttribute("w", 5), 5);
}

TEST(Xml, ReadsOnlyTheGivenBytesAndEmptiesTheDocumentOnFailure) {
    XmlDocument document;
    ASSERT_TRUE(parseXml("<a/>junk", 4, document)); // the bytes past the size are never looked at
    EXPECT_FALSE(parseXml("<a/>junk", 5, document));
    EXPECT_TRUE(document.root.name.empty());
    EXPECT_FALSE(parseXml(nullptr, 0, document));
}

// Writers edit files in place through these positions, so each must point at exactly the bytes it names.
TEST(Xml, RecordsTheSourceSpansForInPlaceEditsAndEscapesTheirValues) {
    const std::string source =
        "\xEF\xBB\xBF<skin feed_url=\"http://a/?x=1&amp;y=2\">\r\n"
        "\t<control type=\"button\" link_url = 'LAUNCHER_NEW_URL'/>\r\n"
        "\t<string key=\"NV_NEWS\" >Haberler &lt;1&gt;</string >\r\n\t<empty></empty>\r\n</skin>";
    XmlDocument document;
    ASSERT_TRUE(parseXml(source, document)); // a UTF-8 byte-order mark is skipped, positions stay the file's
    auto span = [&](size_t begin, size_t end) { return source.substr(begin, end - begin); };
    const XmlElement& root = document.root;
    ASSERT_EQ(root.children.size(), 3u);
    EXPECT_EQ(root.tagBegin, 3u);
    EXPECT_EQ(span(root.attributes[0].valueBegin, root.attributes[0].valueEnd), "http://a/?x=1&amp;y=2");
    EXPECT_EQ(span(root.children[1].contentBegin, root.children[1].contentEnd), "Haberler &lt;1&gt;");
    EXPECT_EQ(span(root.contentEnd, source.size()), "</skin>");
    for (const XmlElement& e : {root, root.children[0], root.children[1], root.children[2]}) {
        EXPECT_EQ(span(e.tagBegin, e.nameEnd), "<" + e.name);
        EXPECT_EQ(source.substr(e.contentBegin - 2, 2) == "/>", e.selfClosing) << e.name;
        EXPECT_EQ(e.contentBegin == e.contentEnd, e.selfClosing || e.name == "empty") << e.name;
    }
    EXPECT_EQ(parseError("\xEF\xBB<a/>"), L"Beklenmeyen metin (satir 1)"); // only the whole mark is skipped
    EXPECT_EQ(xmlEscapeAttribute("a&b<c>d\"e'f\xC4\x9F"), "a&amp;b&lt;c&gt;d&quot;e&apos;f\xC4\x9F");
    EXPECT_EQ(xmlEscapeText("a&b<c>d\"e'f"), "a&amp;b&lt;c&gt;d\"e'f");
}

} // namespace
} // namespace nv
