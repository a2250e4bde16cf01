#pragma once
// NV_LogView: the build log on the Derleme page. Time-stamped lines coloured by level, a thin scroll bar of
// its own, wheel and keys; the lines and the scroll arithmetic are BuildLog's.

#include "ui/log_model.h"
#include "ui/win32/draw.h"

#include <string>

namespace nv::ui::win {

class LogView {
public:
    LogView() = default;
    LogView(const LogView&) = delete;
    LogView& operator=(const LogView&) = delete;

    // Registers the class once and creates the (hidden) child.
    bool create(HWND parent, int controlId, int dpi, const FontSet* fonts);
    HWND hwnd() const { return hwnd_; }

    // Appends a message stamped with the local time and repaints.
    void add(const std::wstring& text, int level);
    const BuildLog& log() const { return log_; }

    // Paints into any DC (the view's own painting and screenshots).
    void paint(HDC dc);
    // The whole text of the line under a point when the view cuts it with "…" (its tooltip), else empty.
    std::wstring cutLineAt(int x, int y) const;

private:
    static LRESULT CALLBACK windowProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT handle(UINT message, WPARAM wParam, LPARAM lParam);
    int s(int length) const { return scaleLength(length, dpi_); }
    bool overScrollBar(int x) const;
    void scrollTo(int offset);
    void onButtonDown(int x, int y);

    HWND hwnd_ = nullptr;
    BuildLog log_;
    const FontSet* fonts_ = nullptr;
    int dpi_ = 96;
    bool dragging_ = false;
    int dragStartY_ = 0;
    int dragStartOffset_ = 0;
    bool hoverBar_ = false;
    bool trackingLeave_ = false;
    // The tooltip that shows a cut line whole: its window, the line it is on (-1 none) and its text.
    HWND tip_ = nullptr;
    int tipLine_ = -1;
    std::wstring tipText_;
    void updateTip(int x, int y);
};

} // namespace nv::ui::win
