// nvbuild build: the patcher executable, built from a skin exactly as the builder window builds it.

#include "cli/build_plan.h"
#include "cli/nvbuild.h"
#include "cli/recipe_options.h"
#include "core/format.h"
#include "packager/build_job.h"
#include "packager/build_start.h"

#include <array>
#include <cstdio>

namespace nv {
namespace {

// Progress lines are what the command produces: standard output, as they come.
void printLine(void* console, const std::wstring& line) {
    static_cast<Console*>(console)->outLine(line);
}

int commandBuild(const Invocation& invocation, Console& console) {
    BuildPlan plan;
    if (const int exit = planBuild(invocation, console, plan); exit != kExitOk) return exit;
    std::wstring message;
    if (!checkBuildStart(plan.inputs, message)) return failed(console, message);
    const std::wstring& output = plan.inputs.outputPath;
    console.outLine(L"Oluşturma başladı → " + output);
    const BuildResult result = runBuild(plan.workspace, plan.inputs, printLine, &console);
    if (!result.ok) return failed(console, L"Oluşturulamadı: " + result.message);

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
constexpr OptionSpec kSessionOption{L"--session", L"FILE"};

constexpr std::array<OptionSpec, kRecipeOptions.size() + 1> buildOptions() {
    std::array<OptionSpec, kRecipeOptions.size() + 1> out{};
    for (size_t i = 0; i < kRecipeOptions.size(); ++i)
        out[i] = kRecipeOptions[i];
    out.back() = kSessionOption;
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
    L"Kod imzalama (--sign-pfx verilince açılır; Windows SDK'nın signtool.exe'si, SHA-256):\n" +
    optionHelp({"sign_pfx", "sign_password", "sign_ts", "signtool"}) +
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
