#pragma once
// The keys of a recipe, one row each: how the value is named in the session file and on nvbuild's command
// line, its type and range, its help line, the builder window's edit control that shows it, and when a
// restored session applies it. The session file's writing and reading, nvbuild's options and their help, the
// window's field binding and the build's inputs are all made from this table, so a new setting is one row
// here plus its use.
//
// The rows are in the session file's fixed order; keys that are never written (a secret, the command line's
// own) sit beside their relatives.

#include "packager/signing.h"
#include "recipe/recipe.h"
#include "skin/settings.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nv {

enum class KeyType {
    Text,   // free text (an address, a path, a name)
    Count,  // a whole number within a range
    Flag,   // on or off: "1" or "0"
    Links,  // the button links: one "link.<number>.<id>" line each, a repeatable ID=URL option
    Choice, // one of a few names ("pfx", "store"...), kept as its place among them
    List,   // several words (addresses) on one line, blanks between them; a repeatable option adds one each
};

// When a restored session applies a key, in the order the builder restores them.
enum class RestoreStep {
    Identity,   // first, whatever else happens: the file texts and the certificate's texts
    Icon,       // when its picture still exists
    Skin,       // when the skin source still exists; it is loaded, and fills the skin's values
    SkinValues, // only when the skin came back: they override what the skin supplied
    Output,     // the output place
    Signing,    // switched on by exactly "1", never off
    Never,      // not in the session file
};

// Which commands take a key's option, and which part of their help lists it.
enum class OptionGroup {
    None,     // no option
    Edit,     // the skin's values: compose, render and build
    Output,   // build: output, template, icon
    Identity, // build: the file texts
    Signing,  // build: code signing
};

struct RecipeKey {
    std::string_view name = {}; // the session key, and the key's name in code and tests
    KeyType type = KeyType::Text;
    RestoreStep step = RestoreStep::Never;
    OptionGroup group = OptionGroup::None;
    std::wstring_view option = {};      // nvbuild's option, empty for none
    std::wstring_view placeholder = {}; // the option's value, as the help names it ("URL", "N", "0|1")
    bool repeatable = false;            // the option may be given again, each use adding to the value
    std::wstring_view help = {};        // the option's help; a line break continues it on the next line
    int field = 0;                      // the builder window's edit control, 0 for none
    int low = 0, high = 0;              // Count: the range
    // Count: read from a text as the segment stepper reads its field: a text that is no number is the
    // default, and any number is kept to the range. Without it a value outside the range is refused.
    bool clampText = false;
    std::wstring_view defaultText = {}; // the fresh window's value, as text
    // A secret: never saved, and on the command line named by the environment variable that holds it, so
    // that no process list or shell history shows it.
    bool secret = false;
    // The value in a recipe; the one that fits the type is set.
    std::wstring& (*text)(Recipe&) = nullptr;
    int& (*count)(Recipe&) = nullptr;
    bool& (*flag)(Recipe&) = nullptr;
    std::vector<std::wstring>& (*list)(Recipe&) = nullptr;
    // Choice: the names, in the order of the values they stand for, and the value's place among them.
    std::span<const std::wstring_view> choices = {};
    int (*getChoice)(const Recipe&) = nullptr;
    void (*setChoice)(Recipe&, int) = nullptr;

    bool saved() const { return step != RestoreStep::Never; }
};

// The certificate sources by name, in SigningSource's order.
inline constexpr std::wstring_view kSigningSourceNames[] = {L"pfx", L"store", L"auto", L"plugin", L"command"};

// The session key prefix of the button links: "link." + the button's number + "." + its id.
inline constexpr std::string_view kLinkKeyPrefix = "link.";

inline constexpr RecipeKey kRecipeKeys[] = {
    {.name = "skin",
     .type = KeyType::Text,
     .step = RestoreStep::Skin,
     .text = [](Recipe& r) -> std::wstring& { return r.skin; }},
    {.name = "config_url",
     .type = KeyType::Text,
     .step = RestoreStep::SkinValues,
     .group = OptionGroup::Edit,
     .option = L"--config-url",
     .placeholder = L"URL",
     .help = L"sunucu yapılandırmasının adresi (adres dosyasında remoteConfigPath)",
     .field = 1100,
     .text = [](Recipe& r) -> std::wstring& { return r.configUrl; }},
    {.name = "iframe_url",
     .type = KeyType::Text,
     .step = RestoreStep::SkinValues,
     .group = OptionGroup::Edit,
     .option = L"--news-url",
     .placeholder = L"URL",
     .help = L"haber sayfasının adresi (dil dosyasında LAUNCHER_IFRAME ve LAUNCHER_NEW_URL)",
     .field = 1101,
     .text = [](Recipe& r) -> std::wstring& { return r.iframeUrl; }},
    {.name = "feed_url",
     .type = KeyType::Text,
     .step = RestoreStep::SkinValues,
     .group = OptionGroup::Edit,
     .option = L"--feed-url",
     .placeholder = L"URL",
     .help = L"sunucu durumu beslemesi (skin.xml'de feed_url); yalnızca kimliği FEED_ ile\n"
             L"başlayan kontrolleri olan skinlerde yazılır",
     .field = 1114,
     .text = [](Recipe& r) -> std::wstring& { return r.feedUrl; }},
    {.name = "title",
     .type = KeyType::Text,
     .step = RestoreStep::SkinValues,
     .group = OptionGroup::Edit,
     .option = L"--title",
     .placeholder = L"TEXT",
     .help = L"patcher penceresinin başlığı",
     .field = 1102,
     .text = [](Recipe& r) -> std::wstring& { return r.settings.title; }},
    {.name = "out_name",
     .type = KeyType::Text,
     .step = RestoreStep::Identity,
     .group = OptionGroup::Identity,
     .option = L"--original-name",
     .placeholder = L"TEXT",
     .help = L"özgün dosya adı; verilmezse --out'un dosya adı",
     .field = 1105,
     .defaultText = kDefaultOutputName,
     .text = [](Recipe& r) -> std::wstring& { return r.version.originalFilename; }},
    {.name = "out_path",
     .type = KeyType::Text,
     .step = RestoreStep::Output,
     .group = OptionGroup::Output,
     .option = L"--out",
     .placeholder = L"EXE",
     .help = L"yazılacak patcher (gerekli); .exe ile bitmeli, klasörü var olmalı. Yalnızca\n"
             L"doğrulanmış (ve istenirse imzalanmış) exe eskisinin yerine geçer",
     .field = 1110,
     .text = [](Recipe& r) -> std::wstring& { return r.outPath; }},
    {.name = "template",
     .type = KeyType::Text,
     .step = RestoreStep::Never,
     .group = OptionGroup::Output,
     .option = L"--template",
     .placeholder = L"EXE",
     .help = L"patcher şablonu; verilmezse nvbuild.exe'nin yanındaki Norvane.Template.exe",
     .text = [](Recipe& r) -> std::wstring& { return r.templatePath; }},
    {.name = "icon",
     .type = KeyType::Text,
     .step = RestoreStep::Icon,
     .group = OptionGroup::Output,
     .option = L"--icon",
     .placeholder = L"FILE",
     .help = L"simge: .ico olduğu gibi alınır, PNG/JPG/BMP/GIF altı boyutlu simgeye\n"
             L"çevrilir; verilmezse şablonun simgesi kalır",
     .text = [](Recipe& r) -> std::wstring& { return r.icon; }},
    {.name = "conn",
     .type = KeyType::Count,
     .step = RestoreStep::SkinValues,
     .group = OptionGroup::Edit,
     .option = L"--conn",
     .placeholder = L"N",
     .help = L"eşzamanlı indirme bağlantısı sayısı",
     .low = kMinConnections,
     .high = kMaxConnections,
     .defaultText = L"4",
     .count = [](Recipe& r) -> int& { return r.settings.connections; }},
    {.name = "seg",
     .type = KeyType::Count,
     .step = RestoreStep::SkinValues,
     .group = OptionGroup::Edit,
     .option = L"--seg",
     .placeholder = L"N",
     .help = L"büyük dosyaların parça boyutu, MB cinsinden",
     .field = 1103,
     .low = kMinSegmentMb,
     .high = kMaxSegmentMb,
     .clampText = true,
     .defaultText = L"4",
     .count = [](Recipe& r) -> int& { return r.settings.segmentMb; }},
    {.name = "close_on_start",
     .type = KeyType::Flag,
     .step = RestoreStep::SkinValues,
     .group = OptionGroup::Edit,
     .option = L"--close-on-start",
     .placeholder = L"0|1",
     .help = L"oyun açılınca patcher kapansın",
     .defaultText = L"1",
     .flag = [](Recipe& r) -> bool& { return r.settings.closeOnStart; }},
    {.name = "auto_start",
     .type = KeyType::Flag,
     .step = RestoreStep::SkinValues,
     .group = OptionGroup::Edit,
     .option = L"--auto-start",
     .placeholder = L"0|1",
     .help = L"güncelleme bitince oyun kendiliğinden başlasın",
     .defaultText = L"0",
     .flag = [](Recipe& r) -> bool& { return r.settings.autoStart; }},
    {.name = "allow_error",
     .type = KeyType::Flag,
     .step = RestoreStep::SkinValues,
     .group = OptionGroup::Edit,
     .option = L"--allow-error",
     .placeholder = L"0|1",
     .help = L"güncelleme başarısızsa da oyun başlatılabilsin",
     .defaultText = L"0",
     .flag = [](Recipe& r) -> bool& { return r.settings.allowError; }},
    {.name = "browser_emu",
     .type = KeyType::Flag,
     .step = RestoreStep::SkinValues,
     .group = OptionGroup::Edit,
     .option = L"--browser-emu",
     .placeholder = L"0|1",
     .help = L"haber sayfası IE11 kipinde açılsın",
     .defaultText = L"1",
     .flag = [](Recipe& r) -> bool& { return r.settings.browserEmu; }},
    {.name = "run_args",
     .type = KeyType::Text,
     .step = RestoreStep::SkinValues,
     .group = OptionGroup::Edit,
     .option = L"--run-args",
     .placeholder = L"TEXT",
     .help = L"oyunun exe'sine verilecek argümanlar",
     .field = 1104,
     .text = [](Recipe& r) -> std::wstring& { return r.settings.runArgs; }},
    {.name = "v_product",
     .type = KeyType::Text,
     .step = RestoreStep::Identity,
     .group = OptionGroup::Identity,
     .option = L"--product",
     .placeholder = L"TEXT",
     .help = L"ürün adı; verilmezse patcher başlığı",
     .field = 1106,
     .text = [](Recipe& r) -> std::wstring& { return r.version.productName; }},
    {.name = "v_company",
     .type = KeyType::Text,
     .step = RestoreStep::Identity,
     .group = OptionGroup::Identity,
     .option = L"--company",
     .placeholder = L"TEXT",
     .help = L"şirket; verilmezse ürün adı",
     .field = 1107,
     .text = [](Recipe& r) -> std::wstring& { return r.version.companyName; }},
    {.name = "description",
     .type = KeyType::Text,
     .step = RestoreStep::Never,
     .group = OptionGroup::Identity,
     .option = L"--description",
     .placeholder = L"TEXT",
     .help = L"dosya açıklaması; verilmezse ürün adı",
     .text = [](Recipe& r) -> std::wstring& { return r.version.fileDescription; }},
    {.name = "v_version",
     .type = KeyType::Text,
     .step = RestoreStep::Identity,
     .group = OptionGroup::Identity,
     .option = L"--version",
     .placeholder = L"TEXT",
     .help = L"sürüm: noktayla ayrılmış bir ile dört arası 0..65535 sayısı (1.2.3.4; 2.1 2.1.0.0 olur); "
             L"başka biçim komut satırı hatasıdır. Verilmezse 1.0.0.0",
     .field = 1108,
     .defaultText = kDefaultVersionText,
     .text = [](Recipe& r) -> std::wstring& { return r.version.versionText; }},
    {.name = "v_copyright",
     .type = KeyType::Text,
     .step = RestoreStep::Identity,
     .group = OptionGroup::Identity,
     .option = L"--copyright",
     .placeholder = L"TEXT",
     .help = L"telif hakkı; verilmezse \"(C) \" ve ürün adı",
     .field = 1109,
     .text = [](Recipe& r) -> std::wstring& { return r.version.legalCopyright; }},
    // Switched on in the window, and on the command line by naming a certificate.
    {.name = "sign",
     .type = KeyType::Flag,
     .step = RestoreStep::Signing,
     .defaultText = L"0",
     .flag = [](Recipe& r) -> bool& { return r.signing.enabled; }},
    {.name = "sign_pfx",
     .type = KeyType::Text,
     .step = RestoreStep::Identity,
     .group = OptionGroup::Signing,
     .option = L"--sign-pfx",
     .placeholder = L"FILE",
     .help = L"sertifika (.pfx)",
     .field = 1111,
     .text = [](Recipe& r) -> std::wstring& { return r.signing.pfxPath; }},
    {.name = "sign_password",
     .type = KeyType::Text,
     .step = RestoreStep::Never,
     .group = OptionGroup::Signing,
     .option = L"--sign-password-env",
     .placeholder = L"VAR",
     .help = L"sertifikanın parolasını tutan ortam değişkeninin adı (parola komut\n"
             L"satırında verilmez, hiçbir yere yazılmaz)",
     .field = 1112,
     .secret = true,
     .text = [](Recipe& r) -> std::wstring& { return r.signing.pfxPassword; }},
    {.name = "sign_ts",
     .type = KeyType::Text,
     .step = RestoreStep::Identity,
     .group = OptionGroup::Signing,
     .option = L"--sign-ts",
     .placeholder = L"URL",
     .help = L"RFC 3161 zaman damgası sunucusu; boş değer zaman damgasız imzalar",
     .field = 1113,
     .defaultText = kDefaultTimestampServer,
     .text = [](Recipe& r) -> std::wstring& { return r.signing.timestampUrl; }},
    // The certificate sources beside the PFX file, and the time-stamp servers tried after sign_ts. Each
    // source keeps its own values, so switching between them loses nothing.
    {.name = "sign_source",
     .type = KeyType::Choice,
     .step = RestoreStep::Identity,
     .group = OptionGroup::Signing,
     .option = L"--sign-source",
     .placeholder = L"KAYNAK",
     .help = L"sertifikanın kaynağı: pfx (dosya; verilmezse), store (Windows sertifika\n"
             L"deposu, token dahil), auto (signtool depodan kendi seçer), plugin (bulut imza\n"
             L"eklentisi), command (kendi komutunuz)",
     .defaultText = L"pfx",
     .choices = kSigningSourceNames,
     .getChoice = [](const Recipe& r) { return static_cast<int>(r.signing.source); },
     .setChoice = [](Recipe& r, int v) { r.signing.source = static_cast<SigningSource>(v); }},
    {.name = "sign_thumbprint",
     .type = KeyType::Text,
     .step = RestoreStep::Identity,
     .group = OptionGroup::Signing,
     .option = L"--sign-thumbprint",
     .placeholder = L"SHA1",
     .help = L"store: depodaki sertifikanın parmak izi (40 onaltılık rakam; boşluk ve : olabilir)",
     .field = 1115,
     .text = [](Recipe& r) -> std::wstring& { return r.signing.thumbprint; }},
    {.name = "sign_machine_store",
     .type = KeyType::Flag,
     .step = RestoreStep::Identity,
     .group = OptionGroup::Signing,
     .option = L"--sign-machine-store",
     .placeholder = L"0|1",
     .help = L"store ve auto: kullanıcınınki yerine bilgisayarın Kişisel deposu (signtool /sm)",
     .defaultText = L"0",
     .flag = [](Recipe& r) -> bool& { return r.signing.machineStore; }},
    {.name = "sign_dlib",
     .type = KeyType::Text,
     .step = RestoreStep::Identity,
     .group = OptionGroup::Signing,
     .option = L"--sign-dlib",
     .placeholder = L"DLL",
     .help = L"plugin: bulut imza hizmetinin signtool eklentisi (signtool /dlib)",
     .field = 1116,
     .text = [](Recipe& r) -> std::wstring& { return r.signing.pluginPath; }},
    {.name = "sign_dmdf",
     .type = KeyType::Text,
     .step = RestoreStep::Identity,
     .group = OptionGroup::Signing,
     .option = L"--sign-dmdf",
     .placeholder = L"FILE",
     .help = L"plugin: eklentinin ayar dosyası, hesap ve sertifika profili (signtool /dmdf)",
     .field = 1117,
     .text = [](Recipe& r) -> std::wstring& { return r.signing.pluginMetadataPath; }},
    {.name = "sign_command",
     .type = KeyType::Text,
     .step = RestoreStep::Identity,
     .group = OptionGroup::Signing,
     .option = L"--sign-command",
     .placeholder = L"CMD",
     .help = L"command: kendi imza komutunuz; {file} imzalanacak exe'nin yolu, %AD% o ortam\n"
             L"değişkeninin değeri olur (PIN ve anahtarlar ortamda kalır, hiçbir yere yazılmaz).\n"
             L"Çıktısı adımlara yazılır, çıkış kodu 0 başarıdır",
     .field = 1118,
     .text = [](Recipe& r) -> std::wstring& { return r.signing.command; }},
    {.name = "sign_ts_more",
     .type = KeyType::List,
     .step = RestoreStep::Identity,
     .group = OptionGroup::Signing,
     .option = L"--sign-ts-more",
     .placeholder = L"URL",
     .repeatable = true,
     .help = L"--sign-ts yanıt vermezse sırayla denenecek başka bir RFC 3161 sunucusu;\n"
             L"tekrarlanabilir. Hiçbiri olmazsa damgasız imzalanır ve uyarılır",
     .field = 1119,
     .list = [](Recipe& r) -> std::vector<std::wstring>& { return r.signing.moreTimestampUrls; }},
    {.name = "signtool",
     .type = KeyType::Text,
     .step = RestoreStep::Never,
     .group = OptionGroup::Signing,
     .option = L"--signtool",
     .placeholder = L"PATH",
     .help = L"signtool.exe; verilmezse Windows SDK klasörlerinde aranır",
     .text = [](Recipe& r) -> std::wstring& { return r.signing.signtoolPath; }},
    // Not in the session file yet: the window has no field for it.
    {.name = "update_key",
     .type = KeyType::Text,
     .step = RestoreStep::Never,
     .group = OptionGroup::Output,
     .option = L"--update-key",
     .placeholder = L"NAME.pub",
     .repeatable = true,
     .help = L"güncelleme anahtarı (nvbuild keygen'in .pub dosyası) patcher'a gömülür; patcher\n"
             L"yalnızca bununla imzalanmış dosya listelerini kabul eder. Tekrarlanabilir: anahtar\n"
             L"değiştirirken eskisi ve yenisi birlikte",
     .text = [](Recipe& r) -> std::wstring& { return r.updateKeys; }},
    {.name = "link",
     .type = KeyType::Links,
     .step = RestoreStep::SkinValues,
     .group = OptionGroup::Edit,
     .option = L"--link",
     .placeholder = L"ID=URL",
     .repeatable = true,
     .help = L"kimliği ID olan butonun açacağı adres (kimlikte büyük/küçük harf fark etmez);\n"
             L"tekrarlanabilir. Butonun link_url'ü bir dil anahtarıysa adres dil dosyasına o\n"
             L"anahtarla yazılır, değilse skin.xml'e. Skinde o kimlikte buton yoksa çıkış 1."},
};

// The row of a name, an option or an edit control; null when there is none.
const RecipeKey* findKey(std::string_view name);
const RecipeKey* findKeyByOption(std::wstring_view option);
const RecipeKey* findKeyByField(int field);

// A key's value as text: what the session file writes and the window's field shows. A Count as a decimal, a
// Flag as "1" or "0", a Choice as its name, a List as its words with one blank between them.
std::wstring keyText(const RecipeKey& key, const Recipe& recipe);
// A Flag's value.
bool keyOn(const RecipeKey& key, const Recipe& recipe);

// Reads a key's text, from a session file or an edit control, by the rules the builder restores with: a Text
// as it stands; a Count as a decimal, refused outside its range (or kept to it, with clampText); a Flag on
// for exactly "1"; a Choice by its name, an unknown one refused; a List split at blanks, commas and
// semicolons. False when the text was refused and the value left as it was.
bool readKeyText(const RecipeKey& key, Recipe& recipe, std::wstring_view text);

// A Count's text by the segment stepper's rule: the trimmed decimal (the key's default when it is none) plus
// delta, kept to the range.
int clampedCount(const RecipeKey& key, std::wstring_view text, int delta = 0);

// Whether an option's value has the key's form, as the command line must give it: a Count a decimal within
// its range, a Flag exactly "0" or "1", a Choice one of its names, a link "ID=URL" with an ID. When it has
// not, error says which option and why (a usage error).
bool checkKeyOption(const RecipeKey& key, const std::wstring& value, std::wstring& error);

// An option's checked value into the recipe. A List's words are added to it (the caller empties it before the
// first of its options). A link goes to every button of its id (compared without regard
// to ASCII case); false with error when the skin has no button of that id.
bool applyKeyOption(const RecipeKey& key, Recipe& recipe, const std::wstring& value, std::wstring& error);

} // namespace nv
