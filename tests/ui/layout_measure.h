#pragma once
// A text model for the layout's tests, in place of the window's fonts.

#include "ui/layout.h"

namespace nv::ui {

// Text about as wide and tall as Segoe UI's: 0.55 em a character, 1.4 em a line, greedy word wrap.
class FakeMeasure : public TextMeasure {
public:
    explicit FakeMeasure(int dpi) : dpi_(dpi) {}
    int width(std::wstring_view text, int font) const override {
        return static_cast<int>(text.size()) * px(font) * 55 / 100;
    }
    int lineHeight(int font) const override { return px(font) * 14 / 10; }
    int wrappedHeight(std::wstring_view text, int font, int width) const override {
        int lines = 1, used = 0;
        size_t start = 0;
        while (start <= text.size()) {
            size_t end = text.find(L' ', start);
            if (end == std::wstring_view::npos) end = text.size();
            const int word = this->width(text.substr(start, end - start + 1), font);
            if (used > 0 && used + word > width) {
                ++lines;
                used = 0;
            }
            used += word;
            start = end + 1;
        }
        return lines * lineHeight(font);
    }

private:
    int px(int font) const { return scaleLength(fontSpec(font).pixels, dpi_); }
    int dpi_;
};

} // namespace nv::ui
