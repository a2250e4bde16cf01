#include "readers/xml.h"

#include <gtest/gtest.h>

#include <functional>
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
    struct Case {
        const char* text;
        const wchar_t* error;
    } cases[] = {
        {"", L"Kok eleman yok (satir 1)"},
        {"<?xml version='1.0'?>\n<!-- yorum -->", L"Kok eleman yok (satir 2)"},
        {"<?xml version='1.0'?>\n<!-- yorum -->\n", L"Kok eleman yok (satir 3)"},
        {"<a/>\n\n<b/>", L"Birden fazla kok eleman (satir 3)"},
        {"<a/>\nmetin", L"Beklenmeyen metin (satir 2)"},
        {"<a/>\n<?pi\n", L"Kapanmamis yapi (satir 2)"},
        {"<!DOCTYPE a\n", L"Kapanmamis yapi (satir 1)"},
        {"<a>\n<!-- -->\n<!-- x->\n</a>", L"Kapanmamis yapi (satir 3)"},
        {"<a>\n<?pi?>\n<? x\n</a>", L"Kapanmamis yapi (satir 3)"},
        {"<1a/>", L"Gecersiz ad (satir 1)"},
        {"<", L"Gecersiz ad (satir 1)"},
        {"<\na/>", L"Gecersiz ad (satir 1)"}, // found on the line feed itself, which ends line 1
        {"<a\n b='1'\n -c='2'/>", L"Gecersiz ad (satir 3)"},
        {"<a b='1' / >", L"Gecersiz ad (satir 1)"},
        {"<a>\n</ a>", L"Gecersiz ad (satir 2)"},
        {"<a>\n</", L"Gecersiz ad (satir 2)"},
        {"<a", L"Etiket kapanmadi (satir 1)"},
        {"<a\nb='1'\n", L"Etiket kapanmadi (satir 3)"},
        {"<a b", L"Etiket kapanmadi (satir 1)"},
        {"<a b = ", L"Etiket kapanmadi (satir 1)"},
        {"<a/", L"Etiket kapanmadi (satir 1)"},
        {"<a b/>", L"Ozellikte '=' yok (satir 1)"},
        {"<a\nb c='1'/>", L"Ozellikte '=' yok (satir 2)"},
        {"<a b=1/>", L"Ozellik degeri tirnaksiz (satir 1)"},
        {"<a\nb=\"1/>\n</a>", L"Ozellik degeri kapanmadi (satir 2)"},
        {"<a b='1\"/>", L"Ozellik degeri kapanmadi (satir 1)"},
        {"<a>", L"Eleman kapanmadi (satir 1)"},
        {"<a>\n<b/>\nmetin", L"Eleman kapanmadi (satir 3)"},
        {"<a>\n</b>", L"Kapanis etiketi uyusmuyor (satir 2)"},
        {"<a></ab>", L"Kapanis etiketi uyusmuyor (satir 1)"},
        {"<a><b>\n</a></b>", L"Kapanis etiketi uyusmuyor (satir 2)"},
        {"<a>\n</a x>", L"Kapanis etiketi bozuk (satir 2)"},
        {"<a></a", L"Kapanis etiketi bozuk (satir 1)"},
        {"<a>\n<![CDATA[x]]</a>", L"CDATA kapanmadi (satir 2)"},
        {"<skin>\r\n\t<control type=\"button\"/>\r\n\t<control x=1/>\r\n</skin>\r\n",
         L"Ozellik degeri tirnaksiz (satir 3)"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(parseError(c.text), c.error) << c.text;
}

std::string nested(int elements) {
    std::string text;
    for (int i = 0; i < elements; ++i)
        text += "<e>\n";
    for (int i = 0; i < elements; ++i)
        text += "</e>";
    return text;
}

TEST(Xml, AcceptsTheRootAndSixtyFourLevelsBelowIt) {
    XmlDocument document;
    ASSERT_TRUE(parseXml(nested(65), document));
    int depth = 0;
    for (const XmlElement* e = &document.root; !e->children.empty(); e = &e->children[0])
        ++depth;
    EXPECT_EQ(depth, 64);
    EXPECT_EQ(parseError(nested(66)), L"Cok derin yapi (satir 66)");
    // Far deeper input stops at the limit instead of recursing on.
    EXPECT_EQ(parseError(nested(200000)), L"Cok derin yapi (satir 66)");
}

TEST(Xml, DecodesReferencesInTextAndAttributes) {
    struct Case {
        const char* raw;
        const char* decoded;
    } cases[] = {
        {"&amp;&lt;&gt;&quot;&apos;", "&<>\"'"},
        {"&#65;&#x42;&#x4a;&#x4A;", "ABJJ"},
        {"&#x11F;", "\xC4\x9F"},
        {"&#287;&#x10FFFF;", "\xC4\x9F\xF4\x8F\xBF\xBF"},
        {"&#x110000;&#1114112;", "&#x110000;&#1114112;"},
        {"&nbsp;&AMP;&X41;&#X41;&#;&#x;&#1a;& amp;", "&nbsp;&AMP;&X41;&#X41;&#;&#x;&#1a;& amp;"},
        {"a & b &amp", "a & b &amp"},
        {"&&amp;&a&lt;", "&&&a<"},
        {"&#0000000065;", "A"},               // ';' 12 bytes after the '&'
        {"&#00000000065;", "&#00000000065;"}, // 13 bytes: not a reference
    };
    for (const Case& c : cases) {
        XmlDocument document;
        const std::string text = std::string("<a v='") + c.raw + "'>" + c.raw + "</a>";
        ASSERT_TRUE(parseXml(text, document)) << text;
        EXPECT_EQ(document.root.attribute("v"), c.decoded) << c.raw;
        EXPECT_EQ(document.root.text, c.decoded) << c.raw;
    }
}

TEST(Xml, KeepsTextAndCdataInDocumentOrderAndSkipsMarkup) {
    const char* text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<!DOCTYPE skin>\n<!-- bas -->\n"
                       "<skin>\n\t<a>x &amp; <![CDATA[<b>&amp;</b>]]> y<!-- not -->z<?pi a?></a>\n"
                       "\t<b/><!-- c -->\n</skin>\n<!-- son --><?pi?>\n";
    XmlDocument document;
    ASSERT_TRUE(parseXml(text, document));
    EXPECT_EQ(document.root.name, "skin");
    EXPECT_EQ(document.root.text, "\n\t\n\t\n");
    ASSERT_EQ(document.root.children.size(), 2u);
    EXPECT_EQ(document.root.children[0].text, "x & <b>&amp;</b> yz");
    EXPECT_EQ(document.root.children[1].name, "b");
}

TEST(Xml, LooksAttributesUpByExactNameFirstOneWinning) {
    XmlDocument document;
    ASSERT_TRUE(parseXml("<c x='12' x=\"13\" y = \" 7 \"z='abc' s='say \"hi\"' d=\"it's\" n:s.-_1=\"\"\n"
                         "\xC4\x9F=\"\xC3\xBC\"/>",
                         document));
    const XmlElement& c = document.root;
    ASSERT_EQ(c.attributes.size(), 8u);
    EXPECT_EQ(c.attributes[1].value, "13");
    EXPECT_EQ(c.attribute("x"), "12");
    EXPECT_EQ(c.attribute("X", "yok"), "yok");
    EXPECT_EQ(c.attribute("s"), "say \"hi\"");
    EXPECT_EQ(c.attribute("d"), "it's");
    EXPECT_TRUE(c.hasAttribute("n:s.-_1"));
    EXPECT_EQ(c.attribute("\xC4\x9F"), "\xC3\xBC");
    EXPECT_EQ(c.intAttribute("x", 0), 12);
    EXPECT_EQ(c.intAttribute("y", 0), 7);
    EXPECT_EQ(c.intAttribute("z", 5), 5);
    EXPECT_EQ(c.intAttribute("w", 5), 5);
}

TEST(Xml, ReadsOnlyTheGivenBytesAndEmptiesTheDocumentOnFailure) {
    XmlDocument document;
    ASSERT_TRUE(parseXml("<a>x</a>", document));
    EXPECT_FALSE(parseXml("<a/>junk", 5, document)); // the bytes past the size are never looked at
    EXPECT_FALSE(document.hasRoot);
    EXPECT_TRUE(document.root.name.empty() && document.root.text.empty());
    ASSERT_TRUE(parseXml("<a/>junk", 4, document));
    EXPECT_EQ(document.root.name, "a");
    EXPECT_FALSE(parseXml(nullptr, 0, document));
}

TEST(Xml, SkipsAUtf8ByteOrderMarkButKeepsPositionsInTheWholeText) {
    const std::string text = "\xEF\xBB\xBF<urls remoteConfigPath=\"a\"/>";
    XmlDocument document;
    ASSERT_TRUE(parseXml(text, document));
    EXPECT_EQ(document.root.tagBegin, 3u);
    const XmlAttribute& value = document.root.attributes.at(0);
    EXPECT_EQ(text.substr(value.valueBegin, value.valueEnd - value.valueBegin), "a");
    std::wstring error;
    EXPECT_FALSE(parseXml("\xEF\xBB<a/>", document, &error)) << "only the whole mark is skipped";
    EXPECT_EQ(error, L"Beklenmeyen metin (satir 1)");
}

TEST(Xml, EscapesAttributesAndTextForOutput) {
    EXPECT_EQ(xmlEscapeAttribute("a&b<c>d\"e'f\xC4\x9F"), "a&amp;b&lt;c&gt;d&quot;e&apos;f\xC4\x9F");
    EXPECT_EQ(xmlEscapeText("a&b<c>d\"e'f"), "a&amp;b&lt;c&gt;d\"e'f");
}

void forEachElement(const XmlElement& e, const std::function<void(const XmlElement&)>& visit) {
    visit(e);
    for (const XmlElement& child : e.children)
        forEachElement(child, visit);
}

const char* const kSkin =
    "<?xml version=\"1.0\"?>\r\n<skin background_image='main' feed_url=\"http://a/?x=1&amp;y=2\">\r\n"
    "\t<control type=\"button\" link_url = 'LAUNCHER_NEW_URL'/>\r\n"
    "\t<string key=\"NV_NEWS\" >Haberler &lt;1&gt;</string >\r\n\t<empty></empty>\r\n</skin>\r\n";

TEST(Xml, RecordsTheSourceSpansOfTagsContentsAndValues) {
    const std::string source = kSkin;
    XmlDocument document;
    ASSERT_TRUE(parseXml(source, document));
    auto span = [&](size_t begin, size_t end) { return source.substr(begin, end - begin); };
    const XmlElement& root = document.root;
    EXPECT_EQ(span(root.attributes[1].valueBegin, root.attributes[1].valueEnd), "http://a/?x=1&amp;y=2");
    EXPECT_EQ(span(root.children[1].contentBegin, root.children[1].contentEnd), "Haberler &lt;1&gt;");
    EXPECT_EQ(span(root.children[0].tagBegin, root.children[0].contentBegin),
              "<control type=\"button\" link_url = 'LAUNCHER_NEW_URL'/>");
    forEachElement(root, [&](const XmlElement& e) {
        EXPECT_EQ(span(e.tagBegin, e.nameEnd), "<" + e.name);
        EXPECT_EQ(source[e.contentBegin - 1], '>');
        EXPECT_EQ(source[e.contentBegin - 2] == '/', e.selfClosing);
        if (!e.selfClosing) {
            EXPECT_EQ(source.substr(e.contentEnd, e.name.size() + 2), "</" + e.name);
        }
        if (e.selfClosing || e.name == "empty") {
            EXPECT_EQ(e.contentBegin, e.contentEnd);
        }
        for (const XmlAttribute& a : e.attributes) {
            EXPECT_TRUE(source[a.valueBegin - 1] == '"' || source[a.valueBegin - 1] == '\'');
            EXPECT_EQ(source[a.valueEnd], source[a.valueBegin - 1]);
        }
    });
}

TEST(Xml, ReplacingARecordedSpanChangesOnlyThatValue) {
    const std::string source = kSkin;
    XmlDocument before;
    ASSERT_TRUE(parseXml(source, before));
    const XmlAttribute& link = before.root.children[0].attributes[1];
    const XmlElement& news = before.root.children[1];
    const std::string newLink = "http://x/?a=1&b='2'", newText = "Yeni <haber> & \"daha\"";
    std::string edited = source;
    // The later span first, so that the earlier one's offsets still hold.
    edited.replace(news.contentBegin, news.contentEnd - news.contentBegin, xmlEscapeText(newText));
    edited.replace(link.valueBegin, link.valueEnd - link.valueBegin, xmlEscapeAttribute(newLink));
    XmlDocument after;
    ASSERT_TRUE(parseXml(edited, after));
    EXPECT_EQ(after.root.children[0].attribute("link_url"), newLink);
    EXPECT_EQ(after.root.children[1].text, newText);
    EXPECT_EQ(after.root.children[0].attribute("type"), "button");
    EXPECT_EQ(after.root.attribute("feed_url"), "http://a/?x=1&y=2");
    EXPECT_EQ(edited.substr(0, link.valueBegin), source.substr(0, link.valueBegin));
    EXPECT_EQ(edited.substr(edited.size() - (source.size() - news.contentEnd)),
              source.substr(news.contentEnd));
}

} // namespace
} // namespace nv
