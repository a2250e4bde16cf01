// nvbuild entry point of the native build (arguments arrive as UTF-8).

#include "cli/guarded_main.h"
#include "cli/nvbuild.h"
#include "core/text.h"

int main(int argc, char** argv) {
    return nv::runGuarded([&] {
        std::vector<std::wstring> args;
        for (int i = 1; i < argc; ++i)
            args.push_back(nv::utf8ToWide(argv[i]));
        return nv::runNvbuild(args, nv::processConsole());
    });
}
