#pragma once
// Where the renderer puts a news area's texts: the arithmetic apart from the drawing, so that the patcher
// finds a clicked headline exactly where it was drawn and tests can check the layout without a text engine.

#include "renderer/composite.h"
#include "skin/skin_model.h"

#include <cstddef>
#include <vector>

namespace nv {

// One line of the area, from its top: a headline's title on the left and its date on the right.
struct NewsRow {
    Box row;   // the whole line: a headline's hit region
    Box title; // left-aligned; the line without the date column
    Box date;  // right-aligned; empty where the area is too narrow to spare a date column
};

// The lines of at most `count` headlines that fit whole inside the area, top first, in its own text size.
// Empty for an area too small for one line.
std::vector<NewsRow> newsRows(const SkinControl& area, size_t count);

} // namespace nv
