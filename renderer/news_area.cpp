#include "renderer/news_area.h"

#include <algorithm>
#include <cmath>

namespace nv {
namespace {

constexpr int kSidePadding = 10;
constexpr int kTopPadding = 6;

} // namespace

std::vector<NewsRow> newsRows(const SkinControl& area, size_t count) {
    std::vector<NewsRow> rows;
    const Box box = Box::at(area.x, area.y, area.width, area.height);
    if (box.empty()) return rows;
    // A line and a half of the text's size, and never less than a text control of that size is high.
    const double em = double(area.size) * 96.0 / 72.0;
    const int64_t lineHeight = std::max<int64_t>(area.size + 6, std::llround(em * 1.75));
    // "14.05.2024": eight digits of up to 0.64 em (DejaVu Sans; Tahoma's are narrower), two dots and the
    // sixth of an em GDI+ leaves on either side of a string, then a gap before the title.
    const int64_t dateWidth = int64_t(std::ceil(em * 6.6)), gap = int64_t(std::ceil(em * 0.75));
    const int64_t left = box.x0 + kSidePadding, right = box.x1 - kSidePadding;
    if (right <= left) return rows;
    // The title keeps room for at least a few letters; a narrower area shows titles only.
    const bool dated = right - left - dateWidth - gap >= int64_t(std::ceil(em * 4));
    for (int64_t top = box.y0 + kTopPadding; rows.size() < count && top + lineHeight <= box.y1 - kTopPadding;
         top += lineHeight) {
        NewsRow row;
        row.row = {left, top, right, top + lineHeight};
        row.title = dated ? Box{left, top, right - dateWidth - gap, top + lineHeight} : row.row;
        if (dated) row.date = {right - dateWidth, top, right, top + lineHeight};
        rows.push_back(row);
    }
    return rows;
}

} // namespace nv
