// nvbuild pack / list / unpack: skin packages on disk.

#include "cli/nvbuild.h"
#include "cli/skin_input.h"
#include "cli/text_columns.h"
#include "core/crc32.h"
#include "core/files.h"
#include "core/paths.h"
#include "core/text.h"
#include "skin/package.h"
#include "skin/workspace.h"

#include <cstdio>

namespace nv {
namespace {

// Entry names come from the package as they stand; only a bare file name may become a file in the folder,
// only one that Windows keeps as it is (it drops a trailing dot or space, so two entries could meet), and
// only a kind of file a skin holds: a stranger's package must not drop "run.bat" or "desktop.ini" into a
// folder.
bool isSafeFileName(const std::string& name) {
    return isKeptFileName(name) && !skinFileName(utf8ToWide(name)).empty();
}

std::wstring writeFailure(const std::wstring& path) {
    return L"Yazılamadı: " + path + L" — " + systemErrorText(lastSystemError());
}

int commandPack(const Invocation& invocation, Console& console) {
    const std::wstring& source = invocation.arguments[0];
    const std::wstring& out = invocation.arguments[1];
    std::wstring message;
    if (!requireExisting(source, message)) return failed(console, message);
    if (!folderExists(source) && !endsWithIgnoreCase(std::wstring_view(source), std::wstring_view(L".zip")))
        return failed(console, L"Klasör ya da .zip değil: " + source);
    if (!checkPackageOutput(source, out, message)) return failed(console, message);
    // Loaded as the builder loads a source, so a set without skin.xml (which no patcher could show) is
    // refused as the builder refuses it.
    SkinWorkspace workspace;
    if (!workspace.loadSkinSource(source, message)) return failed(console, message);
    if (!message.empty()) console.errLine(L"Not: " + unreadableWithCause(message));

    // What the patcher's reader would refuse (more files than a package holds) is not written at all.
    Bytes package;
    if (!packSkinFiles(workspace.files, package, &message)) return failed(console, message);
    if (!writeFileAtomic(out, package)) return failed(console, writeFailure(out));
    return kExitOk;
}

int commandList(const Invocation& invocation, Console& console) {
    SkinFileSet files;
    std::wstring message;
    if (!readSkinFile(invocation.arguments[0], files, message)) return failed(console, message);
    for (const SkinEntry& entry : files.entries) {
        char head[48];
        std::snprintf(head, sizeof head, "%llu\t%08X\t", static_cast<unsigned long long>(entry.data.size()),
                      Crc32::of(entry.data.data(), entry.data.size()));
        console.outLine(widenAscii(head) + printable(utf8ToWide(entry.name)));
    }
    return kExitOk;
}

int commandUnpack(const Invocation& invocation, Console& console) {
    SkinFileSet files;
    std::wstring message;
    if (!readSkinFile(invocation.arguments[0], files, message)) return failed(console, message);
    // Every name is checked before anything is written, so a bad package leaves the folder as it was.
    for (const SkinEntry& entry : files.entries)
        if (!isSafeFileName(entry.name))
            return failed(console, L"Geçersiz dosya adı: " + utf8ToWide(entry.name));

    const std::wstring& folder = invocation.arguments[1];
    if (!createFolders(folder)) return failed(console, L"Klasör oluşturulamadı: " + folder);
    for (const SkinEntry& entry : files.entries) {
        std::wstring path = pathJoin(folder, utf8ToWide(entry.name));
        if (!writeFileAtomic(path, entry.data)) return failed(console, writeFailure(path));
    }
    return kExitOk;
}

constexpr std::wstring_view kPackArguments[] = {L"SOURCE", L"OUT"};
constexpr std::wstring_view kListArguments[] = {L"PACKAGE"};
constexpr std::wstring_view kUnpackArguments[] = {L"PACKAGE", L"DIR"};

} // namespace

const Command kPackCommand{
    L"pack",
    L"Skin klasörünü ya da .zip'ini bir skin paketine (.nvsk) yazar.",
    L"pack SOURCE OUT",
    L"Argümanlar:\n"
    L"  SOURCE  skin klasörü (yalnızca doğrudan içindeki dosyalar okunur) ya da .zip arşivi\n"
    L"  OUT     yazılacak paket dosyası (örneğin skin.nvsk); yalnızca başarıda yazılır. Varsa yalnızca bir "
    L"skin\n"
    L"          paketinin (ya da boş bir dosyanın) yerine geçer: .zip, exe ya da görselin üzerine yazılmaz\n"
    L"\n"
    L"Yalnızca skin dosyaları alınır (.png .jpg .jpeg .bmp .gif .ico .xml .ini .txt); adlar küçük harfe\n"
    L"çevrilir, klasör yapısı düzleşir. Sınırlar: dosya başına 32 MB, toplamda 64 MB, en çok 4096 dosya.\n"
    L"Klasördeki okunamayan bir dosya \"Not: \" satırıyla standart hataya yazılır; paket onsuz yazılır.\n",
    kPackArguments,
    {},
    commandPack,
};

const Command kListCommand{
    L"list",
    L"Paketteki dosyaları boyut, CRC-32 ve adlarıyla listeler.",
    L"list PACKAGE",
    L"Argümanlar:\n"
    L"  PACKAGE  skin paketi (.nvsk) ya da (Windows'ta) skin taşıyan patcher .exe\n"
    L"\n"
    L"Her dosya için bir satır, sekmeyle ayrılmış: boyut (bayt), CRC-32 (8 onaltılık hane), ad.\n",
    kListArguments,
    {},
    commandList,
};

const Command kUnpackCommand{
    L"unpack",
    L"Paketteki dosyaları bir klasöre çıkarır.",
    L"unpack PACKAGE DIR",
    L"Argümanlar:\n"
    L"  PACKAGE  skin paketi (.nvsk) ya da (Windows'ta) skin taşıyan patcher .exe\n"
    L"  DIR      dosyaların yazılacağı klasör; yoksa oluşturulur, aynı adlı dosyaların yerine geçilir\n"
    L"\n"
    L"Paketteki bir ad güvenli bir dosya adı değilse hiçbir dosya yazılmaz.\n",
    kUnpackArguments,
    {},
    commandUnpack,
};

} // namespace nv
