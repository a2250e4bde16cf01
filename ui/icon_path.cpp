#include "ui/icon_path.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <string>

namespace nv::ui {
namespace {

constexpr double kPi = 3.14159265358979323846;

bool isSeparator(char c) {
    return c == ' ' || c == ',' || c == '\t' || c == '\n';
}

class PathParser {
public:
    explicit PathParser(std::string_view text) : text_(text) {}

    std::vector<PathFigure> run() {
        char command = 0;
        for (;;) {
            skipSeparators();
            if (pos_ >= text_.size()) break;
            const char c = text_[pos_];
            if (std::isalpha(static_cast<unsigned char>(c))) {
                command = c;
                ++pos_;
            } else if (command == 0 || command == 'Z' || command == 'z') {
                break; // a number with nothing to repeat
            }
            if (!execute(command)) break;
            if (command == 'M') command = 'L';
            if (command == 'm') command = 'l';
        }
        return std::move(figures_);
    }

    PathPoint current() const { return current_; }

private:
    void skipSeparators() {
        while (pos_ < text_.size() && isSeparator(text_[pos_]))
            ++pos_;
    }

    // A number in strtod's syntax; where none can be read one character is skipped and 0 is used.
    double number() {
        skipSeparators();
        if (pos_ >= text_.size()) return 0;
        // strtod needs a terminated string; a number is short, so a bounded copy is enough.
        const std::string piece(text_.substr(pos_, 64));
        char* end = nullptr;
        const double value = std::strtod(piece.c_str(), &end);
        if (end == piece.c_str() || !std::isfinite(value)) {
            ++pos_;
            return 0;
        }
        pos_ += static_cast<size_t>(end - piece.c_str());
        return value;
    }

    // Arc flags may be written without separators ("001"), so a lone 0 or 1 is one flag.
    bool flag() {
        skipSeparators();
        if (pos_ < text_.size() && (text_[pos_] == '0' || text_[pos_] == '1')) return text_[pos_++] == '1';
        return number() != 0;
    }

    PathPoint point(bool relative) {
        PathPoint p;
        p.x = number();
        p.y = number();
        if (relative) {
            p.x += current_.x;
            p.y += current_.y;
        }
        return p;
    }

    PathFigure& openFigure() {
        if (!open_) {
            figures_.push_back({current_, {}, false});
            open_ = true;
        }
        return figures_.back();
    }

    void lineTo(PathPoint p) {
        openFigure().segments.push_back({false, {}, {}, p});
        current_ = p;
        hasControl_ = false;
    }

    void cubicTo(PathPoint c1, PathPoint c2, PathPoint p) {
        openFigure().segments.push_back({true, c1, c2, p});
        current_ = p;
        lastControl_ = c2;
        hasControl_ = true;
    }

    bool execute(char command) {
        const bool relative = std::islower(static_cast<unsigned char>(command)) != 0;
        switch (std::toupper(static_cast<unsigned char>(command))) {
        case 'M': {
            const PathPoint p = point(relative);
            open_ = false;
            current_ = p;
            start_ = p;
            hasControl_ = false;
            openFigure();
            return true;
        }
        case 'L':
            lineTo(point(relative));
            return true;
        case 'H': {
            double x = number();
            lineTo({relative ? current_.x + x : x, current_.y});
            return true;
        }
        case 'V': {
            double y = number();
            lineTo({current_.x, relative ? current_.y + y : y});
            return true;
        }
        case 'C': {
            const PathPoint c1 = point(relative);
            const PathPoint c2 = point(relative);
            cubicTo(c1, c2, point(relative));
            return true;
        }
        case 'S': {
            PathPoint c1 = current_;
            if (hasControl_) c1 = {2 * current_.x - lastControl_.x, 2 * current_.y - lastControl_.y};
            const PathPoint c2 = point(relative);
            cubicTo(c1, c2, point(relative));
            return true;
        }
        case 'A': {
            const double rx = number(), ry = number(), rotation = number();
            const bool largeArc = flag();
            const bool sweep = flag();
            arcTo(rx, ry, rotation, largeArc, sweep, point(relative));
            return true;
        }
        case 'Z':
            if (open_) {
                figures_.back().closed = true;
                open_ = false;
                current_ = start_;
            }
            hasControl_ = false;
            return true;
        default:
            return false; // Q, T and every other letter end the path
        }
    }

    // Endpoint to centre parameterisation, then at most 90 degrees per Bézier.
    void arcTo(double rx, double ry, double rotationDegrees, bool largeArc, bool sweep, PathPoint to) {
        const PathPoint from = current_;
        if (from.x == to.x && from.y == to.y) return;
        rx = std::fabs(rx);
        ry = std::fabs(ry);
        if (rx == 0 || ry == 0) {
            lineTo(to);
            return;
        }
        const double phi = rotationDegrees * kPi / 180.0;
        const double cosPhi = std::cos(phi), sinPhi = std::sin(phi);
        const double dx2 = (from.x - to.x) / 2, dy2 = (from.y - to.y) / 2;
        const double x1p = cosPhi * dx2 + sinPhi * dy2;
        const double y1p = -sinPhi * dx2 + cosPhi * dy2;
        const double lambda = (x1p * x1p) / (rx * rx) + (y1p * y1p) / (ry * ry);
        if (lambda > 1) {
            rx *= std::sqrt(lambda);
            ry *= std::sqrt(lambda);
        }
        const double num = rx * rx * ry * ry - rx * rx * y1p * y1p - ry * ry * x1p * x1p;
        const double den = rx * rx * y1p * y1p + ry * ry * x1p * x1p;
        double coef = den > 0 ? std::sqrt(std::fmax(0.0, num / den)) : 0;
        if (largeArc == sweep) coef = -coef;
        const double cxp = coef * rx * y1p / ry;
        const double cyp = -coef * ry * x1p / rx;
        const double cx = cosPhi * cxp - sinPhi * cyp + (from.x + to.x) / 2;
        const double cy = sinPhi * cxp + cosPhi * cyp + (from.y + to.y) / 2;

        auto angle = [](double ux, double uy, double vx, double vy) {
            return std::atan2(ux * vy - uy * vx, ux * vx + uy * vy);
        };
        const double theta1 = angle(1, 0, (x1p - cxp) / rx, (y1p - cyp) / ry);
        double delta = angle((x1p - cxp) / rx, (y1p - cyp) / ry, (-x1p - cxp) / rx, (-y1p - cyp) / ry);
        if (!sweep && delta > 0) delta -= 2 * kPi;
        if (sweep && delta < 0) delta += 2 * kPi;

        auto at = [&](double t) {
            return PathPoint{cx + rx * cosPhi * std::cos(t) - ry * sinPhi * std::sin(t),
                             cy + rx * sinPhi * std::cos(t) + ry * cosPhi * std::sin(t)};
        };
        auto tangent = [&](double t) {
            return PathPoint{-rx * cosPhi * std::sin(t) - ry * sinPhi * std::cos(t),
                             -rx * sinPhi * std::sin(t) + ry * cosPhi * std::cos(t)};
        };
        const int pieces = std::max(1, static_cast<int>(std::ceil(std::fabs(delta) / (kPi / 2) - 1e-9)));
        const double step = delta / pieces;
        const double k = 4.0 / 3.0 * std::tan(step / 4);
        double t1 = theta1;
        for (int i = 0; i < pieces; ++i) {
            const double t2 = t1 + step;
            const PathPoint p1 = at(t1), d1 = tangent(t1), d2 = tangent(t2);
            const PathPoint p2 = i + 1 == pieces ? to : at(t2);
            cubicTo({p1.x + k * d1.x, p1.y + k * d1.y}, {p2.x - k * d2.x, p2.y - k * d2.y}, p2);
            t1 = t2;
        }
        hasControl_ = false;
    }

    std::string_view text_;
    size_t pos_ = 0;
    std::vector<PathFigure> figures_;
    bool open_ = false;
    PathPoint current_, start_, lastControl_;
    bool hasControl_ = false;
};

} // namespace

std::vector<PathFigure> parseIconPath(std::string_view text) {
    PathParser parser(text);
    return parser.run();
}

PathPoint pathEndPoint(const std::vector<PathFigure>& figures) {
    if (figures.empty()) return {};
    const PathFigure& last = figures.back();
    if (last.closed || last.segments.empty()) return last.start;
    return last.segments.back().end;
}

IconPlacement placeIcon(double width, double height) {
    IconPlacement placement;
    placement.scale = std::fmin(width, height) / 24.0;
    const double side = 24.0 * placement.scale;
    placement.offsetX = (width - side) / 2;
    placement.offsetY = (height - side) / 2;
    return placement;
}

} // namespace nv::ui
