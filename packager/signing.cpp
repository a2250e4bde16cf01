// Signing a finished executable through signtool.exe or the operator's own command, and checking the result.

#include "packager/signing.h"

#include "core/command_line.h"
#include "core/files.h"
#include "core/text.h"
#include "core/win32/child_process.h"

#include <windows.h>

namespace nv {
namespace {

constexpr uint32_t kSignTimeoutMs = 180000;
constexpr const wchar_t* kNoTimestampWarning =
    L"UYARI: zaman damgası eklenemedi; imza sertifika süresi bitince geçersiz sayılır.";

void say(BuildLogFn log, void* context, const std::wstring& line) {
    if (log) log(context, line);
}

} // namespace

// A variable that is set, even to nothing, needs room for its terminator: 0 means it is not set.
bool readEnvironmentVariable(const std::wstring& name, std::wstring& value) {
    DWORD n = GetEnvironmentVariableW(name.c_str(), nullptr, 0);
    if (n == 0) return false;
    std::wstring buffer(n, L'\0');
    n = GetEnvironmentVariableW(name.c_str(), buffer.data(), n);
    buffer.resize(n);
    value = buffer;
    return true;
}

namespace {

std::wstring storeName(bool machineStore) {
    return machineStore ? L"bilgisayarın Kişisel deposu" : L"kullanıcının Kişisel deposu";
}

// What the certificate source needs beyond the start checks, looked at again when signing starts: files can
// go in the meantime, and only the store can say whether it holds the thumbprint.
bool sourceReady(const SigningOptions& options, std::wstring& message) {
    if (options.source == SigningSource::PfxFile) {
        if (fileExists(options.pfxPath)) return true;
        message = L"Sertifika dosyası (.pfx) bulunamadı: " + options.pfxPath;
        return false;
    }
    if (!checkSigningInputs(options, message)) return false;
    if (options.source != SigningSource::Store) return true;
    std::wstring thumbprint;
    normalizeThumbprint(options.thumbprint, thumbprint);
    const StoreCertificate certificate = findStoreCertificate(thumbprint, options.machineStore);
    if (!certificate.found)
        message = L"Sertifika depoda bulunamadı (" + storeName(options.machineStore) + L"): " + thumbprint;
    else if (!certificate.hasKey)
        message = L"Depodaki sertifikanın özel anahtarı yok: " + thumbprint;
    return message.empty();
}

// The operator's tool: its output goes to the log line by line (secrets masked), its exit code decides.
bool runOperatorCommand(const SigningOptions& options, const std::wstring& file, BuildLogFn log,
                        void* context, std::wstring& message) {
    OperatorCommand command;
    if (!makeOperatorCommand(options.command, file, readEnvironmentVariable, command, message)) return false;
    say(log, context, L"İmzalanıyor (kendi komutunuzla)...");
    std::wstring output;
    uint32_t exitCode = 1;
    if (!runCapture(command.commandLine, output, exitCode, kSignTimeoutMs)) {
        message = L"İmza komutu çalıştırılamadı: " + programOf(options.command);
        return false;
    }
    const std::wstring shown = maskSecrets(output, command.secrets);
    for (size_t at = 0; at <= shown.size();) {
        size_t end = shown.find(L'\n', at);
        if (end == std::wstring::npos) end = shown.size();
        std::wstring line = trim(std::wstring_view(shown).substr(at, end - at));
        if (!line.empty()) say(log, context, line);
        at = end + 1;
    }
    if (exitCode != 0) {
        message = L"İmza komutu başarısız oldu (çıkış kodu " + std::to_wstring(exitCode) + L").";
        return false;
    }
    return true;
}

} // namespace

bool signExecutable(const SigningOptions& options, const std::wstring& file, const VersionInfoFields& version,
                    BuildLogFn log, void* context, std::wstring& message) {
    if (options.source == SigningSource::Command)
        return runOperatorCommand(options, file, log, context, message);

    const std::wstring tool = options.signtoolPath.empty() ? findSigntool() : options.signtoolPath;
    if (tool.empty() || !fileExists(tool)) {
        message =
            L"signtool.exe bulunamadı. Windows SDK'nın \"Signing Tools for Desktop Apps\" bileşenini kurun.";
        return false;
    }
    if (!sourceReady(options, message)) return false;
    const SignCommands commands = signCommands(tool, options, file, version.productName);
    const std::vector<std::wstring> servers = timestampServers(options);
    const std::vector<std::wstring> secrets = {options.pfxPassword};
    std::wstring output;
    uint32_t exitCode = 1;

    for (size_t i = 0; i < commands.timestamped.size(); ++i) {
        say(log, context,
            i == 0 ? std::wstring(L"İmzalanıyor (zaman damgalı)...")
                   : L"İmzalanıyor (zaman damgalı: " + servers[i] + L")...");
        if (runCapture(commands.timestamped[i], output, exitCode, kSignTimeoutMs) && exitCode == 0)
            return true;
        const bool last = i + 1 == commands.timestamped.size();
        say(log, context,
            (last ? L"Zaman damgalı imza başarısız, damgasız deneniyor: "
                  : L"Zaman damgalı imza başarısız, sıradaki sunucu deneniyor: ") +
                maskSecrets(output, secrets));
    }

    say(log, context, L"İmzalanıyor...");
    output.clear();
    if (!runCapture(commands.plain, output, exitCode, kSignTimeoutMs) || exitCode != 0) {
        message = L"İmzalama başarısız: " + maskSecrets(output, secrets);
        return false;
    }
    if (!commands.timestamped.empty()) say(log, context, kNoTimestampWarning);
    return true;
}

bool confirmSignature(const SigningOptions& options, const std::wstring& file, BuildLogFn log, void* context,
                      SignatureInfo& info, std::wstring& message) {
    if (!readSignature(file, info, message)) return false;
    if (options.source == SigningSource::Command && info.timestamp == TimestampKind::None)
        say(log, context,
            L"UYARI: imzada zaman damgası yok; imza sertifika süresi bitince geçersiz sayılır.");
    return true;
}

} // namespace nv
