#include "skin/text_edits.h"

#include <algorithm>

namespace nv {

std::string applyTextEdits(std::string_view text, std::vector<TextEdit> edits) {
    std::stable_sort(edits.begin(), edits.end(),
                     [](const TextEdit& a, const TextEdit& b) { return a.begin < b.begin; });
    std::string out;
    out.reserve(text.size());
    size_t copied = 0;
    for (const TextEdit& edit : edits) {
        if (edit.begin < copied || edit.end > text.size() || edit.end < edit.begin) continue;
        out.append(text.substr(copied, edit.begin - copied));
        out += edit.replacement;
        copied = edit.end;
    }
    out.append(text.substr(copied));
    return out;
}

} // namespace nv
