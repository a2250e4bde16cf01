#pragma once
// Replacements of byte spans in a text, for the writers that change a skin's files in place: every byte
// outside the spans stays as it was.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace nv {

struct TextEdit {
    size_t begin; // the span [begin, end) of the source; begin == end inserts
    size_t end;
    std::string replacement;
};

// Applies the edits in order of position. An edit that overlaps an earlier one, or lies outside the text, is
// dropped, so no byte is ever replaced twice.
std::string applyTextEdits(std::string_view text, std::vector<TextEdit> edits);

} // namespace nv
