// nvbuild build: the patcher executable, built from a skin exactly as the builder window builds it.

#include "packager/build_job.h"
#include "packager/build_start.h"
#include "packager/icon.h"
#include "packager/signing.h"
#include "cli/nvbuild.h"
#include "cli/skin_edits.h"
#include "cli/session_recipe.h"
#include "cli/skin_input.h"
#include "core/crc32.h"
#include "core/files.h"
#include "core/format.h"
#include "core/paths.h"
#include "core/text.h"

#include <array>
#include <cstdio>
#include <cstdlib>

namespace nv {
namespace {

// Progress lines are what the command produces: standard output, as they come.
void printLine(void* console, const std::wstring& line) {
    static_cast<Console*>(console)->outLine(line);
}

// The password never appears on the command line (where process lists and shell histories show it): only the
// name of the environment variable that holds it does.
bool passwordFrom(const std::wstring& variable, std::wstring& password) {
#ifdef _WIN32
    const wchar_t* value = _wgetenv(variable.c_str());
    if (value) password = value;
#else
    const char* value = std::getenv(wideToUtf8(variable).c_str());
    if (value) password = utf8ToWide(value);
#endif
    return value != nullptr;
}

std::wstring text(const Invocation& invocation, std::wstring_view option) {
    const std::wstring* value = invocation.value(option);
    return value ? *value : std::wstring();
}

// Each of these options, when given, replaces what a session file says.
void overrideText(const Invocation& invocation, std::wstring_view option, std::wstring& target) {
    if (const std::wstring* value = invocation.value(option)) target = *value;
}

int commandBuild(const Invocation& invocation, Console& console) {
    SkinEdits edits;
    std::wstring error;
    if (!readSkinEdits(invocation, edits, error)) return invocation.usageError(console, error);
    const std::wstring* sessionFile = invocation.value(L"--session");
    if (!sessionFile && !invocation.has(L"--out"))
        return invocation.usageError(console, L"Eksik seçenek: --out");

    // With a session file its fields come first, as the builder restores them; every option given on the
    // command line then wins over them.
    SkinWorkspace workspace;
    SessionValues session;
    std::wstring message, note;
    const std::wstring source = invocation.arguments.empty() ? std::wstring() : invocation.arguments[0];
    if (sessionFile && !readSessionRecipe(*sessionFile, source, workspace, session, message, note))
        return failed(console, message);

    BuildInputs inputs;
    if (sessionFile) {
        copySessionToWorkspace(session, workspace);
        inputs = sessionBuildInputs(session, std::wstring(), Bytes());
    } else {
        inputs.signing.timestampUrl = kDefaultTimestampServer;
    }
    overrideText(invocation, L"--out", inputs.outputPath);
    if (inputs.outputPath.empty()) return invocation.usageError(console, L"Eksik seçenek: --out");
    // The window always holds a full path; a name typed here means the current folder, as on any command
    // line.
    inputs.outputPath = absolutePath(inputs.outputPath);
    inputs.templatePath = invocation.has(L"--template") ? text(invocation, L"--template")
                                                        : pathJoin(exeFolder(), L"Norvane.Template.exe");
    VersionInfoFields& version = inputs.version;
    overrideText(invocation, L"--product", version.productName);
    overrideText(invocation, L"--company", version.companyName);
    overrideText(invocation, L"--description", version.fileDescription);
    overrideText(invocation, L"--version", version.versionText);
    overrideText(invocation, L"--copyright", version.legalCopyright);
    overrideText(invocation, L"--original-name", version.originalFilename);
    SigningOptions& signing = inputs.signing;
    if (invocation.has(L"--sign-pfx")) signing.enabled = true;
    overrideText(invocation, L"--sign-pfx", signing.pfxPath);
    overrideText(invocation, L"--sign-ts", signing.timestampUrl);
    signing.signtoolPath = text(invocation, L"--signtool");
    if (const std::wstring* variable = invocation.value(L"--sign-password-env")) {
        if (!passwordFrom(*variable, signing.pfxPassword))
            return failed(console, L"Ortam değişkeni tanımlı değil: " + *variable);
    }

    DecodedImage preview;
    bool previewDecoded = false;
    if (const std::wstring* icon = invocation.value(L"--icon")) {
        if (!requireExisting(*icon, message) ||
            !readIconFile(*icon, inputs.iconBytes, preview, previewDecoded, message))
            return failed(console, message);
    } else if (!session.icon.empty() &&
               !readIconFile(session.icon, inputs.iconBytes, preview, previewDecoded, message)) {
        // The builder takes a remembered icon quietly and keeps the template's when it does not convert.
        console.errLine(L"Not: " + message);
    }

    if (!sessionFile && !loadSkinInput(source, workspace, message, note)) return failed(console, message);
    if (!note.empty()) console.errLine(L"Not: " + note);
    if (!applySkinEdits(edits, workspace, error)) return failed(console, error);
    for (const std::wstring& line : editsWithoutPlace(edits, workspace))
        console.errLine(L"Not: " + line);

    if (!checkBuildStart(inputs, message)) return failed(console, message);
    console.outLine(L"Oluşturma başladı → " + inputs.outputPath);
    const BuildResult result = runBuild(workspace, inputs, printLine, &console);
    if (!result.ok) return failed(console, L"Oluşturulamadı: " + result.message);

    console.outLine(L"Tamamlandı → " + inputs.outputPath);
    wchar_t crc[16];
    std::swprintf(crc, 16, L"%08X", result.crc32);
    console.outLine(L"CRC32: " + std::wstring(crc) + L"    Boyut: " + sizeText(result.size));
    if (result.wasSigned) {
        console.outLine(L"Dijital imza eklendi.");
        for (const std::wstring& line : signatureLines(result.signature))
            console.outLine(line);
    }
    return kExitOk;
}

constexpr std::wstring_view kBuildArguments[] = {L"SOURCE"};
constexpr OptionSpec kBuildOwnOptions[] = {
    {L"--out", L"EXE"},       {L"--template", L"EXE"},          {L"--icon", L"FILE"},
    {L"--product", L"TEXT"},  {L"--company", L"TEXT"},          {L"--description", L"TEXT"},
    {L"--version", L"TEXT"},  {L"--copyright", L"TEXT"},        {L"--original-name", L"TEXT"},
    {L"--sign-pfx", L"FILE"}, {L"--sign-password-env", L"VAR"}, {L"--sign-ts", L"URL"},
    {L"--signtool", L"PATH"}, {L"--session", L"FILE"},
};

template <size_t A, size_t B>
constexpr std::array<OptionSpec, A + B> joined(const OptionSpec (&a)[A], const OptionSpec (&b)[B]) {
    std::array<OptionSpec, A + B> out{};
    for (size_t i = 0; i < A; ++i)
        out[i] = a[i];
    for (size_t i = 0; i < B; ++i)
        out[A + i] = b[i];
    return out;
}
constexpr auto kBuildOptions = joined(kBuildOwnOptions, kSkinEditOptions);

const std::wstring kBuildHelp =
    std::wstring(
        L"Argümanlar:\n"
        L"  SOURCE  skin: klasör, .zip, skin paketi ya da (Windows'ta) skin taşıyan patcher .exe\n"
        L"\n"
        L"Çıktı ve şablon:\n"
        L"  --out EXE             yazılacak patcher (gerekli); .exe ile bitmeli, klasörü var olmalı. "
        L"Yalnızca\n"
        L"                        doğrulanmış (ve istenirse imzalanmış) exe eskisinin yerine geçer\n"
        L"  --template EXE        patcher şablonu; verilmezse nvbuild.exe'nin yanındaki "
        L"Norvane.Template.exe\n"
        L"  --icon FILE           simge: .ico olduğu gibi alınır, PNG/JPG/BMP/GIF altı boyutlu simgeye\n"
        L"                        çevrilir; verilmezse şablonun simgesi kalır\n"
        L"\n"
        L"Dosya bilgileri (Özellikler > Ayrıntılar):\n"
        L"  --product TEXT        ürün adı; verilmezse patcher başlığı\n"
        L"  --company TEXT        şirket; verilmezse ürün adı\n"
        L"  --description TEXT    dosya açıklaması; verilmezse ürün adı\n"
        L"  --version TEXT        sürüm, en çok dört sayı (1.2.3.4); verilmezse 1.0.0.0\n"
        L"  --copyright TEXT      telif hakkı; verilmezse \"(C) \" ve ürün adı\n"
        L"  --original-name TEXT  özgün dosya adı; verilmezse --out'un dosya adı\n"
        L"\n"
        L"Kod imzalama (--sign-pfx verilince açılır; Windows SDK'nın signtool.exe'si, SHA-256):\n"
        L"  --sign-pfx FILE       sertifika (.pfx)\n"
        L"  --sign-password-env VAR  sertifikanın parolasını tutan ortam değişkeninin adı (parola komut\n"
        L"                        satırında verilmez, hiçbir yere yazılmaz)\n"
        L"  --sign-ts URL         RFC 3161 zaman damgası sunucusu; boş değer zaman damgasız imzalar\n"
        L"  --signtool PATH       signtool.exe; verilmezse Windows SDK klasörlerinde aranır\n"
        L"\n"
        L"Oturum dosyası (oluşturucunun olusturucu.ini'si, derleme tarifi olarak):\n"
        L"  --session FILE        alanlar oluşturucunun son oturumu geri yüklediği kurallarla dosyadan "
        L"okunur:\n"
        L"                        skin, adresler, davranış, dosya bilgileri, simge, çıktı yeri ve imza. "
        L"SOURCE\n"
        L"                        verilirse dosyadaki skin yerine o kullanılır, --out verilmezse dosyadaki\n"
        L"                        out_path; komut satırında verilen her seçenek dosyadakinin yerine geçer.\n"
        L"                        Parola dosyada yoktur (--sign-password-env)\n"
        L"\n") +
    std::wstring(kSkinEditsHelp) +
    L"\n"
    L"Adımlar standart çıktıya yazılır, ardından \"Tamamlandı → \" ve yol, CRC32 ve boyut satırı (imzalıysa\n"
    L"\"Dijital imza eklendi.\" ve dosyadan geri okunan imza: imzalayan, parmak izi, zaman damgası).\n"
    L"Başarısızlıkta \"Oluşturulamadı: \" ve neden standart hataya yazılır, "
    L"çıkış 1;\n"
    L"önceki exe olduğu gibi kalır.\n";

} // namespace

const Command kBuildCommand{
    L"build",
    L"Skinden markalı patcher exe'sini oluşturur (simge, sürüm bilgisi, isteğe bağlı imza).",
    L"build SOURCE --out EXE [seçenekler]  |  build --session FILE [SOURCE] [seçenekler]",
    kBuildHelp,
    kBuildArguments,
    kBuildOptions,
    commandBuild,
    L"--session",
};

} // namespace nv
