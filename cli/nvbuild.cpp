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
};

} // namespace

int usage(Console& console) {
    console.err(L"Kullanim:\n"
                L"  nvbuild pack KAYNAK CIKTI.nvsk      klasor ya da .zip skini pakete yazar\n"
                L"  nvbuild list PAKET                  paketin dosyalarini listeler (boyut, CRC-32, ad)\n"
                L"  nvbuild unpack PAKET KLASOR         paketin dosyalarini klasore cikarir\n");
    return kExitUsage;
}

int runNvbuild(const std::vector<std::wstring>& args, Console& console) {
    if (args.empty()) return usage(console);
    for (const Command& command : kCommands)
        if (args[0] == command.name) return command.run({args.begin() + 1, args.end()}, console);
    return usage(console);
}

} // namespace nv
