// nvbuild build: the patcher executable, built from a skin exactly as the builder window builds it.

#include "cli/build_plan.h"
#include "cli/json_writer.h"
#include "cli/nvbuild.h"
#include "cli/recipe_options.h"
#include "core/text.h"
#include "core/format.h"
#include "packager/build_job.h"
#include "packager/build_start.h"
#include "packager/signing_readback.h"
#include "cli/skin_input.h"
#include "packager/version_resource.h"

#include <cstdio>

namespace nv {
namespace {

// Progress lines are what the command produces: standard output, as they come.
void printLine(void* console, const std::wstring& line) {
    static_cast<Console*>(console)->outLine(line);
}

// With --json standard output carries the result alone, so the steps go to standard error.
void printLineToErr(void* console, const std::wstring& line) {
    static_cast<Console*>(console)->errLine(line);
}

const char* timestampName(TimestampKind kind) {
    switch (kind) {
    case TimestampKind::Rfc3161:
        return "rfc3161";
    case TimestampKind::Authenticode:
        return "authenticode";
    case TimestampKind::None:
        break;
    }
    return "none";
}

// The build's outcome as one JSON object, for scripts: what the last lines say, and the warnings.
std::string jsonResult(const BuildResult& result, const std::wstring& output) {
    JsonWriter json;
    json.beginObject();
    json.key("ok").value(result.ok);
    json.key("output").value(output);
    if (result.ok) {
        char crc[16];
        std::snprintf(crc, sizeof crc, "%08X", unsigned(result.crc32));
        json.key("crc32").value(std::string_view(crc));
        json.key("size").value(int64_t(result.size));
    } else {
        json.key("error").value(result.message);
        json.key("cancelled").value(result.cancelled);
    }
    json.key("signed").value(result.ok && result.wasSigned);
    if (result.ok && result.wasSigned) {
        const SignatureInfo& s = result.signature;
        json.key("signature").beginObject();
        json.key("subject").value(s.subject);
        json.key("thumbprint").value(s.thumbprint);
        json.key("timestamp").value(timestampName(s.timestamp));
        json.key("timestampTime");
        if (s.timestamp != TimestampKind::None && s.timestampTime != 0)
            json.value(utcTimeText(s.timestampTime));
        else
            json.null();
        json.endObject();
    }
    json.key("warnings").beginArray();
    for (const std::wstring& w : result.warnings)
        json.value(w);
    json.endArray();
    json.endObject();
    return json.text();
}

// The validation's warnings as one block that stands out among the progress lines: a build with them may ship
// a patcher without its start button.
void printWarnings(Console& console, const std::vector<std::wstring>& warnings) {
    if (warnings.empty()) return;
    console.errLine(L"UYARI: skin doğrulaması " + std::to_wstring(warnings.size()) + L" uyarı verdi:");
    for (const std::wstring& warning : warnings)
        console.errLine(L"  ! " + warning);
}

int commandBuild(const Invocation& invocation, Console& console) {
    // The window reads whatever the field holds as well as it can; a script's value is taken at its word or
    // not at all, so that "v2.1" never ships as 1.0.0.0.
    if (const std::wstring* version = invocation.value(L"--version"); version && !isVersionText(*version))
        return invocation.usageError(
            console, L"--version bir ile dört arası, noktayla ayrılmış 0..65535 sayısı olmalı "
                     L"(1.2.3.4): " +
                         *version);
    BuildPlan plan;
    if (const int exit = planBuild(invocation, console, plan); exit != kExitOk) return exit;
    std::wstring message;
    if (!checkBuildStart(plan.inputs, message)) return failed(console, message);
    const std::wstring& output = plan.inputs.outputPath;
    const bool json = invocation.has(L"--json");
    if (json)
        console.errLine(L"Oluşturma başladı → " + output);
    else
        console.outLine(L"Oluşturma başladı → " + output);
    BuildResult result;
    {
        StopRequests stops;
        result = runBuild(plan.workspace, plan.inputs, json ? printLineToErr : printLine, &console,
                          {.strict = invocation.has(L"--strict"), .cancel = &stops.requested()});
    }
    printWarnings(console, result.warnings);
    if (json) console.outLine(utf8ToWide(jsonResult(result, output)));
    if (!result.ok) {
        failed(console, L"Oluşturulamadı: " + result.message);
        return result.cancelled ? kExitCancelled : kExitFailed;
    }
    if (json) return kExitOk;

    console.outLine(L"Tamamlandı → " + output);
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
constexpr OptionSpec kBuildOwnOptions[] = {{L"--session", L"FILE"}, {L"--strict", L""}, {L"--json", L""}};

constexpr std::array<OptionSpec, kRecipeOptions.size() + std::size(kBuildOwnOptions)> buildOptions() {
    std::array<OptionSpec, kRecipeOptions.size() + std::size(kBuildOwnOptions)> out{};
    for (size_t i = 0; i < kRecipeOptions.size(); ++i)
        out[i] = kRecipeOptions[i];
    for (size_t i = 0; i < std::size(kBuildOwnOptions); ++i)
        out[kRecipeOptions.size() + i] = kBuildOwnOptions[i];
    return out;
}
constexpr auto kBuildOptions = buildOptions();

const std::wstring kBuildHelp =
    L"Argümanlar:\n"
    L"  SOURCE  skin: klasör, .zip, skin paketi ya da (Windows'ta) skin taşıyan patcher .exe\n"
    L"\n"
    L"Çıktı ve şablon:\n" +
    optionHelp({"out_path", "template", "icon", "update_key"}) +
    L"\n"
    L"Dosya bilgileri (Özellikler > Ayrıntılar):\n" +
    optionHelp({"v_product", "v_company", "description", "v_version", "v_copyright", "out_name"}) +
    L"\n"
    L"Kod imzalama (Windows SDK'nın signtool.exe'si ile SHA-256, ya da kendi komutunuzla). --sign-source ya\n"
    L"da yalnızca bir kaynağın kullandığı değer (--sign-pfx, --sign-thumbprint, --sign-dlib, --sign-dmdf,\n"
    L"--sign-command) verilince imza açılır ve o kaynak seçilir:\n" +
    optionHelp({"sign_source", "sign_pfx", "sign_password", "sign_thumbprint", "sign_machine_store",
                "sign_dlib", "sign_dmdf", "sign_command", "sign_ts", "sign_ts_more", "signtool"}) +
    L"\n"
    L"Oturum dosyası (oluşturucunun olusturucu.ini'si, derleme tarifi olarak):\n"
    L"  --session FILE        alanlar oluşturucunun son oturumu geri yüklediği kurallarla dosyadan okunur:\n"
    L"                        skin, adresler, davranış, dosya bilgileri, simge, çıktı yeri ve imza. SOURCE\n"
    L"                        verilirse dosyadaki skin yerine o kullanılır, --out verilmezse dosyadaki\n"
    L"                        out_path; komut satırında verilen her seçenek dosyadakinin yerine geçer.\n"
    L"                        Parola dosyada yoktur (--sign-password-env)\n"
    L"\n" +
    skinEditsHelp() +
    L"\n"
    L"Denetim:\n"
    L"  --strict              skin doğrulamasının her uyarısı (eksik buton ya da gauge görseli, okunamayan\n"
    L"                        dil dosyası) oluşturmayı bir şey yazılmadan başarısız kılar (çıkış 1). "
    L"Verilmezse\n"
    L"                        uyarılar \"UYARI:\" başlıklı bir blok olarak standart hataya yazılır ve "
    L"patcher\n"
    L"                        oluşturulur\n"
    L"\n"
    L"Adımlar standart çıktıya yazılır, ardından \"Tamamlandı → \" ve yol, CRC32 ve boyut satırı (imzalıysa\n"
    L"\"Dijital imza eklendi.\" ve dosyadan geri okunan imza: imzalayan, parmak izi, zaman damgası); CRC32,\n"
    L"oluşturmanın yerine koyduğu dosyanınkidir. Başarısızlıkta \"Oluşturulamadı: \" ve neden standart "
    L"hataya\n"
    L"yazılır, çıkış 1; önceki exe olduğu gibi kalır. Aynı çıktıya başka bir oluşturma yazarken başlayan\n"
    L"oluşturma onun dosyalarına dokunmadan başarısız olur.\n"
    L"Ctrl-C, Ctrl-Break ya da konsol penceresinin kapanması oluşturmayı durdurur: geçici dosya silinir,\n"
    L"önceki exe olduğu gibi kalır, çıkış 3 (\"Oluşturulamadı: İptal edildi.\").\n"
    L"\n"
    L"  --json                oluşturma başladıktan sonra standart çıktıya yalnızca sonuç yazılır, tek bir "
    L"JSON\n"
    L"                        nesnesi olarak: ok, output, crc32 ve size (ya da error ve cancelled), signed,\n"
    L"                        signature (subject, thumbprint, timestamp: none|rfc3161|authenticode,\n"
    L"                        timestampTime), warnings. Adımlar standart hataya yazılır; çıkış kodları "
    L"aynıdır.\n"
    L"                        Oluşturma başlamadan verilen ret, her zamanki gibi standart hatadadır\n";

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
