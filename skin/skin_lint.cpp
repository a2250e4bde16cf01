#include "skin/skin_lint.h"

#include "core/cp437.h"
#include "core/paths.h"
#include "core/text.h"
#include "core/values.h"
#include "readers/image.h"
#include "readers/xml.h"
#include "skin/locale.h"
#include "skin/package.h"
#include "skin/settings.h"
#include "skin/skin_images.h"
#include "skin/skin_model.h"
#include "skin/skin_schema.h"

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

// Line and column numbers of byte offsets, from 1, after one pass over the text (skins come from strangers: a
// file of millions of lines, or of one line of megabytes, must not cost a scan per finding). A lone CR ends a
// line too, as for the settings reader. Columns count characters (UTF-8 sequences), as editors do.
class LineIndex {
public:
    LineIndex() = default;
    explicit LineIndex(std::string_view text) {
        starts_.push_back(0);
        size_t characters = 0;
        for (size_t i = 0; i < text.size(); ++i) {
            if (i % kStep == 0) checkpoints_.push_back(characters);
            if ((uint8_t(text[i]) & 0xC0) != 0x80) ++characters;
            if (text[i] == '\n' || (text[i] == '\r' && (i + 1 >= text.size() || text[i + 1] != '\n')))
                starts_.push_back(i + 1);
        }
        text_ = text;
    }
    // 0 when there is no text to count in.
    int line(size_t offset) const {
        return int(std::upper_bound(starts_.begin(), starts_.end(), offset) - starts_.begin());
    }
    int column(size_t offset) const {
        const int at = line(offset);
        if (at == 0) return 0;
        return int(charactersBefore(offset) - charactersBefore(starts_[size_t(at) - 1])) + 1;
    }

private:
    static constexpr size_t kStep = 256;

    size_t charactersBefore(size_t offset) const {
        offset = std::min(offset, text_.size());
        size_t from = offset / kStep * kStep;
        size_t count = from / kStep < checkpoints_.size() ? checkpoints_[from / kStep] : 0;
        for (; from < offset; ++from)
            if ((uint8_t(text_[from]) & 0xC0) != 0x80) ++count;
        return count;
    }

    std::string_view text_;
    std::vector<size_t> starts_;
    std::vector<size_t> checkpoints_; // characters before every kStep-th byte
};

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

// A name is valid UTF-8 with at least one sequence beyond ASCII.
bool isUtf8BeyondAscii(std::string_view bytes) {
    bool beyond = false;
    for (size_t i = 0; i < bytes.size();) {
        const uint8_t b = uint8_t(bytes[i]);
        const size_t length = b < 0x80           ? 1
                              : (b >> 5) == 0x6  ? 2
                              : (b >> 4) == 0xE  ? 3
                              : (b >> 3) == 0x1E ? 4
                                                 : 0;
        if (length == 0 || i + length > bytes.size()) return false;
        uint32_t cp = length == 1 ? b : b & (0x7F >> length);
        for (size_t k = 1; k < length; ++k) {
            const uint8_t c = uint8_t(bytes[i + k]);
            if ((c & 0xC0) != 0x80) return false;
            cp = cp << 6 | (c & 0x3F);
        }
        static constexpr uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
        if (cp < kLeast[length] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return false;
        beyond |= length > 1;
        i += length;
    }
    return beyond;
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
            control_ = controlName(c.id, c.index);
            checkControl(element, c);
            if (!c.id.empty()) {
                auto [first, added] = firstLine.try_emplace(c.id, lines_.line(element.tagBegin));
                if (!added)
                    add("skin.xml", element.tagBegin, "duplicate-id",
                        L"Aynı kimlik ikinci kez kullanılmış: " + utf8ToWide(c.id) + L" (ilki satır " +
                            std::to_wstring(first->second) + L")");
            }
            control_.clear();
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

    // A file nothing uses; one whose name an archiver garbled is explained instead (it is why nothing finds
    // it).
    void unusedFiles() {
        for (const SkinEntry& entry : files_.entries) {
            const std::string meant = utf8ReadAsCp437(entry.name);
            if (!meant.empty())
                addLine(
                    entry.name, 0, "zip-name-encoding",
                    L"Dosya adı zip'e UTF-8 olarak, zip'in UTF-8 işareti olmadan yazılmış; kod sayfası 437 "
                    L"ile okunuyor. Asıl adı: " +
                        utf8ToWide(meant) +
                        L". Zip'i 7-Zip ile ya da adları UTF-8 işaretiyle yazan bir araçla yeniden "
                        L"oluşturun");
            else if (!used_.count(&entry.data.bytes()))
                addLine(entry.name, 0, "unused-file",
                        L"Hiçbir yerde kullanılmayan dosya: " + utf8ToWide(entry.name));
        }
    }

    // A languagePath that names a file the skin lacks: the loader quietly takes another locale file, or none.
    void languagePath() {
        const Bytes* address = model_.addressFile.empty() ? nullptr : files_.findFile(model_.addressFile);
        XmlDocument document;
        if (!address || !parseXml(textOf(*address), document)) return;
        const XmlAttribute* path = document.root.findAttribute("languagePath");
        if (!path || path->value.empty() || files_.findFile(path->value)) return;
        const LineIndex lines(textOf(*address));
        addLine(model_.addressFile, lines.line(path->valueBegin), "missing-locale-file",
                L"languagePath skinde olmayan bir dosyayı adlandırıyor: " + utf8ToWide(path->value) + L"; " +
                    (model_.localeFile.empty() ? std::wstring(L"yerleşik metinler kullanılıyor")
                                               : utf8ToWide(model_.localeFile) + L" kullanılıyor"));
        findings_.back().column = lines.column(path->valueBegin);
    }

    // The loader's warning about a control's picture, placed at the control (the loader knows no places).
    void placeLoaderWarning(const std::wstring& warning, size_t offset) {
        for (LintFinding& f : findings_)
            if (f.code == "loader" && f.file.empty() && f.message == warning) {
                f.file = "skin.xml";
                f.line = lines_.line(offset);
                f.column = lines_.column(offset);
                f.control = control_;
                return;
            }
    }

    // Names a background that the loader could not find: only whether the case of a letter is to blame.
    void missingBackground(const XmlDocument& skin, std::string_view text) {
        lines_ = LineIndex(text);
        referenceCompleted(skin.root.attribute("background_image", "main"), skin.root.tagBegin, true);
    }

private:
    void add(std::string file, size_t offset, std::string code, std::wstring message) {
        addLine(std::move(file), lines_.line(offset), std::move(code), std::move(message));
        findings_.back().column = lines_.column(offset);
    }
    void addLine(std::string file, int line, std::string code, std::wstring message) {
        findings_.push_back({std::move(file), line, std::move(code), std::move(message), 0, control_});
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
        if (added) it->second = pictureFailure(*bytes);
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
            if (c.imageUp.empty())
                placeLoaderWarning(L"Buton görseli yok: " + utf8ToWide(names.base + "_up"), e.tagBegin);
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
        case ControlKind::Gauge: {
            const std::string full = e.hasAttribute("image_full") ? e.attribute("image_full") : c.image;
            if (c.imageFull.empty())
                placeLoaderWarning(L"Gauge görseli yok: " + utf8ToWide(full), e.tagBegin);
            referenceCompleted(full, e.tagBegin, true);
            if (const XmlAttribute* empty = e.findAttribute("image_empty"))
                referenceCompleted(empty->value, empty->valueBegin, false);
            break;
        }
        case ControlKind::Image:
            if (c.image.empty())
                add("skin.xml", e.tagBegin, "missing-image", L"Görsel kontrolünün görseli (image) yok");
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
            add("skin.xml", e.tagBegin, "no-size", L"Metin alanının genişliği yok (width ya da w)");
        if (c.kind == ControlKind::Iframe && (c.width <= 0 || c.height <= 0))
            add("skin.xml", e.tagBegin, "no-size", L"Haber alanının boyutu yok (width/w ve height/h)");
        if (c.kind == ControlKind::Unknown) return;

        // A control without a size still has a place: it is tested as one pixel there.
        const int64_t left = c.x, top = c.y;
        const int64_t right = left + std::max(c.width, 1), bottom = top + std::max(c.height, 1);
        const int64_t w = model_.width, h = model_.height;
        const std::wstring where = L" (" + std::to_wstring(c.x) + L"," + std::to_wstring(c.y) + L" " +
                                   size2(c.width, c.height) + L"; pencere " +
                                   size2(model_.width, model_.height) + L")";
        if (left >= w || top >= h || right <= 0 || bottom <= 0)
            add("skin.xml", e.tagBegin, "outside-window", L"Kontrol pencerenin tamamen dışında" + where);
        else if (left < 0 || top < 0 || right > w || bottom > h)
            add("skin.xml", e.tagBegin, "outside-window", L"Kontrol pencereden taşıyor" + where);
    }

    void checkControl(const XmlElement& e, const SkinControl& c) {
        if (c.kind == ControlKind::Unknown) {
            const std::string type = e.attribute("type");
            add("skin.xml", e.tagBegin, "unknown-type",
                (type.empty() ? std::wstring(L"Kontrolün türü (type) yok")
                              : L"Bilinmeyen kontrol türü: " + utf8ToWide(type)) +
                    L"; çizilmez (türler: button, text, gauge, iframe, image)");
        }
        const ControlRole* role = controlRole(c.id);
        if (role && c.kind != ControlKind::Unknown && c.kind != role->kind)
            add("skin.xml", e.tagBegin, "wrong-kind",
                std::wstring(L"Bu kimlik ") + utf8ToWide(controlKindName(role->kind)) +
                    L" türündeki kontrolde anlam taşır; " + utf8ToWide(controlKindName(c.kind)) +
                    L" olarak patcher ona bir şey yapmaz");
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
        const SettingKey* known = nullptr;
        for (const SettingKey& k : kSettingKeys)
            if (key.starts_with("patcher.") && k.key == std::string_view(key).substr(8)) known = &k;
        if (!known) {
            std::wstring names;
            for (const SettingKey& k : kSettingKeys)
                names += (names.empty() ? L"" : L", ") + utf8ToWide(k.key);
            addLine("norvane.ini", line, "unknown-setting",
                    L"Bilinmeyen ayar yok sayılıyor: " + utf8ToWide(key) +
                        L" ([patcher] bölümünde okunanlar: " + names + L")");
            return;
        }
        const std::wstring fallback = L"; varsayılan " + utf8ToWide(known->defaultText) + L" kullanılıyor";
        if (known->kind == SettingKind::Number) {
            const int parsed = parseInt(value, 0);
            const std::wstring range = std::to_wstring(known->low) + L".." + std::to_wstring(known->high);
            if (parsed != parseInt(value, 1))
                addLine("norvane.ini", line, "setting-default", shown + L" bir sayı değil" + fallback);
            else if (parsed < known->low || parsed > known->high)
                addLine("norvane.ini", line, "setting-clamped",
                        shown + L" " + range + L" aralığında değil; " +
                            std::to_wstring(std::clamp(parsed, known->low, known->high)) + L" kullanılıyor");
        } else if (known->kind == SettingKind::Switch &&
                   parseYesNo(value, false) != parseYesNo(value, true)) {
            addLine("norvane.ini", line, "setting-default",
                    shown + L" okunamadı (1/0, evet/hayir, yes/no, true/false, on/off)" + fallback);
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
    LineIndex lines_;      // of skin.xml, whose offsets the findings give
    std::wstring control_; // the control being checked, named in its findings
    std::set<const Bytes*> used_;
    std::multimap<std::wstring, const SkinEntry*> folded_;
    std::map<const Bytes*, std::wstring> decodeFailures_;
    std::set<const Bytes*> reportedUndecodable_;
};

// A companion or skin.xml that does not parse: the loader's warning becomes a finding at the place where the
// reader stopped, in the reader's words.
void placeParseError(const SkinFileSet& files, const std::string& name, std::vector<LintFinding>& findings) {
    const Bytes* bytes = name.empty() ? nullptr : files.findFile(name);
    XmlDocument document;
    std::wstring error;
    size_t offset = 0;
    if (!bytes || parseXml(textOf(*bytes), document, &error, &offset)) return;
    const std::wstring said = utf8ToWide(name) + L" okunamadı: " + error;
    for (LintFinding& f : findings)
        if (f.code == "loader" && f.file.empty() && f.message == said) {
            const LineIndex lines(textOf(*bytes));
            f = {name, lines.line(offset), "parse-error", L"okunamadı: " + error, lines.column(offset), {}};
            return;
        }
}

} // namespace

std::wstring controlName(std::string_view id, uint32_t index) {
    return id.empty() ? L"kontrol #" + std::to_wstring(uint64_t(index) + 1) : utf8ToWide(id);
}

std::string utf8ReadAsCp437(std::string_view name) {
    std::string bytes;
    for (wchar_t c : utf8ToWide(name)) {
        uint8_t byte = 0;
        if (!cp437Byte(c, byte)) return {};
        bytes.push_back(char(byte));
    }
    return isUtf8BeyondAscii(bytes) ? bytes : std::string();
}

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
        report.findings.push_back({"", 0, "loader", std::move(w), 0, {}});
    // The loader takes any number of files; a package, and so a build, takes at most this many.
    if (files.entries.size() > kSkinPackageMaxEntries)
        report.findings.push_back(
            {"",
             0,
             "too-many-files",
             L"Skinde " + std::to_wstring(files.entries.size()) + L" dosya var; pakete en çok " +
                 std::to_wstring(kSkinPackageMaxEntries) + L" dosya sığar, oluşturma başarısız olur",
             0,
             {}});

    for (const std::string& name : {findAddressFile(files), model.localeFile, std::string("skin.xml")})
        placeParseError(files, name, report.findings);

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
    linter.languagePath();
    linter.settings();
    linter.unusedFiles();
    return report;
}

} // namespace nv
