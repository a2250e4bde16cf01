#include "cli/nvbuild.h"

#include "core/files.h"

#include <algorithm>

namespace nv {
namespace {

constexpr const Command* kCommands[] = {
    &kPackCommand,   &kListCommand,  &kUnpackCommand,  &kInspectCommand, &kLintCommand,   &kComposeCommand,
    &kRenderCommand, &kBuildCommand, &kCrclistCommand, &kFeedCommand,    &kKeygenCommand,
};

constexpr std::wstring_view kHelpSummary = L"Bir komutun ayrıntılı yardımını gösterir.";

const Command* findCommand(std::wstring_view name) {
    for (const Command* command : kCommands)
        if (command->name == name) return command;
    return nullptr;
}

const OptionSpec* findOption(const Command& command, std::wstring_view name) {
    for (const OptionSpec& option : command.options)
        if (option.name == name) return &option;
    return nullptr;
}

std::wstring padded(std::wstring_view text, size_t width) {
    std::wstring out(text);
    if (out.size() < width) out.append(width - out.size(), L' ');
    return out;
}

void printOverview(Console& console) {
    size_t width = 4; // "help"
    for (const Command* command : kCommands)
        width = std::max(width, command->name.size());
    console.outLine(L"nvbuild: Norvane skinlerini paketler, inceler, denetler ve oluşturmaya hazırlar.");
    console.outLine(L"");
    console.outLine(L"Kullanım: nvbuild COMMAND [ARGÜMANLAR] [SEÇENEKLER]");
    console.outLine(L"");
    console.outLine(L"Komutlar:");
    for (const Command* command : kCommands)
        console.outLine(L"  " + padded(command->name, width + 2) + std::wstring(command->summary));
    console.outLine(L"  " + padded(L"help", width + 2) + std::wstring(kHelpSummary));
    console.outLine(L"");
    console.outLine(L"Bir komutun ayrıntıları: nvbuild help COMMAND  (ya da nvbuild COMMAND --help)");
    console.outLine(L"Çıkış kodları: 0 başarılı, 1 işlem başarısız (nedeni standart hatada), 2 komut satırı "
                    L"hatalı, 3 oluşturma Ctrl-C ile durduruldu.");
    console.outLine(
        L"SOURCE olarak verilen skin: klasör ya da .zip (oluşturucunun yüklediği gibi), skin paketi "
        L"ya da (Windows'ta) skin taşıyan bir patcher .exe.");
}

int printHelp(const Command& command, Console& console) {
    console.outLine(L"Kullanım: nvbuild " + std::wstring(command.usage));
    console.outLine(L"");
    console.outLine(command.summary);
    console.outLine(L"");
    console.out(command.help);
    if (!command.help.empty() && command.help.back() != L'\n') console.out(L"\n");
    return kExitOk;
}

// What is wrong, then every command's short usage: the line for a command line without a known command.
int generalUsageError(Console& console, std::wstring_view message) {
    console.errLine(message);
    console.errLine(L"Kullanım:");
    for (const Command* command : kCommands)
        console.errLine(L"  nvbuild " + std::wstring(command->usage));
    console.errLine(L"  nvbuild help [COMMAND]");
    console.errLine(L"Ayrıntılar: nvbuild --help");
    return kExitUsage;
}

int runHelp(const std::vector<std::wstring>& args, Console& console) {
    if (args.size() > 2) return generalUsageError(console, L"Fazla argüman: " + args[2]);
    if (args.size() == 1) {
        printOverview(console);
        return kExitOk;
    }
    // "help" is listed among the commands, so its own help is the overview.
    if (args[1] == L"help" || args[1] == L"--help" || args[1] == L"-h") {
        printOverview(console);
        return kExitOk;
    }
    const Command* command = findCommand(args[1]);
    if (!command) return generalUsageError(console, L"Bilinmeyen komut: " + args[1]);
    return printHelp(*command, console);
}

bool holdsLineBreak(std::wstring_view value) {
    return value.find_first_of(L"\r\n") != std::wstring_view::npos;
}

// Options may come anywhere after the command's name; anything that starts with '-' (and is not a lone '-')
// is taken for one, everything else fills the positional arguments in order.
int parseAndRun(const Command& command, std::span<const std::wstring> args, Console& console) {
    Invocation invocation(command);
    for (size_t i = 0; i < args.size(); ++i) {
        const std::wstring& arg = args[i];
        if (arg == L"--help" || arg == L"-h") return printHelp(command, console);
        if (arg.size() > 1 && arg[0] == L'-') {
            const OptionSpec* option = findOption(command, arg);
            if (!option) return invocation.usageError(console, L"Bilinmeyen seçenek: " + arg);
            if (!option->repeatable && invocation.has(arg))
                return invocation.usageError(console, L"Seçenek iki kez verildi: " + arg);
            GivenOption given{arg, {}, {}};
            const size_t count = option->value.empty()                                 ? 0
                                 : option->value.find(L' ') == std::wstring_view::npos ? 1
                                                                                       : 2;
            for (size_t n = 0; n < count; ++n) {
                if (i + 1 >= args.size()) return invocation.usageError(console, L"Değer eksik: " + arg);
                std::wstring& value = n == 0 ? given.value : given.second;
                value = args[++i];
                // The values end up as lines of norvane.ini and values in XML files; a line break would let
                // one value write another setting.
                if (holdsLineBreak(value))
                    return invocation.usageError(console, L"Satır sonu içeren değer: " + arg);
            }
            invocation.options.push_back(std::move(given));
        } else if (invocation.arguments.size() < command.arguments.size()) {
            // An empty path would name the current folder (or nothing): what a script with an unset variable
            // passes, never what an operator means.
            if (arg.empty())
                return invocation.usageError(
                    console, L"Boş argüman: " + std::wstring(command.arguments[invocation.arguments.size()]));
            invocation.arguments.push_back(arg);
        } else {
            return invocation.usageError(console, L"Fazla argüman: " + arg);
        }
    }
    const bool mayLeaveOut =
        !command.argumentsOptionalWith.empty() && invocation.has(command.argumentsOptionalWith);
    if (invocation.arguments.size() < command.arguments.size() && !mayLeaveOut)
        return invocation.usageError(
            console, L"Eksik argüman: " + std::wstring(command.arguments[invocation.arguments.size()]));
    return command.run(invocation, console);
}

} // namespace

bool Invocation::has(std::wstring_view option) const {
    return std::any_of(options.begin(), options.end(),
                       [&](const GivenOption& o) { return o.name == option; });
}

const std::wstring* Invocation::value(std::wstring_view option) const {
    for (const GivenOption& o : options)
        if (o.name == option) return &o.value;
    return nullptr;
}

std::vector<std::wstring> Invocation::values(std::wstring_view option) const {
    std::vector<std::wstring> out;
    for (const GivenOption& o : options)
        if (o.name == option) out.push_back(o.value);
    return out;
}

std::vector<GivenOption> Invocation::uses(std::wstring_view option) const {
    std::vector<GivenOption> out;
    for (const GivenOption& o : options)
        if (o.name == option) out.push_back(o);
    return out;
}

int Invocation::usageError(Console& console, std::wstring_view message) const {
    console.errLine(message);
    console.errLine(L"Kullanım: nvbuild " + std::wstring(command_.usage));
    console.errLine(L"Ayrıntılar: nvbuild help " + std::wstring(command_.name));
    return kExitUsage;
}

std::span<const Command* const> nvbuildCommands() {
    return kCommands;
}

int failed(Console& console, std::wstring_view message) {
    console.errLine(message);
    return kExitFailed;
}

bool requireExisting(const std::wstring& path, std::wstring& message) {
    if (fileExists(path) || folderExists(path)) return true;
    message = L"Bulunamadı: " + path;
    return false;
}

int runNvbuild(const std::vector<std::wstring>& args, Console& console) {
    if (args.empty()) return generalUsageError(console, L"Eksik argüman: COMMAND");
    const std::wstring& name = args[0];
    if (name == L"--help" || name == L"-h" || name == L"help") return runHelp(args, console);
    const Command* command = findCommand(name);
    if (!command) {
        if (name.size() > 1 && name[0] == L'-')
            return generalUsageError(console, L"Bilinmeyen seçenek: " + name);
        return generalUsageError(console, L"Bilinmeyen komut: " + name);
    }
    return parseAndRun(*command, std::span(args).subspan(1), console);
}

} // namespace nv
