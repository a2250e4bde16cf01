#include "cli/nvbuild.h"

#include <string_view>

namespace nv {
namespace {

struct Command {
    std::wstring_view name;
    int (*run)(const std::vector<std::wstring>&, Console&);
};

constexpr Command kCommands[] = {
    {L"pack", commandPack},
    {L"list", commandList},
    {L"unpack", commandUnpack},
    {L"inspect", commandInspect},
    {L"compose", commandCompose},
};

} // namespace

int usage(Console& console) {
    console.err(L"Kullanim:\n"
                L"  nvbuild pack KAYNAK CIKTI.nvsk      klasor ya da .zip skini pakete yazar\n"
                L"  nvbuild list PAKET                  paketin dosyalarini listeler (boyut, CRC-32, ad)\n"
                L"  nvbuild unpack PAKET KLASOR         paketin dosyalarini klasore cikarir\n"
                L"  nvbuild inspect KAYNAK [--json]     skinin icerigini ve uyarilarini gosterir\n"
                L"  nvbuild compose KAYNAK CIKTI.nvsk [duzenlemeler]\n"
                L"      olusturmanin gomecegi skin paketini yazar; duzenlemeler:\n"
                L"      --config-url ADRES  --news-url ADRES  --feed-url ADRES  --title METIN\n"
                L"      --conn 1..8  --seg 1..64  --close-on-start 0|1  --auto-start 0|1\n"
                L"      --allow-error 0|1  --browser-emu 0|1  --run-args METIN  --link KIMLIK=ADRES\n"
                L"KAYNAK: klasor, .zip, skin paketi ya da (Windows'ta) patcher .exe\n");
    return kExitUsage;
}

int runNvbuild(const std::vector<std::wstring>& args, Console& console) {
    if (args.empty()) return usage(console);
    for (const Command& command : kCommands)
        if (args[0] == command.name) return command.run({args.begin() + 1, args.end()}, console);
    return usage(console);
}

} // namespace nv
