#pragma once
// Building blocks shared by the section layouts: a cursor that stacks cards in a column and the rows inside
// one card. Internal to the layout code.

#include "ui/layout.h"

namespace nv::ui::detail {

struct Ctx {
    const FrameLayout& frame;
    const PageModel& model;
    const TextMeasure& measure;
    WindowLayout& out;

    int s(int length) const { return frame.s(length); }
    bool compact() const { return frame.compact; }
    int line(int font) const { return measure.lineHeight(font); }
    Block& add(Block block) {
        out.blocks.push_back(std::move(block));
        return out.blocks.back();
    }
    Block& text(Rect rect, std::wstring text, int font, Rgb color, Align align = Align::Left,
                bool wrap = false);
    int textWidth(std::wstring_view text, int font) const { return measure.width(text, font); }
};

// Spacing of cards and rows, tighter in the compact variant.
struct Spacing {
    int padX, padY, cardGap, noteGap, labelGap, box, hintGap, fieldGap, button;
};
Spacing spacing(const Ctx& ctx);

// One white card whose height follows its content: rows are added at y, then finish() closes it.
class Card {
public:
    Card(Ctx& ctx, int left, int right, int top);
    int left() const { return left_; } // inside the padding
    int right() const { return right_; }
    int width() const { return right_ - left_; }
    int y = 0;

    // Title line; returns its rectangle so a caller can put something on its right.
    Rect title(const std::wstring& text);
    // A word-wrapped line of text; the card grows by its height.
    Rect note(const std::wstring& text, int font = kFontSmall, Rgb color = color::kSecondary);
    void gap(int pixels) { y += pixels; }
    // Label (with an optional light note beside it), field box and hint. Returns the box.
    Rect field(int id, const std::wstring& label, const std::wstring& labelNote, const std::wstring& hint,
               int boxRight = 0);
    // A secondary button at (x, top); returns its rectangle.
    Rect button(int x, int top, const std::wstring& text, int item, int sub = 0, Icon icon = Icon::Count);
    int finish(); // closes the card below its content; returns its bottom
    int finishAt(int bottom);
    Ctx& ctx() { return ctx_; }

private:
    Ctx& ctx_;
    size_t index_;
    int left_, right_;
};

bool trimmedEmpty(const std::wstring& text);

// A secondary button's width for a text.
int buttonWidth(const Ctx& ctx, const std::wstring& text, bool withIcon);

void layoutKaynak(Ctx& ctx);
void layoutBaglantilar(Ctx& ctx);
void layoutDavranis(Ctx& ctx);
void layoutKimlik(Ctx& ctx);
void layoutCikti(Ctx& ctx);
void layoutDerleme(Ctx& ctx);

} // namespace nv::ui::detail
