#include "cli/text_columns.h"

#include <algorithm>

namespace nv {

std::wstring printable(std::wstring_view text) {
    std::wstring out(text);
    for (wchar_t& c : out)
        if (c < 0x20 || c == 0x7F) c = L'?';
    return out;
}

void TextColumns::print(Console& console) const {
    std::vector<size_t> widths;
    for (const auto& cells : rows_) {
        if (widths.size() < cells.size()) widths.resize(cells.size());
        for (size_t i = 0; i < cells.size(); ++i)
            widths[i] = std::max(widths[i], cells[i].size());
    }
    for (const auto& cells : rows_) {
        std::wstring line;
        for (size_t i = 0; i < cells.size(); ++i) {
            line += cells[i];
            if (i + 1 < cells.size()) line.append(widths[i] - cells[i].size() + 2, L' ');
        }
        // A row whose last cells are empty ends without the padding before them.
        line.erase(line.find_last_not_of(L' ') + 1);
        console.outLine(line);
    }
}

} // namespace nv
