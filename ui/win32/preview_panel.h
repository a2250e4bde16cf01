#pragma once
// The two previews: the live picture in the right column, drawn by the patcher's own renderer from the
// working skin as it would be built, and the real patcher built into the temporary folder and started with
// "--preview".

#include <windows.h>

#include <cstdint>
#include <vector>

namespace nv::ui::win {

class BuilderApp;

class PreviewPanel {
public:
    explicit PreviewPanel(BuilderApp& app) : app_(app) {}
    PreviewPanel(const PreviewPanel&) = delete;
    PreviewPanel& operator=(const PreviewPanel&) = delete;

    // After a skin loads, after dropped files join it, after the session is restored and when an address,
    // the title, the segment size or a link field loses the focus.
    void refresh();
    // Pixels for the panel (premultiplied ARGB, rows from the top); an empty vector clears it.
    void setPixels(int width, int height, std::vector<uint32_t> pixels);
    // The patcher built into the temporary folder and started with "--preview".
    void openPatcher();

    bool shown() const { return rendered_; }
    int width() const { return width_; }
    int height() const { return height_; }
    const std::vector<uint32_t>& pixels() const { return pixels_; }

private:
    BuilderApp& app_;
    bool rendered_ = false;
    int width_ = 0, height_ = 0;
    std::vector<uint32_t> pixels_;
};

} // namespace nv::ui::win
