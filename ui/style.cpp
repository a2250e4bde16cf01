#include "ui/style.h"

namespace nv::ui {

Rgb blend(Rgb a, Rgb b, int percent) {
    auto mix = [percent](int x, int y) { return (x + (y - x) * percent / 100) & 0xFF; };
    return rgb(mix(red(a), red(b)), mix(green(a), green(b)), mix(blue(a), blue(b)));
}

int scaleLength(int length, int dpi) {
    if (dpi <= 0) dpi = 96;
    long long product = static_cast<long long>(length) * dpi;
    long long rounded = product >= 0 ? (product + 48) / 96 : -((-product + 48) / 96);
    return static_cast<int>(rounded);
}

const FontSpec& fontSpec(int font) {
    static const FontSpec specs[kFontCount] = {
        {L"Segoe UI", 13, 400}, {L"Segoe UI", 13, 600}, {L"Segoe UI", 12, 400}, {L"Segoe UI", 12, 600},
        {L"Segoe UI", 11, 400}, {L"Segoe UI", 21, 600}, {L"Segoe UI", 16, 600}, {L"Segoe UI", 14, 600},
        {L"Consolas", 12, 400}, {L"Segoe UI", 18, 600},
    };
    return specs[(font >= 0 && font < kFontCount) ? font : 0];
}

} // namespace nv::ui
