#include "skin/skin_lint.h"

#include "core/paths.h"
#include "core/text.h"
#include "core/values.h"
#include "readers/image.h"
#include "readers/xml.h"
#include "skin/locale.h"
#include "skin/package.h"
#include "skin/settings.h"
#include "skin/skin_model.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <set>
#include <span>

namespace nv {
namespace {

std::string_view textOf(const Bytes& bytes) {
    return std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

// Line numbers of byte offsets, from 1, after one pass over the text (skins come from strangers: a file of
// millions of lines must not cost a scan per finding). A lone CR ends a line too, as for the settings reader.
class LineIndex {
public:
    LineIndex() = default;
    explicit LineIndex(std::string_view text) {
        starts_.push_back(0);
        for (size_t i = 0; i < text.size(); ++i)
            if (text[i] == '\n' || (text[i] == '\r' && (i + 1 >= text.size() || text[i + 1] != '\n')))
                starts_.push_back(i + 1);
    }
    // 0 when there is no text to count in.
    int line(size_t offset) const {
        return int(std::upper_bound(starts_.begin(), starts_.end(), offset) - starts_.begin());
    }

private:
    std::vector<size_t> starts_;
};

constexpr std::string_view kRootAttributes[] = {"background_image", "feed_url", "feed_refresh"};
constexpr std::string_view kControlAttributes[] = {
    "type", "id",     "x",      "y",          "image",       "link_url",    "exec_path", "enable_on_complete",
    "text", "color",  "shadow", "bold",       "size",        "font",        "align",     "width",
    "w",    "height", "h",      "image_full", "image_empty", "feed_message"};

bool isKnown(std::span<const std::string_view> names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// Namespace declarations and qualified names belong to XML, not to the skin's schema.
bool isXmlMarkup(std::string_view name) {
    return name.find(':') != std::string_view::npos || name.starts_with("xmlns");
}

// A link_url written as a key ("URL_FORUM") rather than an address: letters, digits and underscores only.
bool looksLikeLocaleKey(std::string_view value) {
    bool letter = false;
    for (char c : value) {
        const bool isLetter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        if (!isLetter && !(c >= '0' && c <= '9') && c != '_') return false;
        letter |= isLetter;
    }
    return letter;
}

std::wstring size2(int w, int h) {
    return std::to_wstring(w) + L"x" + std::to_wstring(h);
}

std::wstring idOrIndex(const SkinControl& c) {
    return c.id.empty() ? L"#" + std::to_wstring(c.index) : utf8ToWide(c.id);
}

class Linter {
public:
    Linter(const SkinFileSet& files, const SkinModel& model, std::vector<LintFinding>& findings)
        : files_(files), model_(model), findings_(findings) {
        for (const SkinEntry& entry : files.entries)
            folded_.emplace(foldNameCase(utf8ToWide(entry.name)), &entry);
    }

    void skinXml(const XmlDocument& skin, std::string_view text) {
        lines_ = LineIndex(text);
        const XmlElement& root = skin.root;
        use("skin.xml");
        checkAttributes(root, kRootAttributes);
        referenceCompleted(root.attribute("background_image", "main"), root.tagBegin, true);

        std::map<std::string, int> firstLine; // id -> line of its first control
        size_t index = 0;
        for (const XmlElement& element : root.children) {
            if (element.name != "control") {
                add("skin.xml", element.tagBegin, "unknown-element",
                    L"Tanınmayan öğe yok sayılıyor: <" + utf8ToWide(element.name) +
                        L"> (kontroller <control> olarak yazılır)");
                continue;
            }
            if (index >= model_.controls.size()) break;
            const SkinControl& c = model_.controls[index++];
            checkControl(element, c);
            if (c.id.empty()) continue;
            auto [first, added] = firstLine.try_emplace(c.id, lines_.line(element.tagBegin));
            if (!added)
                add("skin.xml", element.tagBegin, "duplicate-id",
                    L"Aynı kimlik ikinci kez kullanılmış: " + utf8ToWide(c.id) + L" (ilki satır " +
                        std::to_wstring(first->second) + L")");
        }
    }

    void settings() {
        const Bytes* ini = files_.findFile("norvane.ini");
        if (!ini) return;
        use("norvane.ini");
        const std::string text = iniText(*ini);
        const std::map<std::string, int> lines = iniKeyLines(text);
        for (const auto& [key, value] : parseIni(text)) {
            auto it = lines.find(key);
            checkSetting(key, value, it != lines.end() ? it->second : 0);
        }
    }

    void companions() {
        use(model_.addressFile);
        use(model_.localeFile);
    }

    void unusedFiles() {
        for (const SkinEntry& entry : files_.entries)
            if (!used_.count(&entry.data.bytes()))
                addLine(entry.name, 0, "unused-file",
                        L"Hiçbir yerde kullanılmayan dosya: " + utf8ToWide(entry.name));
    }

    // Names a background that the loader could not find: only whether the case of a letter is to blame.
    void missingBackground(const XmlDocument& skin, std::string_view text) {
        lines_ = LineIndex(text);
        referenceCompleted(skin.root.attribute("background_image", "main"), skin.root.tagBegin, true);
    }

private:
    void add(std::string file, size_t offset, std::string code, std::wstring message) {
        addLine(std::move(file), lines_.line(offset), std::move(code), std::move(message));
    }
    void addLine(std::string file, int line, std::string code, std::wstring message) {
        findings_.push_back({std::move(file), line, std::move(code), std::move(message)});
    }

    void use(std::string_view name) {
        if (const Bytes* bytes = name.empty() ? nullptr : files_.findFile(name)) used_.insert(bytes);
    }

    // A picture looked up as the loader looks it up; a file found counts as used.
    bool found(const std::string& name) {
        const Bytes* bytes = name.empty() ? nullptr : files_.findFile(bareFileName(name));
        if (bytes) used_.insert(bytes);
        return bytes != nullptr;
    }

    // Why a picture of the set does not decode ("" when it does, or when the set lacks it): the loader only
    // says that the picture is missing, while the author sees the file right there. Each file is tried once.
    std::wstring decodeFailure(const std::string& name) {
        const Bytes* bytes = name.empty() ? nullptr : files_.findFile(bareFileName(name));
        if (!bytes) return {};
        auto [it, added] = decodeFailures_.try_emplace(bytes);
        if (added) {
            DecodedImage image;
            if (!decodeImage(bytes->data(), bytes->size(), image, &it->second) && it->second.empty())
                it->second = L"?";
        }
        return it->second;
    }

    // A picture that is there but does not decode, reported once per file.
    void undecodable(const std::string& name, size_t offset) {
        const std::wstring reason = decodeFailure(name);
        if (reason.empty() || !reportedUndecodable_.insert(files_.findFile(bareFileName(name))).second)
            return;
        add("skin.xml", offset, "unreadable-image",
            L"Görsel açılamadı: " + utf8ToWide(std::string(bareFileName(name))) + L" (" + reason + L")");
    }

    // For a name the set lacks: a file whose name differs only in the case of a letter beyond A-Z (which
    // lookups do not fold) is what the author meant. Says so (once per control: reported), counts it as used.
    bool caseVariant(const std::string& name, size_t offset, bool& reported) {
        const std::string_view bare = bareFileName(name);
        auto it = bare.empty() ? folded_.end() : folded_.find(foldNameCase(utf8ToWide(asciiLower(bare))));
        if (it == folded_.end()) return false;
        used_.insert(&it->second->data.bytes());
        if (!reported)
            add("skin.xml", offset, "image-case",
                L"Görsel adı dosyanınkinden yalnızca harf büyüklüğüyle ayrılıyor: " +
                    utf8ToWide(std::string(bare)) + L" (dosya: " + utf8ToWide(it->second->name) +
                    L"); adlarda yalnızca A-Z harflerinin büyüklüğü fark etmez");
        reported = true;
        return true;
    }

    // Background and gauge pictures: the name as written when it has a picture extension, else completed.
    void referenceCompleted(const std::string& name, size_t offset, bool quietWhenMissing) {
        if (name.empty()) return;
        std::vector<std::string> candidates;
        const bool hasExtension =
            std::any_of(std::begin(kSkinImageExtensions), std::end(kSkinImageExtensions),
                        [&](std::string_view ext) { return endsWithIgnoreCase(name, ext); });
        if (hasExtension) candidates.push_back(name);
        for (std::string_view ext : kSkinImageExtensions)
            candidates.push_back(name + std::string(ext));
        for (const std::string& candidate : candidates)
            if (found(candidate)) {
                undecodable(candidate, offset);
                return;
            }
        bool reported = false;
        for (const std::string& candidate : candidates)
            if (caseVariant(candidate, offset, reported)) return;
        if (!quietWhenMissing)
            add("skin.xml", offset, "missing-image", L"Görsel bulunamadı: " + utf8ToWide(name));
    }

    void checkAttributes(const XmlElement& element, std::span<const std::string_view> known) {
        for (const XmlAttribute& a : element.attributes)
            if (!isKnown(known, a.name) && !isXmlMarkup(a.name))
                add("skin.xml", a.valueBegin, "unknown-attribute",
                    L"Bilinmeyen öznitelik yok sayılıyor: " + utf8ToWide(a.name) + L"=\"" +
                        utf8ToWide(a.value) + L"\"");
    }

    void checkColor(const XmlElement& element, std::string_view name, const wchar_t* consequence) {
        const XmlAttribute* a = element.findAttribute(name);
        uint32_t ignored = 0;
        if (!a || parseColor(a->value, ignored)) return;
        add("skin.xml", a->valueBegin, "bad-color",
            L"Renk çözülemedi: " + utf8ToWide(a->name) + L"=\"" + utf8ToWide(a->value) + L"\"; " +
                consequence + L" (renkler #RRGGBB ya da #AARRGGBB)");
    }

    void checkPictures(const XmlElement& e, const SkinControl& c) {
        bool reported = false;
        switch (c.kind) {
        case ControlKind::Button: {
            // A missing up picture is the loader's own warning; only the state pictures' case is added here.
            const ButtonImageNames names = buttonImageNames(c.image);
            for (const std::string* name : {&names.up, &names.on, &names.down, &names.disabled})
                if (!found(*name))
                    caseVariant(*name, e.tagBegin, reported);
                else
                    undecodable(*name, e.tagBegin);
            // Without a usable up picture the loader takes "image" as written.
            if (c.imageUp.empty() || !files_.findFile(bareFileName(names.up)))
                if (!found(c.image)) caseVariant(c.image, e.tagBegin, reported);
            break;
        }
        case ControlKind::Gauge:
            referenceCompleted(e.hasAttribute("image_full") ? e.attribute("image_full") : c.image, e.tagBegin,
                               true);
            if (const XmlAttribute* empty = e.findAttribute("image_empty"))
                referenceCompleted(empty->value, empty->valueBegin, false);
            break;
        case ControlKind::Image:
            if (c.image.empty())
                add("skin.xml", e.tagBegin, "missing-image",
                    L"Görsel kontrolünün görseli (image) yok: " + idOrIndex(c));
            else if (found(c.image) && c.imageUp.empty()) {
                const std::wstring reason = decodeFailure(c.image);
                add("skin.xml", e.tagBegin, "missing-image",
                    L"Görsel açılamadı: " + utf8ToWide(c.image) +
                        (reason.empty() ? L"" : L" (" + reason + L")"));
            } else if (c.imageUp.empty() && !caseVariant(c.image, e.tagBegin, reported))
                add("skin.xml", e.tagBegin, "missing-image", L"Görsel bulunamadı: " + utf8ToWide(c.image));
            if (c.id == "FEED_LAMP") // the lamp's pictures for the other statuses are the skin's too
                for (const std::string& name : lampPictureNames(c.image))
                    if (found(name)) undecodable(name, e.tagBegin);
            break;
        default:
            break;
        }
    }

    void checkPlacement(const XmlElement& e, const SkinControl& c) {
        if (c.kind == ControlKind::Text && c.width <= 0)
            add("skin.xml", e.tagBegin, "no-size",
                L"Metin alanının genişliği yok (width ya da w): " + idOrIndex(c));
        if (c.kind == ControlKind::Iframe && (c.width <= 0 || c.height <= 0))
            add("skin.xml", e.tagBegin, "no-size",
                L"Haber alanının boyutu yok (width/w ve height/h): " + idOrIndex(c));
        if (c.kind == ControlKind::Unknown) return;

        // A control without a size still has a place: it is tested as one pixel there.
        const int64_t left = c.x, top = c.y;
        const int64_t right = left + std::max(c.width, 1), bottom = top + std::max(c.height, 1);
        const int64_t w = model_.width, h = model_.height;
        const std::wstring where = L" (" + std::to_wstring(c.x) + L"," + std::to_wstring(c.y) + L" " +
                                   size2(c.width, c.height) + L"; pencere " +
                                   size2(model_.width, model_.height) + L")";
        if (left >= w || top >= h || right <= 0 || bottom <= 0)
            add("skin.xml", e.tagBegin, "outside-window",
                L"Kontrol pencerenin tamamen dışında: " + idOrIndex(c) + where);
        else if (left < 0 || top < 0 || right > w || bottom > h)
            add("skin.xml", e.tagBegin, "outside-window",
                L"Kontrol pencereden taşıyor: " + idOrIndex(c) + where);
    }

    void checkControl(const XmlElement& e, const SkinControl& c) {
        if (c.kind == ControlKind::Unknown) {
            const std::string type = e.attribute("type");
            add("skin.xml", e.tagBegin, "unknown-type",
                (type.empty() ? L"Kontrolün türü (type) yok: " + idOrIndex(c)
                              : L"Bilinmeyen kontrol türü: " + utf8ToWide(type)) +
                    L"; çizilmez (türler: button, text, gauge, iframe, image)");
        }
        checkAttributes(e, kControlAttributes);
        checkColor(e, "color", L"varsayılan beyaz kullanılıyor");
        checkColor(e, "shadow", L"gölge çizilmiyor");
        if (!c.linkUrl.empty() && looksLikeLocaleKey(c.linkUrl) &&
            !model_.strings.count(asciiUpper(c.linkUrl)))
            add("skin.xml", e.findAttribute("link_url")->valueBegin, "missing-locale-key",
                L"link_url dil dosyasında olmayan bir anahtarı adlandırıyor: " + utf8ToWide(c.linkUrl) +
                    L"; bağlantı adres yerine bu metin olur");
        checkPictures(e, c);
        checkPlacement(e, c);
    }

    // Only the keys of the [patcher] section are read; a value that does not read takes the default, a number
    // out of range is clamped.
    void checkSetting(const std::string& key, const std::string& value, int line) {
        // As the file has it: the section is the file's only one.
        const std::wstring shown =
            utf8ToWide((key.starts_with("patcher.") ? key.substr(8) : key) + "=" + value);
        struct Known {
            std::string_view key;
            int high;         // numbers: 1..high; 0 for a switch or a text
            int defaultValue; // numbers and switches
        };
        static constexpr Known kKnown[] = {
            {"patcher.title", 0, -1},
            {"patcher.run_args", 0, -1},
            {"patcher.connections", kMaxConnections, 4},
            {"patcher.segment_mb", kMaxSegmentMb, 4},
            {"patcher.close_on_start", 0, 1},
            {"patcher.auto_start", 0, 0},
            {"patcher.allow_start_on_error", 0, 0},
            {"patcher.browser_emulation", 0, 1},
        };
        const Known* known = nullptr;
        for (const Known& k : kKnown)
            if (k.key == key) known = &k;
        if (!known) {
            addLine("norvane.ini", line, "unknown-setting",
                    L"Bilinmeyen ayar yok sayılıyor: " + utf8ToWide(key) +
                        L" ([patcher] bölümünde okunanlar: title, connections, segment_mb, close_on_start, "
                        L"auto_start, allow_start_on_error, browser_emulation, run_args)");
            return;
        }
        const std::wstring fallback =
            L"; varsayılan " + std::to_wstring(known->defaultValue) + L" kullanılıyor";
        if (known->high > 0) {
            const int parsed = parseInt(value, 0);
            if (parsed != parseInt(value, 1))
                addLine("norvane.ini", line, "setting-default", shown + L" bir sayı değil" + fallback);
            else if (parsed < 1 || parsed > known->high)
                addLine("norvane.ini", line, "setting-clamped",
                        shown + L" 1.." + std::to_wstring(known->high) + L" aralığında değil; " +
                            std::to_wstring(std::clamp(parsed, 1, known->high)) + L" kullanılıyor");
        } else if (known->defaultValue >= 0 && parseYesNo(value, false) != parseYesNo(value, true)) {
            addLine("norvane.ini", line, "setting-default",
                    shown + L" okunamadı (1/0, evet/hayır, yes/no, true/false, on/off)" + fallback);
        }
    }

    // The line of each key as the settings reader would file it (section.key, the last one winning).
    static std::map<std::string, int> iniKeyLines(std::string_view text) {
        std::map<std::string, int> lines;
        const LineIndex index(text);
        forEachIniEntry(text, [&](const std::string& key, std::string, size_t offset) {
            lines[key] = index.line(offset);
        });
        return lines;
    }

    const SkinFileSet& files_;
    const SkinModel& model_;
    std::vector<LintFinding>& findings_;
    LineIndex lines_; // of skin.xml, whose offsets the findings give
    std::set<const Bytes*> used_;
    std::multimap<std::wstring, const SkinEntry*> folded_;
    std::map<const Bytes*, std::wstring> decodeFailures_;
    std::set<const Bytes*> reportedUndecodable_;
};

} // namespace

std::wstring foldNameCase(std::wstring_view name) {
    std::wstring out(name);
    for (wchar_t& ch : out) {
        const uint32_t c = uint32_t(ch);
        uint32_t f = c;
        if (c >= 'A' && c <= 'Z')
            f = c + 32;
        else if (c == 0x130 || c == 0x131)
            f = 'i'; // Turkish İ and ı
        else if (c >= 0xC0 && c <= 0xDE && c != 0xD7)
            f = c + 32;
        else if (c == 0x178)
            f = 0xFF;
        else if ((c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E))
            f = (c & 1) ? c + 1 : c;
        else if (c >= 0x100 && c <= 0x177 && c != 0x138 && c != 0x149)
            f = (c & 1) ? c : c + 1;
        else if (c >= 0x391 && c <= 0x3AB && c != 0x3A2)
            f = c + 32;
        else if (c >= 0x410 && c <= 0x42F)
            f = c + 32;
        else if (c >= 0x400 && c <= 0x40F)
            f = c + 80;
        ch = wchar_t(f);
    }
    return out;
}

LintReport lintSkin(const SkinFileSet& files) {
    LintReport report;
    SkinModel model;
    LoadMessages messages;
    report.loaded = loadSkinModel(files, model, &messages);
    for (std::wstring& w : messages.lines())
        report.findings.push_back({"", 0, "loader", std::move(w)});
    // The loader takes any number of files; a package, and so a build, takes at most this many.
    if (files.entries.size() > kSkinPackageMaxEntries)
        report.findings.push_back(
            {"", 0, "too-many-files",
             L"Skinde " + std::to_wstring(files.entries.size()) + L" dosya var; pakete en çok " +
                 std::to_wstring(kSkinPackageMaxEntries) + L" dosya sığar, oluşturma başarısız olur"});

    XmlDocument skin;
    const Bytes* skinXml = files.findFile("skin.xml");
    const bool parsed = skinXml && parseXml(textOf(*skinXml), skin);
    Linter linter(files, model, report.findings);
    if (!report.loaded) {
        // The loader said why; a background named in another case than its file is worth explaining.
        if (parsed && !model.addressFile.empty()) linter.missingBackground(skin, textOf(*skinXml));
        return report;
    }
    linter.skinXml(skin, textOf(*skinXml));
    linter.companions();
    linter.settings();
    linter.unusedFiles();
    return report;
}

} // namespace nv
