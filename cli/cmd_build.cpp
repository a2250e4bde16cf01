// nvbuild build: the patcher executable, built from a skin exactly as the builder window builds it.

#include "build/build_job.h"
#include "build/build_start.h"
#include "build/icon.h"
#include "build/signing.h"
#include "cli/nvbuild.h"
#include "cli/skin_edits.h"
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

int commandBuild(const Invocation& invocation, Console& console) {
    SkinEdits edits;
    std::wstring error;
    if (!readSkinEdits(invocation, edits, error)) return invocation.usageError(console, error);
    if (!invocation.has(L"--out")) return invocation.usageError(console, L"Eksik seçenek: --out");

    BuildInputs inputs;
    inputs.outputPath = text(invocation, L"--out");
    inputs.templatePath = invocation.has(L"--template") ? text(invocation, L"--template")
                                                        : pathJoin(exeFolder(), L"Norvane.Template.exe");
    inputs.version = {text(invocation, L"--product"),     text(invocation, L"--company"),
                      text(invocation, L"--description"), text(invocation, L"--version"),
                      text(invocation, L"--copyright"),   text(invocation, L"--original-name")};
    SigningOptions& signing = inputs.signing;
    signing.enabled = invocation.has(L"--sign-pfx");
    signing.pfxPath = text(invocation, L"--sign-pfx");
    signing.timestampUrl =
        invocation.has(L"--sign-ts") ? text(invocation, L"--sign-ts") : kDefaultTimestampServer;
    signing.signtoolPath = text(invocation, L"--signtool");
    if (const std::wstring* variable = invocation.value(L"--sign-password-env")) {
        if (!passwordFrom(*variable, signing.pfxPassword))
            return failed(console, L"Ortam değişkeni tanımlı değil: " + *variable);
    }

    std::wstring message, note;
    if (const std::wstring* icon = invocation.value(L"--icon")) {
        DecodedImage preview;
        bool previewDecoded = false;
        if (!requireExisting(*icon, message) ||
            !readIconFile(*icon, inputs.iconBytes, preview, previewDecoded, message))
            return failed(console, message);
    }

    SkinWorkspace workspace;
    if (!loadSkinInput(invocation.arguments[0], workspace, message, note)) return failed(console, message);
    if (!note.empty()) console.errLine(L"Not: " + note);
    if (!applySkinEdits(edits, workspace, error)) return failed(console, error);

    if (!checkBuildStart(inputs, message)) return failed(console, message);
    console.outLine(L"Oluşturma başladı → " + inputs.outputPath);
    const BuildResult result = runBuild(workspace, inputs, printLine, &console);
    if (!result.ok) return failed(console, L"Oluşturulamadı: " + result.message);

    console.outLine(L"Tamamlandı → " + inputs.outputPath);
    wchar_t crc[16];
    std::swprintf(crc, 16, L"%08X", result.crc32);
    console.outLine(L"CRC32: " + std::wstring(crc) + L"    Boyut: " + sizeText(result.size));
    if (result.wasSigned) console.outLine(L"Dijital imza eklendi.");
    return kExitOk;
}

constexpr std::wstring_view kBuildArguments[] = {L"SOURCE"};
constexpr OptionSpec kBuildOwnOptions[] = {
    {L"--out", L"EXE"},       {L"--template", L"EXE"},          {L"--icon", L"FILE"},
    {L"--product", L"TEXT"},  {L"--company", L"TEXT"},          {L"--description", L"TEXT"},
    {L"--version", L"TEXT"},  {L"--copyright", L"TEXT"},        {L"--original-name", L"TEXT"},
    {L"--sign-pfx", L"FILE"}, {L"--sign-password-env", L"VAR"}, {L"--sign-ts", L"URL"},
    {L"--signtool", L"PATH"},
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
        L"\n") +
    std::wstring(kSkinEditsHelp) +
    L"\n"
    L"Adımlar standart çıktıya yazılır, ardından \"Tamamlandı → \" ve yol, CRC32 ve boyut satırı (imzalıysa\n"
    L"\"Dijital imza eklendi.\"). Başarısızlıkta \"Oluşturulamadı: \" ve neden standart hataya yazılır, "
    L"çıkış 1;\n"
    L"önceki exe olduğu gibi kalır.\n";

} // namespace

const Command kBuildCommand{
    L"build",
    L"Skinden markalı patcher exe'sini oluşturur (simge, sürüm bilgisi, isteğe bağlı imza).",
    L"build SOURCE --out EXE [seçenekler]",
    kBuildHelp,
    kBuildArguments,
    kBuildOptions,
    commandBuild,
};

} // namespace nv
