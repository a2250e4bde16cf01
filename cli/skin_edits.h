#pragma once
// The operator's edits of a skin given as options (compose and build take the same ones): what the builder's
// fields would change before a build.

#include "cli/nvbuild.h"
#include "skin/workspace.h"

#include <array>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace nv {

struct LinkEdit {
    std::string id;
    std::wstring url;
};

// What is not given stays as imported.
struct SkinEdits {
    std::optional<std::wstring> configUrl, newsUrl, feedUrl, title, runArgs;
    std::optional<int> connections, segmentMb;
    std::optional<bool> closeOnStart, autoStart, allowError, browserEmulation;
    std::vector<LinkEdit> links;
};

inline constexpr OptionSpec kSkinEditOptions[] = {
    {L"--config-url", L"URL"},     {L"--news-url", L"URL"},   {L"--feed-url", L"URL"},
    {L"--title", L"TEXT"},         {L"--conn", L"N"},         {L"--seg", L"N"},
    {L"--close-on-start", L"0|1"}, {L"--auto-start", L"0|1"}, {L"--allow-error", L"0|1"},
    {L"--browser-emu", L"0|1"},    {L"--run-args", L"TEXT"},  {L"--link", L"ID=URL", true},
};

// A command's own options followed by the edit options.
template <size_t N>
constexpr std::array<OptionSpec, N + std::size(kSkinEditOptions)>
withSkinEditOptions(const OptionSpec (&own)[N]) {
    std::array<OptionSpec, N + std::size(kSkinEditOptions)> out{};
    for (size_t i = 0; i < N; ++i)
        out[i] = own[i];
    for (size_t i = 0; i < std::size(kSkinEditOptions); ++i)
        out[N + i] = kSkinEditOptions[i];
    return out;
}

// The help lines of those options.
inline constexpr std::wstring_view kSkinEditsHelp =
    L"Düzenlemeler (verilmeyen değer skinden okunduğu gibi kalır; değerler satır sonu içeremez):\n"
    L"  --config-url URL      sunucu yapılandırmasının adresi (adres dosyasında remoteConfigPath)\n"
    L"  --news-url URL        haber sayfasının adresi (dil dosyasında LAUNCHER_IFRAME ve LAUNCHER_NEW_URL)\n"
    L"  --feed-url URL        sunucu durumu beslemesi (skin.xml'de feed_url); yalnızca kimliği FEED_ ile\n"
    L"                        başlayan kontrolleri olan skinlerde yazılır\n"
    L"  --title TEXT          patcher penceresinin başlığı\n"
    L"  --conn N              eşzamanlı indirme bağlantısı sayısı, 1..8\n"
    L"  --seg N               büyük dosyaların parça boyutu, MB cinsinden, 1..64\n"
    L"  --close-on-start 0|1  oyun açılınca patcher kapansın\n"
    L"  --auto-start 0|1      güncelleme bitince oyun kendiliğinden başlasın\n"
    L"  --allow-error 0|1     güncelleme başarısızsa da oyun başlatılabilsin\n"
    L"  --browser-emu 0|1     haber sayfası IE11 kipinde açılsın\n"
    L"  --run-args TEXT       oyunun exe'sine verilecek argümanlar\n"
    L"  --link ID=URL         kimliği ID olan butonun açacağı adres (kimlikte büyük/küçük harf fark etmez);\n"
    L"                        tekrarlanabilir. Butonun link_url'ü bir dil anahtarıysa adres dil dosyasına o\n"
    L"                        anahtarla yazılır, değilse skin.xml'e. Skinde o kimlikte buton yoksa çıkış "
    L"1.\n"
    L"Skinde yeri olmayan adres (dil dosyası, remoteConfigPath ya da FEED_ kontrolü yoksa) yazılmaz; her "
    L"biri\n"
    L"için standart hataya bir \"Not: \" satırı yazılır.\n";

// Reads the options into edits. On a value out of its range or form, error says which and why.
bool readSkinEdits(const Invocation& invocation, SkinEdits& edits, std::wstring& error);

// The edits land where the builder's fields would put them; a link for an id without a button is refused.
bool applySkinEdits(const SkinEdits& edits, SkinWorkspace& workspace, std::wstring& error);

// The given edits that this skin offers no place for, so that composing would drop them: a news address
// without a locale file, a configuration address without an address file that carries remoteConfigPath, a
// feed address without FEED_ controls. One line each, for a note on standard error.
std::vector<std::wstring> editsWithoutPlace(const SkinEdits& edits, const SkinWorkspace& workspace);

} // namespace nv
