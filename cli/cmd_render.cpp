// nvbuild render: the patcher window as the builder's live preview draws it, as a PNG of the skin's size.

#include "cli/nvbuild.h"
#include "cli/skin_input.h"
#include "core/files.h"
#include "core/text.h"
#include "renderer/png_writer.h"
#include "renderer/preview.h"

#include <new>

namespace nv {
namespace {

int commandRender(const Invocation& invocation, Console& console) {
    const std::vector<GivenOption> stateEdits = invocation.uses(L"--state");
    for (const GivenOption& edit : stateEdits)
        if (edit.value != L"hover" && edit.value != L"pressed")
            return invocation.usageError(console, L"--state hover ya da pressed olmalı: " + edit.value);

    const std::wstring& source = invocation.arguments[0];
    const std::wstring& out = invocation.arguments[1];
    SkinWorkspace workspace;
    std::wstring message, note;
    if (!loadSkinInput(source, workspace, message, note)) return failed(console, message);
    if (outputReplacesSource(source, out, message)) return failed(console, message);
    if (!note.empty()) console.errLine(L"Not: " + note);

    // Composed and loaded exactly as the live preview does it, then drawn with the preview's sample values.
    PatcherScene scene;
    std::vector<ControlState> states;
    LoadMessages messages;
    const bool loaded = prepareLivePreview(workspace, scene, states, messages);
    for (const std::wstring& m : messages.lines())
        console.errLine(m);
    if (!loaded) return kExitFailed;
    if (scene.width < 1 || scene.height < 1) return failed(console, L"Skinin pencere boyutu yok.");
    for (const GivenOption& edit : stateEdits) {
        const int index = findControl(scene, wideToUtf8(edit.second));
        if (index < 0) return failed(console, L"Skinde bu kimlikte kontrol yok: " + edit.second);
        (edit.value == L"pressed" ? states[size_t(index)].pressed : states[size_t(index)].hover) = true;
    }
    if (!rendererDrawsText()) console.errLine(L"Not: bu yapı metin çizmez; metinleri Windows yapısı çizer.");

    PreviewPicture picture;
    Bytes png;
    try {
        if (!drawPicture(scene, states, true, picture)) return failed(console, L"Bellek yetersiz.");
        png = encodePng(picture.pixels.data(), picture.width, picture.height);
    } catch (const std::bad_alloc&) {
        return failed(console, L"Bellek yetersiz.");
    }
    if (!writeFileAtomic(out, png))
        return failed(console, L"Yazılamadı: " + out + L" — " + systemErrorText(lastSystemError()));
    return kExitOk;
}

constexpr std::wstring_view kRenderArguments[] = {L"SOURCE", L"OUT"};
constexpr OptionSpec kRenderOptions[] = {
    {L"--state", L"hover|pressed ID", true},
};

} // namespace

const Command kRenderCommand{
    L"render",
    L"Patcher penceresini canlı önizlemenin çizdiği gibi PNG olarak çizer.",
    L"render SOURCE OUT [--state hover|pressed ID]...",
    L"Argümanlar:\n"
    L"  SOURCE  skin: klasör, .zip, skin paketi ya da (Windows'ta) skin taşıyan patcher .exe\n"
    L"  OUT     yazılacak PNG; skinin pencere boyutunda, saydam kenarlarıyla\n"
    L"\n"
    L"Seçenekler:\n"
    L"  --state hover|pressed ID  kimliği ID olan buton imleç üzerindeymiş (hover) ya da basılıymış "
    L"(pressed)\n"
    L"                            gibi çizilir (kimlikte büyük/küçük harf fark etmez); tekrarlanabilir. "
    L"Skinde\n"
    L"                            o kimlikte kontrol yoksa çıkış 1.\n"
    L"\n"
    L"Skin, oluşturucunun canlı önizlemesindeki gibi derlenir ve önizlemenin örnek değerleriyle çizilir\n"
    L"(ilerleme çubukları %70 ve %45, durum metinleri) ve örnek bir duyuru akışıyla: sunucu çevrimiçi,\n"
    L"oyuncu sayısı ve haber alanında üç başlık. Ağa bağlanılmaz.\n"
    L"Yükleyicinin uyarıları standart hataya yazılır. Linux'taki yerel nvbuild metin çizmez; metinleri\n"
    L"nvbuild.exe (Windows ya da Wine) çizer.\n",
    kRenderArguments,
    kRenderOptions,
    commandRender,
};

} // namespace nv
