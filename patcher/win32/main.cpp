// Norvane.Template.exe: the patcher. It carries no skin of its own; a build writes one into a copy of it as
// resource RT_RCDATA 900, and the copy shows that skin.

#include "core/files.h"
#include "core/text.h"
#include "core/win32/gdiplus_session.h"
#include "patcher/patcher_logic.h"
#include "patcher/win32/headless.h"
#include "patcher/win32/patcher_window.h"
#include "renderer/png_writer.h"
#include "renderer/preview.h"
#include "renderer/scene.h"
#include "skin/locale.h"
#include "skin/skin_import.h"
#include "skin/skin_model.h"
#include "skin/win32/embedded_skin.h"
#include "update/win32/self_update.h"

#include <windows.h>

#include <shellapi.h>

#include <new>
#include <string>
#include <vector>

namespace nv {
namespace {

constexpr int kExitOk = 0;
constexpr int kExitFailed = 1;

std::vector<std::wstring> commandLineArgs() {
    std::vector<std::wstring> args;
    int count = 0;
    LPWSTR* argv = CommandLineToArgvW(GetCommandLineW(), &count);
    if (!argv) return args;
    for (int i = 1; i < count; ++i)
        args.emplace_back(argv[i]);
    LocalFree(argv);
    return args;
}

// In snapshot mode nothing is shown: problems go to the standard error stream (when there is one) as UTF-8.
void writeStderr(const std::wstring& text) {
    HANDLE err = GetStdHandle(STD_ERROR_HANDLE);
    if (err == nullptr || err == INVALID_HANDLE_VALUE) return;
    const std::string bytes = wideToUtf8(text + L"\n");
    DWORD written = 0;
    WriteFile(err, bytes.data(), DWORD(bytes.size()), &written, nullptr);
}

int fail(const PatcherOptions& options, const std::wstring& text) {
    if (options.snap || options.headless) {
        writeStderr(text);
    } else {
        LocaleTable defaults;
        loadLocaleDefaults(defaults);
        MessageBoxW(nullptr, text.c_str(), localeText(defaults, "NOTICE").c_str(), MB_OK | MB_ICONERROR);
    }
    return kExitFailed;
}

// The skin of this very executable, loaded and ready to draw. A missing or damaged skin is reported with the
// built-in text of "ERROR_NO_SKIN" and the reader's or loader's reason on a second line.
bool loadOwnSkin(PatcherScene& scene, UpdateSource& source, std::wstring& message) {
    LocaleTable defaults;
    loadLocaleDefaults(defaults);
    const std::wstring noSkin = localeText(defaults, "ERROR_NO_SKIN");
    SkinFileSet files;
    std::wstring reason;
    if (!readEmbeddedSkin(GetModuleHandleW(nullptr), files, &reason)) {
        message = noSkin + L"\n" + reason;
        return false;
    }
    SkinModel model;
    LoadMessages messages;
    if (!loadSkinModel(files, model, &messages)) {
        message = noSkin + L"\n" + messages.error;
        return false;
    }
    scene = buildScene(model, model.settings);
    source.remoteConfigPath = model.remoteConfigPath;
    source.localConfigPath = model.localConfigPath;
    if (scene.width < 1 || scene.height < 1) {
        message = noSkin;
        return false;
    }
    return true;
}

int snapshot(const PatcherScene& scene, const PatcherOptions& options) {
    PreviewPicture picture;
    if (!drawPicture(scene, startStates(scene, options.preview), /*drawNews=*/true, picture))
        return kExitFailed;
    const Bytes png = encodePng(picture.pixels.data(), picture.width, picture.height);
    if (!writeFileAtomic(options.snapPath, png))
        return fail(options,
                    L"PNG yazılamadı: " + options.snapPath + L"\n" + systemErrorText(lastSystemError()));
    return kExitOk;
}

// --headless draws nothing: the skin's texts, settings and addresses are enough, its pictures are not
// decoded (a second or two under a slow system, on every run of an operator's script).
int headless(const PatcherOptions& options) {
    SkinFileSet files;
    std::wstring reason;
    LocaleTable defaults;
    loadLocaleDefaults(defaults);
    if (!readEmbeddedSkin(GetModuleHandleW(nullptr), files, &reason))
        return fail(options, localeText(defaults, "ERROR_NO_SKIN") + L"\n" + reason);
    SkinTexts texts;
    readSkinTexts(files, texts);
    PatcherScene scene;
    scene.strings = std::move(texts.strings);
    scene.settings = texts.settings;
    update::removeAsideCopy(exePath());
    return runHeadless(scene, UpdateSource{texts.remoteConfigPath, texts.localConfigPath}, options);
}

int run(HINSTANCE instance) {
    const PatcherOptions options = parsePatcherArgs(commandLineArgs());
    if (options.headless) return headless(options);
    GdiplusSession gdiplus; // pictures are decoded and text is drawn with GDI+
    PatcherScene scene;
    UpdateSource source;
    std::wstring message;
    if (!loadOwnSkin(scene, source, message)) return fail(options, message);
    if (options.snap) return snapshot(scene, options);
    // The copy of the previous patcher that a self-update moved aside (a preview touches no file).
    if (!options.preview) update::removeAsideCopy(exePath());

    PatcherWindow window(std::move(scene), options.preview, std::move(source), options.repair);
    if (!window.open(instance, message)) return fail(options, L"Pencere oluşturulamadı.\n" + message);
    MSG msg;
    while (GetMessageW(&msg, nullptr, 0, 0) > 0) {
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
    return int(msg.wParam);
}

} // namespace
} // namespace nv

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int) {
    HeapSetInformation(nullptr, HeapEnableTerminationOnCorruption, nullptr, 0);
    try {
        return nv::run(instance);
    } catch (const std::bad_alloc&) {
        // A skin's pictures are bounded, but the machine may still be short of memory.
        return nv::kExitFailed;
    }
}
