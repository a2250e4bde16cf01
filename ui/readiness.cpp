#include "ui/readiness.h"

#include "core/command_line.h"
#include "core/paths.h"
#include "core/text.h"
#include "recipe/addresses.h"
#include "ui/sections.h"

#include <algorithm>
#include <cwchar>

namespace nv::ui {

std::wstring sourceName(std::wstring_view path) {
    while (!path.empty() && isPathSeparator(path.back()))
        path.remove_suffix(1);
    return pathFileName(path);
}

std::vector<ReadinessRow> readinessRows(const ReadinessInputs& in) {
    std::vector<ReadinessRow> rows;
    rows.reserve(6);

    if (!in.skinLoaded) {
        rows.push_back({L"Skin", L"Yüklenmedi — .zip ya da klasör bırakın", false, false, kKaynak});
    } else {
        std::wstring value = sourceName(in.skinSource);
        if (in.skinWidth > 0 && in.skinHeight > 0)
            value += L"  •  " + std::to_wstring(in.skinWidth) + L"×" + std::to_wstring(in.skinHeight);
        rows.push_back({L"Skin", value, true});
    }

    const std::wstring config = trim(in.configUrl);
    if (config.empty())
        rows.push_back(
            {L"Yama adresi", L"Boş — patcher güncelleme alamaz", false, true, kBaglantilar, kFieldConfigUrl});
    else if (!isWebAddress(config))
        rows.push_back({L"Yama adresi", L"Geçersiz adres — http:// ya da https:// ile tam adres yazın", false,
                        true, kBaglantilar, kFieldConfigUrl});
    else
        rows.push_back({L"Yama adresi", config, true});

    const std::wstring output = trim(in.outputPath);
    if (output.empty()) {
        rows.push_back({L"Çıktı yeri", L"Seçilmedi", false, false, kCikti, kFieldOutPath});
    } else if (!in.outputFolderExists) {
        rows.push_back({L"Çıktı yeri", L"Klasör bulunamadı", false, false, kCikti, kFieldOutPath});
    } else {
        const std::wstring name = pathFileName(output);
        const bool exe = endsWithIgnoreCase(std::wstring_view(name), std::wstring_view(L".exe"));
        rows.push_back(
            {L"Çıktı yeri", name + L"  •  " + pathParent(output), exe, false, kCikti, kFieldOutPath});
    }

    if (in.iconPath.empty())
        rows.push_back({L"Simge", L"Şablonun simgesi kullanılacak", true});
    else
        rows.push_back({L"Simge", pathFileName(in.iconPath), true});

    ReadinessRow signing = signingRow(in.signing, in.signingFacts);
    if (!signing.ready) {
        signing.fixSection = kCikti;
        signing.fixField = in.signing.enabled ? kFieldPfx : 0;
    }
    rows.push_back(signing);

    if (in.templateExists)
        rows.push_back({L"Şablon", L"Norvane.Template.exe", true});
    else
        rows.push_back({L"Şablon", L"Norvane.Template.exe yok — build.bat", false});

    std::wstring bad;
    int firstBad = 0;
    for (const ReadinessAddress& address : in.addresses) {
        const std::wstring text = trim(address.text);
        if (text.empty() || isWebAddress(text)) continue;
        if (!bad.empty()) bad += L", ";
        bad += address.name;
        if (!firstBad) firstBad = address.field;
    }
    if (!bad.empty()) rows.push_back({L"Adresler", L"Açılamaz: " + bad, false, true, kBaglantilar, firstBad});
    return rows;
}

ReadinessRow signingRow(const SigningOptions& signing, const SigningFacts& facts) {
    const wchar_t* label = L"İmza";
    if (!signing.enabled) return {label, L"Kapalı — isteğe bağlı", true};
    auto missing = [&](std::wstring value) { return ReadinessRow{label, std::move(value), false}; };
    const std::wstring storeName = signing.machineStore ? L"bilgisayar deposu" : L"kullanıcı deposu";
    std::wstring ready; // the source's own words once it has what it needs
    switch (signing.source) {
    case SigningSource::PfxFile: {
        const std::wstring pfx = trim(signing.pfxPath);
        if (pfx.empty()) return missing(L"Sertifika seçilmedi");
        if (!facts.pfxExists) return missing(L"Sertifika dosyası bulunamadı — yeniden seçin");
        ready = pathFileName(pfx);
        break;
    }
    case SigningSource::Store: {
        std::wstring thumbprint;
        if (trim(signing.thumbprint).empty())
            return missing(L"Parmak izi girilmedi — sertifikanınkini yapıştırın");
        if (!normalizeThumbprint(signing.thumbprint, thumbprint))
            return missing(L"Parmak izi geçersiz — 40 onaltılık rakam olmalı");
        if (!facts.store.found)
            return missing(L"Depoda yok — token'ı takın ya da sertifikayı " + storeName + L"na alın");
        if (!facts.store.hasKey) return missing(L"Özel anahtarı yok — token'ı takın, sürücüsünü kurun");
        ready = facts.store.subject + L"  •  " + storeName;
        break;
    }
    case SigningSource::Automatic:
        ready = L"signtool depodan seçer  •  " + storeName;
        break;
    case SigningSource::Plugin:
        if (trim(signing.pluginPath).empty())
            return missing(L"Eklenti seçilmedi — hizmetin .dll dosyasını seçin");
        if (!facts.pluginExists) return missing(L"Eklenti bulunamadı — yolunu düzeltin");
        if (trim(signing.pluginMetadataPath).empty())
            return missing(L"Eklenti ayar dosyası seçilmedi — hizmetin dosyasını seçin");
        if (!facts.metadataExists) return missing(L"Eklenti ayar dosyası bulunamadı — yolunu düzeltin");
        ready = pathFileName(trim(signing.pluginPath)) + L"  •  " +
                pathFileName(trim(signing.pluginMetadataPath));
        break;
    case SigningSource::Command:
        // The operator's tool needs no signtool.
        if (trim(signing.command).empty()) return missing(L"İmza komutu girilmedi — komutunuzu yazın");
        if (signing.command.find(kFilePlaceholder) == std::wstring::npos)
            return missing(L"Komutta {file} yok — imzalanacak exe'nin yerine yazın");
        if (!facts.unsetVariable.empty())
            return missing(L"%" + facts.unsetVariable +
                           L"% tanımlı değil — tanımlayıp oluşturucuyu yeniden açın");
        return {label, L"Kendi komutunuz: " + pathFileName(programOf(trim(signing.command))), true};
    }
    if (!facts.signtoolFound) return missing(L"signtool.exe yok — Windows SDK'nın imza araçlarını kurun");
    return {label, ready, true};
}

std::wstring readinessHeader(const std::vector<ReadinessRow>& rows) {
    const auto ready = std::count_if(rows.begin(), rows.end(), [](const ReadinessRow& r) { return r.ready; });
    return std::to_wstring(ready) + L" / " + std::to_wstring(rows.size()) + L" hazır";
}

BuildPageState buildPageState(bool skinLoaded, bool building, bool finished, bool succeeded) {
    if (building) return BuildPageState::Building;
    if (finished) return succeeded ? BuildPageState::Done : BuildPageState::Failed;
    return skinLoaded ? BuildPageState::Ready : BuildPageState::NoSkin;
}

std::wstring durationText(uint32_t milliseconds) {
    if (milliseconds < 1000) return L"< 1 sn";
    return std::to_wstring(milliseconds / 1000) + L" sn";
}

std::wstring crcText(uint32_t crc) {
    wchar_t buffer[16];
    std::swprintf(buffer, 16, L"%08X", static_cast<unsigned>(crc));
    return buffer;
}

ChipLook chipLook(int chip, int currentCount, bool hovered) {
    if (chip == currentCount) return {color::kWhite, true, true, color::kAccent};
    if (hovered) return {blend(color::kChip, color::kWhite, 50), false, false, color::kSecondary};
    return {color::kChip, false, false, color::kSecondary};
}

} // namespace nv::ui
