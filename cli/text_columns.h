#pragma once
// Rows of cells printed in aligned columns, for the human-readable reports of nvbuild.

#include "cli/console.h"

#include <string>
#include <vector>

namespace nv {

class TextColumns {
public:
    void row(std::vector<std::wstring> cells) { rows_.push_back(std::move(cells)); }
    // Every column but the last is padded to its widest cell, with two spaces between columns.
    void print(Console& console) const;

private:
    std::vector<std::vector<std::wstring>> rows_;
};

} // namespace nv
