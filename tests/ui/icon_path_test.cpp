#include "ui/icon_path.h"
#include "ui/icons.h"
#include "ui/style.h"

#include <gtest/gtest.h>

#include <cmath>

namespace nv::ui {
namespace {

struct PathCase {
    const char* path;
    size_t figures;
    size_t segments; // in all figures
    double endX, endY;
};

TEST(IconPath, CommandsAndTheirEndPoints) {
    const PathCase cases[] = {
        {"M0 0 10 0 10 10", 1, 2, 10, 10},    // pairs after M are lines
        {"m1 1 l2 2", 1, 1, 3, 3},            // relative from the current point
        {"M0 0 Q1 1 2 2", 1, 0, 0, 0},        // Q ends the path after the move
        {"M1 2 h3 v4 H0 V0 z", 1, 4, 1, 2},   // closing returns to the figure's start
        {"M1 1 L5 5 M7 7 l1 0", 2, 2, 8, 7},  // a new figure per move
        {"M0,0\tL4,\n4", 1, 1, 4, 4},         // every separator
        {"M0 0 L1e1 -2.5e0", 1, 1, 10, -2.5}, // exponents and signs
        {"M0 0 C0 10 10 10 10 0 s10 -10 10 0", 1, 2, 20, 0},
        {"M0 0 a5 5 0 0 1 10 0", 1, 2, 10, 0}, // a half circle in two quarter curves
        {"M0 0 a5 5 0 0110 0", 1, 2, 10, 0},   // flags written without separators
        {"M0 0 A0 5 0 0 1 10 0", 1, 1, 10, 0}, // a zero radius is a straight line
        {"3 4 L1 1", 0, 0, 0, 0},              // a number before any command
        {"M2 2 L3 x 4", 1, 2, 4, 0},           // an unreadable number counts as 0, one character skipped
        {"", 0, 0, 0, 0},
    };
    for (const PathCase& c : cases) {
        SCOPED_TRACE(c.path);
        const auto figures = parseIconPath(c.path);
        size_t segments = 0;
        for (const PathFigure& f : figures)
            segments += f.segments.size();
        EXPECT_EQ(figures.size(), c.figures);
        EXPECT_EQ(segments, c.segments);
        const PathPoint end = pathEndPoint(figures);
        EXPECT_NEAR(end.x, c.endX, 1e-9);
        EXPECT_NEAR(end.y, c.endY, 1e-9);
    }
}

TEST(IconPath, SmoothCurveReflectsThePreviousControlPoint) {
    const auto figures = parseIconPath("M0 0 C0 10 10 10 10 0 S20 -10 20 0");
    ASSERT_EQ(figures.size(), 1u);
    ASSERT_EQ(figures[0].segments.size(), 2u);
    const PathSegment& smooth = figures[0].segments[1];
    EXPECT_TRUE(smooth.cubic);
    EXPECT_DOUBLE_EQ(smooth.c1.x, 10);
    EXPECT_DOUBLE_EQ(smooth.c1.y, -10);
}

// Points along a cubic, to see where an arc really goes.
PathPoint along(const PathPoint& p0, const PathSegment& s, double t) {
    const double u = 1 - t;
    return {u * u * u * p0.x + 3 * u * u * t * s.c1.x + 3 * u * t * t * s.c2.x + t * t * t * s.end.x,
            u * u * u * p0.y + 3 * u * u * t * s.c1.y + 3 * u * t * t * s.c2.y + t * t * t * s.end.y};
}

TEST(IconPath, CircleIdiomTracesTheWholeCircle) {
    // The info and globe icons draw a circle of radius 9 around (12, 12) as an arc to a point 0.01 aside.
    const auto figures = parseIconPath("M12 3a9 9 0 1 0 0.01 0z");
    ASSERT_EQ(figures.size(), 1u);
    EXPECT_TRUE(figures[0].closed);
    EXPECT_GE(figures[0].segments.size(), 4u);
    double minX = 99, maxX = -99, minY = 99, maxY = -99, worst = 0;
    PathPoint from = figures[0].start;
    for (const PathSegment& s : figures[0].segments) {
        for (int i = 0; i <= 16; ++i) {
            const PathPoint p = along(from, s, i / 16.0);
            minX = std::fmin(minX, p.x), maxX = std::fmax(maxX, p.x);
            minY = std::fmin(minY, p.y), maxY = std::fmax(maxY, p.y);
            worst = std::fmax(worst, std::fabs(std::hypot(p.x - 12, p.y - 12) - 9));
        }
        from = s.end;
    }
    EXPECT_NEAR(minX, 3, 0.05);
    EXPECT_NEAR(maxX, 21, 0.05);
    EXPECT_NEAR(minY, 3, 0.05);
    EXPECT_NEAR(maxY, 21, 0.05);
    EXPECT_LT(worst, 0.05); // Bézier quarter arcs stay within a hair of the circle
}

TEST(IconPath, EveryIconOfTheTableStaysOnItsGrid) {
    for (int i = 0; i < static_cast<int>(Icon::Count); ++i) {
        const char* path = iconPath(static_cast<Icon>(i));
        SCOPED_TRACE(path);
        const auto figures = parseIconPath(path);
        ASSERT_FALSE(figures.empty());
        for (const PathFigure& f : figures) {
            EXPECT_FALSE(f.segments.empty());
            for (const PathSegment& s : f.segments) {
                EXPECT_TRUE(s.end.x >= 0 && s.end.x <= 24 && s.end.y >= 0 && s.end.y <= 24)
                    << s.end.x << "," << s.end.y;
            }
        }
    }
}

TEST(Style, BlendAndScale) {
    struct BlendCase {
        Rgb a, b;
        int percent;
        Rgb expected;
    } blends[] = {
        {rgb(0, 0, 0), rgb(255, 255, 255), 50, rgb(127, 127, 127)},
        {rgb(200, 10, 0), rgb(100, 20, 0), 33, rgb(167, 13, 0)}, // falling channels truncate toward zero
        {rgb(1, 2, 3), rgb(4, 5, 6), 0, rgb(1, 2, 3)},
        {rgb(1, 2, 3), rgb(4, 5, 6), 100, rgb(4, 5, 6)},
    };
    for (const BlendCase& c : blends)
        EXPECT_EQ(blend(c.a, c.b, c.percent), c.expected) << c.percent;

    struct ScaleCase {
        int length, dpi, expected;
    } scales[] = {{1320, 144, 1980}, {13, 144, 20}, {232, 96, 232},
                  {7, 120, 9},       {-3, 144, -5}, {100, 0, 100}};
    for (const ScaleCase& c : scales)
        EXPECT_EQ(scaleLength(c.length, c.dpi), c.expected) << c.length << "@" << c.dpi;
}

} // namespace
} // namespace nv::ui
