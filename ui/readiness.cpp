#include "ui/readiness.h"

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

    if (!in.signing)
        rows.push_back({L"İmza", L"Kapalı — isteğe bağlı", true});
    else if (trim(in.certificatePath).empty())
        rows.push_back({L"İmza", L"Sertifika seçilmedi", false, false, kCikti, kFieldPfx});
    else
        rows.push_back({L"İmza", pathFileName(trim(in.certificatePath)), true});

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
