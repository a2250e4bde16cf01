// nvbuild keygen: the update key pair that patchers check the server's file lists with.

#include "cli/list_signing.h"
#include "core/files.h"
#include "core/text.h"
#include "update/update_key.h"

namespace nv {
namespace {

int commandKeygen(const Invocation& invocation, Console& console) {
    update::Crypto* crypto = update::systemCrypto();
    if (!crypto) return failed(console, kNoCryptoMessage);
    const std::wstring base = absolutePath(invocation.arguments[0]);
    const std::wstring privatePath = base + L".key", publicPath = base + L".pub";
    // A private key overwritten is every patcher built with its public half stranded.
    for (const std::wstring& path : {privatePath, publicPath})
        if (fileExists(path))
            return failed(console, L"Zaten var, üzerine yazılmaz: " + path + L" (başka bir ad verin)");
    update::PrivateKey key;
    std::string error;
    if (!crypto->generate(key, error)) return failed(console, L"Anahtar üretilemedi: " + utf8ToWide(error));
    const std::string privateText = update::privateKeyText(key),
                      publicText = update::publicKeyText(key.publicKey);
    if (!writeFileAtomic(privatePath, privateText.data(), privateText.size()))
        return failed(console, L"Yazılamadı: " + privatePath + L" — " + systemErrorText(lastSystemError()));
    if (!writeFileAtomic(publicPath, publicText.data(), publicText.size()))
        return failed(console, L"Yazılamadı: " + publicPath + L" — " + systemErrorText(lastSystemError()));
    console.outLine(publicPath + L": açık anahtar; nvbuild build --update-key ile patcher'a gömülür");
    console.outLine(privatePath + L": özel anahtar; gizli tutun ve yedekleyin, sunucuya yüklemeyin");
    console.outLine(L"Anahtar: " + utf8ToWide(update::keyLabel(key.publicKey)));
    return kExitOk;
}

constexpr std::wstring_view kKeygenArguments[] = {L"NAME"};

} // namespace

const Command kKeygenCommand{
    L"keygen",
    L"Güncelleme anahtarı üretir: NAME.key (gizli) ve NAME.pub (patcher'a gömülür).",
    L"keygen NAME",
    L"Argümanlar:\n"
    L"  NAME  anahtar dosyalarının yolu, uzantısız: NAME.key ve NAME.pub yazılır\n"
    L"\n"
    L"ECDSA P-256 anahtar çifti, Windows'un kendi şifrelemesiyle (CNG) üretilir. NAME.pub'ı\n"
    L"`nvbuild build --update-key NAME.pub` patcher'a gömer; NAME.key ile `nvbuild crclist --sign`\n"
    L"listeleri imzalar. Özel anahtarı gizli tutun ve yedekleyin: kaybolursa bu patcher'lara yeni\n"
    L"güncelleme imzalanamaz. Var olan dosyaların üzerine yazılmaz (çıkış 1).\n",
    kKeygenArguments,
    {},
    commandKeygen,
};

} // namespace nv
