#pragma once
// Rows of cells printed in aligned columns, for the human-readable reports of nvbuild.

#include "cli/console.h"

#include <string>
#include <string_view>
#include <vector>

namespace nv {

// The text with every control character (line breaks, tabs, escape sequences) shown as '?': names and texts
// from a stranger's skin must not break a report's lines and columns or drive the terminal.
std::wstring printable(std::wstring_view text);

class TextColumns {
public:
    void row(std::vector<std::wstring> cells) {
        for (std::wstring& cell : cells)
            cell = printable(cell);
        rows_.push_back(std::move(cells));
    }
    // Every column but the last is padded to its widest cell, with two spaces between columns.
    void print(Console& console) const;

private:
    std::vector<std::vector<std::wstring>> rows_;
};

} // namespace nv
