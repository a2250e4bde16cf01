#include "renderer/win32/fallback_faces.h"

#include <windows.h>

#include <algorithm>
#include <memory>
#include <string_view>

namespace nv {
namespace {

// Enough to get past a few families GDI+ will not open; a system lists hundreds.
constexpr size_t kMaxFamiliesPerKind = 16;

struct DcDelete {
    void operator()(HDC dc) const { DeleteDC(dc); }
};

void addFace(std::vector<std::wstring>& faces, std::wstring_view face) {
    if (face.empty() || face.front() == L'@') return; // '@': the vertical-writing twin of a family
    if (std::find(faces.begin(), faces.end(), face) == faces.end()) faces.emplace_back(face);
}

// The message font's face as named, then as GDI realises it on this system.
void addMessageFont(HDC dc, std::vector<std::wstring>& faces) {
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    if (!SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0)) return;
    addFace(faces, metrics.lfMessageFont.lfFaceName);
    HFONT font = CreateFontIndirectW(&metrics.lfMessageFont);
    if (!font) return;
    const HGDIOBJ previous = SelectObject(dc, font);
    wchar_t realised[LF_FACESIZE] = {};
    if (GetTextFaceW(dc, LF_FACESIZE, realised) > 0) addFace(faces, realised);
    SelectObject(dc, previous);
    DeleteObject(font);
}

// Every family once per character set it covers, as GDI enumerates them for DEFAULT_CHARSET.
struct InstalledFamilies {
    std::vector<std::wstring> turkish, other;
};

int CALLBACK collectFamily(const LOGFONTW* font, const TEXTMETRICW*, DWORD, LPARAM param) {
    auto& found = *reinterpret_cast<InstalledFamilies*>(param);
    if (font->lfCharSet == SYMBOL_CHARSET) return 1; // pictures in place of letters
    std::vector<std::wstring>& list = font->lfCharSet == TURKISH_CHARSET ? found.turkish : found.other;
    if (list.size() < kMaxFamiliesPerKind) addFace(list, font->lfFaceName);
    return 1;
}

std::vector<std::wstring> findFallbackFaces() {
    std::vector<std::wstring> faces;
    std::unique_ptr<std::remove_pointer_t<HDC>, DcDelete> dc(CreateCompatibleDC(nullptr));
    if (!dc) return faces;
    addMessageFont(dc.get(), faces);
    InstalledFamilies installed;
    LOGFONTW all{};
    all.lfCharSet = DEFAULT_CHARSET;
    EnumFontFamiliesExW(dc.get(), &all, collectFamily, reinterpret_cast<LPARAM>(&installed), 0);
    for (const std::wstring& face : installed.turkish)
        addFace(faces, face);
    for (const std::wstring& face : installed.other)
        addFace(faces, face);
    return faces;
}

} // namespace

const std::vector<std::wstring>& fallbackFaces() {
    static const std::vector<std::wstring> faces = findFallbackFaces();
    return faces;
}

} // namespace nv
