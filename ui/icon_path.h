#pragma once
// The small path language in which the builder's line icons are written: a subset of SVG path data (M, L, H,
// V, C, S, A, Z, absolute and relative) on a 24 x 24 grid. The parser turns the text into figures of lines
// and cubic Béziers that the painter strokes; arcs become Béziers here, so the painter needs only two
// primitives.

#include <string_view>
#include <vector>

namespace nv::ui {

struct PathPoint {
    double x = 0, y = 0;
};

struct PathSegment {
    bool cubic = false;    // a line to `end` otherwise
    PathPoint c1, c2, end; // c1 and c2 only for a cubic
};

struct PathFigure {
    PathPoint start;
    std::vector<PathSegment> segments;
    bool closed = false;
};

// Parsing stops at the end of the text, at a letter that is not one of the commands above, and at a number
// before any command. A malformed path gives the figures parsed up to the fault.
std::vector<PathFigure> parseIconPath(std::string_view text);

// The current point after the whole path (where the pen would stand).
PathPoint pathEndPoint(const std::vector<PathFigure>& figures);

// Where a 24 x 24 icon lands in a target rectangle: the largest square that fits, centred.
struct IconPlacement {
    double scale = 0;
    double offsetX = 0, offsetY = 0; // added to the rectangle's left and top
};
IconPlacement placeIcon(double width, double height);

} // namespace nv::ui
