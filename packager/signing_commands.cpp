#include "packager/signing_commands.h"

#include "core/command_line.h"
#include "core/files.h"
#include "core/text.h"

#include <algorithm>

namespace nv {
namespace {

constexpr size_t kThumbprintDigits = 40;
constexpr size_t kShortestSecret = 4;

bool isHexDigit(wchar_t c) {
    return (c >= L'0' && c <= L'9') || (c >= L'a' && c <= L'f') || (c >= L'A' && c <= L'F');
}

// What the certificate dialog puts between and around the digits when the thumbprint is copied from it.
bool isThumbprintFiller(wchar_t c) {
    return c == L' ' || c == L'\t' || c == L':' || c == 0x200E || c == 0x200F || c == 0xFEFF || c == 0x00A0;
}

// Environment variable names as Windows programs use them: a letter or underscore, then letters, digits,
// underscores and parentheses ("ProgramFiles(x86)"). Anything else between two percent signs ("%20") is text.
bool isVariableName(std::wstring_view name) {
    auto letter = [](wchar_t c) { return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z') || c == L'_'; };
    if (name.empty() || !letter(name[0])) return false;
    return std::all_of(name.begin(), name.end(), [&](wchar_t c) {
        return letter(c) || (c >= L'0' && c <= L'9') || c == L'(' || c == L')';
    });
}

bool startsWithAt(std::wstring_view text, size_t at, std::wstring_view part) {
    return text.substr(at, part.size()) == part;
}

} // namespace

std::vector<std::wstring> timestampServers(const SigningOptions& options) {
    std::vector<std::wstring> servers;
    auto add = [&](const std::wstring& url) {
        std::wstring trimmed = trim(url);
        if (!trimmed.empty() && std::find(servers.begin(), servers.end(), trimmed) == servers.end())
            servers.push_back(trimmed);
    };
    add(options.timestampUrl);
    for (const std::wstring& url : options.moreTimestampUrls)
        add(url);
    return servers;
}

bool normalizeThumbprint(std::wstring_view text, std::wstring& thumbprint) {
    std::wstring digits;
    for (wchar_t c : text) {
        if (isThumbprintFiller(c)) continue;
        if (!isHexDigit(c)) return false;
        digits += c >= L'a' ? wchar_t(c - 32) : c;
    }
    if (digits.size() != kThumbprintDigits) return false;
    thumbprint = digits;
    return true;
}

bool checkSigningInputs(const SigningOptions& options, std::wstring& message) {
    std::wstring unused;
    switch (options.source) {
    case SigningSource::PfxFile:
        if (trim(options.pfxPath).empty())
            message = L"İmza açık ama sertifika (.pfx) seçilmedi.";
        else if (!fileExists(trim(options.pfxPath)))
            message = L"Sertifika dosyası bulunamadı: " + options.pfxPath;
        break;
    case SigningSource::Store:
        if (trim(options.thumbprint).empty())
            message = L"İmza açık ama sertifika parmak izi girilmedi.";
        else if (!normalizeThumbprint(options.thumbprint, unused))
            message = L"Sertifika parmak izi 40 onaltılık rakam olmalı: " + options.thumbprint;
        break;
    case SigningSource::Automatic:
        break;
    case SigningSource::Plugin:
        if (trim(options.pluginPath).empty())
            message = L"İmza açık ama imza eklentisi (.dll) seçilmedi.";
        else if (!fileExists(trim(options.pluginPath)))
            message = L"İmza eklentisi bulunamadı: " + options.pluginPath;
        else if (trim(options.pluginMetadataPath).empty())
            message = L"İmza açık ama eklentinin ayar dosyası seçilmedi.";
        else if (!fileExists(trim(options.pluginMetadataPath)))
            message = L"Eklentinin ayar dosyası bulunamadı: " + options.pluginMetadataPath;
        break;
    case SigningSource::Command:
        if (trim(options.command).empty())
            message = L"İmza açık ama imza komutu girilmedi.";
        else if (options.command.find(kFilePlaceholder) == std::wstring::npos)
            message = L"İmza komutunda " + std::wstring(kFilePlaceholder) + L" yer tutucusu yok.";
        break;
    }
    return message.empty();
}

SignCommands signCommands(const std::wstring& tool, const SigningOptions& options, const std::wstring& file,
                          const std::wstring& productName) {
    std::wstring base = quoteProgram(tool) + L" sign /fd SHA256";
    switch (options.source) {
    case SigningSource::PfxFile:
        base += L" /f " + quoteArgument(options.pfxPath);
        if (!options.pfxPassword.empty()) base += L" /p " + quoteArgument(options.pfxPassword);
        break;
    case SigningSource::Store: {
        std::wstring thumbprint;
        if (!normalizeThumbprint(options.thumbprint, thumbprint)) thumbprint = trim(options.thumbprint);
        base += L" /sha1 " + quoteArgument(thumbprint);
        if (options.machineStore) base += L" /sm";
        break;
    }
    case SigningSource::Automatic:
        base += L" /a";
        if (options.machineStore) base += L" /sm";
        break;
    case SigningSource::Plugin:
        base += L" /dlib " + quoteArgument(trim(options.pluginPath)) + L" /dmdf " +
                quoteArgument(trim(options.pluginMetadataPath));
        break;
    case SigningSource::Command: // the operator's tool, never signtool
        break;
    }
    if (!productName.empty()) {
        std::wstring description = productName;
        std::replace(description.begin(), description.end(), L'"', L'\'');
        base += L" /d " + quoteArgument(description);
    }
    SignCommands commands;
    const std::wstring target = L" " + quoteArgument(file);
    for (const std::wstring& server : timestampServers(options))
        commands.timestamped.push_back(base + L" /tr " + quoteArgument(server) + L" /td SHA256" + target);
    commands.plain = base + target;
    return commands;
}

bool makeOperatorCommand(std::wstring_view pattern, const std::wstring& file, const EnvironmentLookup& lookup,
                         OperatorCommand& command, std::wstring& message) {
    if (pattern.find(kFilePlaceholder) == std::wstring_view::npos) {
        message = L"İmza komutunda " + std::wstring(kFilePlaceholder) + L" yer tutucusu yok.";
        return false;
    }
    OperatorCommand out;
    std::wstring& line = out.commandLine;
    for (size_t at = 0; at < pattern.size();) {
        // Quotes the operator put around a placeholder or variable give way to the rules' own quoting.
        const bool quoted = pattern[at] == L'"';
        const size_t inner = at + (quoted ? 1 : 0);
        if (startsWithAt(pattern, inner, kFilePlaceholder)) {
            const size_t end = inner + kFilePlaceholder.size();
            if (!quoted || startsWithAt(pattern, end, L"\"")) {
                line += quoteArgument(file);
                at = end + (quoted ? 1 : 0);
                continue;
            }
        }
        if (inner < pattern.size() && pattern[inner] == L'%') {
            const size_t close = pattern.find(L'%', inner + 1);
            const std::wstring_view name = close == std::wstring_view::npos
                                               ? std::wstring_view()
                                               : pattern.substr(inner + 1, close - inner - 1);
            const bool closedQuote =
                quoted && close != std::wstring_view::npos && startsWithAt(pattern, close + 1, L"\"");
            if (isVariableName(name) && (!quoted || closedQuote)) {
                std::wstring value;
                if (!lookup(std::wstring(name), value)) {
                    message = L"İmza komutundaki ortam değişkeni tanımlı değil: " + std::wstring(name);
                    return false;
                }
                line += quoted ? quoteArgument(value) : value;
                if (value.size() >= kShortestSecret) out.secrets.push_back(value);
                at = close + 1 + (quoted ? 1 : 0);
                continue;
            }
        }
        line += pattern[at++];
    }
    command = std::move(out);
    return true;
}

std::wstring maskSecrets(std::wstring text, const std::vector<std::wstring>& secrets) {
    // Longest first, so that a secret holding a shorter one is masked whole.
    std::vector<std::wstring> ordered(secrets);
    std::sort(ordered.begin(), ordered.end(),
              [](const auto& a, const auto& b) { return a.size() > b.size(); });
    for (const std::wstring& secret : ordered) {
        if (secret.empty()) continue;
        for (size_t at = text.find(secret); at != std::wstring::npos; at = text.find(secret, at + 3))
            text.replace(at, secret.size(), L"***");
    }
    return text;
}

} // namespace nv
