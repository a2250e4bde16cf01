// nvbuild compose: the skin package a build would embed, with the operator's edits given as options.

#include "cli/nvbuild.h"
#include "cli/recipe_options.h"
#include "cli/skin_input.h"
#include "core/files.h"
#include "core/text.h"

namespace nv {
namespace {

int commandCompose(const Invocation& invocation, Console& console) {
    RecipeOptions edits;
    std::wstring error;
    if (!readRecipeOptions(invocation, edits, error)) return invocation.usageError(console, error);

    const std::wstring& source = invocation.arguments[0];
    const std::wstring& out = invocation.arguments[1];
    SkinWorkspace workspace;
    std::wstring message, note;
    if (!loadSkinInput(source, workspace, message, note)) return failed(console, message);
    if (outputReplacesSource(source, out, message)) return failed(console, message);
    if (!note.empty()) console.errLine(L"Not: " + note);
    if (!applySkinEdits(edits, workspace, error)) return failed(console, error);
    for (const std::wstring& line : editsWithoutPlace(edits, workspace))
        console.errLine(L"Not: " + line);

    Bytes package;
    LoadMessages messages;
    bool ok = workspace.buildSkinPackage(package, messages);
    for (const std::wstring& m : messages.lines())
        console.errLine(m);
    if (!ok) return kExitFailed;
    if (!writeFileAtomic(out, package))
        return failed(console, L"Yazılamadı: " + out + L" — " + systemErrorText(lastSystemError()));
    return kExitOk;
}

constexpr std::wstring_view kComposeArguments[] = {L"SOURCE", L"OUT"};

// The help shares the edit options' lines with the build command's.
const std::wstring kComposeHelp =
    std::wstring(
        L"Argümanlar:\n"
        L"  SOURCE  skin: klasör, .zip, skin paketi ya da (Windows'ta) skin taşıyan patcher .exe\n"
        L"  OUT     yazılacak skin paketi (.nvsk); yalnızca skin doğrulanırsa yazılır, varsa yerine geçer\n"
        L"\n") +
    skinEditsHelp() +
    L"\n"
    L"norvane.ini her zaman bu değerlerle baştan yazılır; skin.xml, adres ve dil dosyalarında yalnızca\n"
    L"değişen değerler yerinde düzenlenir. Yükleyicinin uyarıları standart hataya yazılır.\n";

} // namespace

const Command kComposeCommand{
    L"compose",
    L"Oluşturmanın patcher'a gömeceği skin paketini operatörün düzenlemeleriyle yazar.",
    L"compose SOURCE OUT [düzenlemeler]",
    kComposeHelp,
    kComposeArguments,
    kSkinEditOptions,
    commandCompose,
};

} // namespace nv
