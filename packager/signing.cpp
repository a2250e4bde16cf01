// Signing a finished executable through signtool.exe.

#include "packager/signing.h"

#include "core/files.h"

namespace nv {
namespace {

constexpr uint32_t kSignTimeoutMs = 180000;

void say(BuildLogFn log, void* context, const std::wstring& line) {
    if (log) log(context, line);
}

// Whatever the tool printed, with the password (should a tool ever echo its arguments) masked.
std::wstring toolOutput(std::wstring output, const std::wstring& password) {
    if (password.empty()) return output;
    for (size_t at = output.find(password); at != std::wstring::npos; at = output.find(password, at + 3))
        output.replace(at, password.size(), L"***");
    return output;
}

} // namespace

SignCommands signCommands(const std::wstring& tool, const SigningOptions& options, const std::wstring& file,
                          const std::wstring& productName) {
    std::wstring base = L"\"" + tool + L"\" sign /fd SHA256 /f \"" + options.pfxPath + L"\"";
    if (!options.pfxPassword.empty()) base += L" /p \"" + options.pfxPassword + L"\"";
    if (!productName.empty()) {
        std::wstring description = productName;
        for (wchar_t& c : description)
            if (c == L'"') c = L'\'';
        base += L" /d \"" + description + L"\"";
    }
    return {base + L" /tr \"" + options.timestampUrl + L"\" /td SHA256 \"" + file + L"\"",
            base + L" \"" + file + L"\""};
}

bool signExecutable(const SigningOptions& options, const std::wstring& file, const VersionInfoFields& version,
                    BuildLogFn log, void* context, std::wstring& message) {
    const std::wstring tool = options.signtoolPath.empty() ? findSigntool() : options.signtoolPath;
    if (tool.empty() || !fileExists(tool)) {
        message =
            L"signtool.exe bulunamadı. Windows SDK'nın \"Signing Tools for Desktop Apps\" bileşenini kurun.";
        return false;
    }
    if (!fileExists(options.pfxPath)) {
        message = L"Sertifika dosyası (.pfx) bulunamadı: " + options.pfxPath;
        return false;
    }
    const SignCommands commands = signCommands(tool, options, file, version.productName);
    std::wstring output;
    uint32_t exitCode = 1;

    if (!options.timestampUrl.empty()) {
        say(log, context, L"İmzalanıyor (zaman damgalı)...");
        if (runCapture(commands.timestamped, output, exitCode, kSignTimeoutMs) && exitCode == 0) return true;
        say(log, context,
            L"Zaman damgalı imza başarısız, damgasız deneniyor: " + toolOutput(output, options.pfxPassword));
    }

    say(log, context, L"İmzalanıyor...");
    output.clear();
    if (!runCapture(commands.plain, output, exitCode, kSignTimeoutMs) || exitCode != 0) {
        message = L"İmzalama başarısız: " + toolOutput(output, options.pfxPassword);
        return false;
    }
    if (!options.timestampUrl.empty())
        say(log, context,
            L"UYARI: zaman damgası eklenemedi; imza sertifika süresi bitince geçersiz sayılır.");
    return true;
}

} // namespace nv
