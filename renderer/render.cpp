// Drawing one frame of the patcher window: the background, then every visible control in document order.

#include "renderer/composite.h"
#include "renderer/scene.h"
#include "renderer/text_painter.h"

#include <algorithm>
#include <cmath>

namespace nv {
namespace {

// The news area's stand-in in previews: a dark glass panel with a thin light edge and the area's title.
constexpr uint32_t kNewsFill = 0xC8081019;   // straight ARGB
constexpr uint32_t kNewsBorder = 0x8C6E8CA4; // straight ARGB
constexpr uint32_t kNewsTitle = 0xFFD4E0EA;
constexpr int kNewsTitleSize = 10;
constexpr int kNewsPadding = 10;

const ControlState kDefaultState;

const DecodedImage& buttonImage(const SkinControl& control, const ControlState& state) {
    if (!state.enabled) return control.imageDisabled;
    if (state.pressed) return control.imageDown;
    if (state.hover) return control.imageOn;
    return control.imageUp;
}

// The number of columns of a gauge's full picture that show: floor(progress * width). The product is taken in
// float, the progress's own precision, so that 0.7 of 10 columns is 7 and not 6.9999999.
int64_t gaugeColumns(float progress, int width) {
    if (!(progress > 0.f) || width <= 0) return 0; // NaN and anything at or below zero
    if (progress >= 1.f) return width;
    return std::min<int64_t>(width, int64_t(std::floor(progress * float(width))));
}

class Renderer {
public:
    Renderer(const PatcherScene& scene, bool preview, uint32_t* pixels)
        : scene_(scene), preview_(preview), canvas_{pixels, scene.width, scene.height},
          text_(canvas_, scene.textCache.get()) {}

    void background() {
        const size_t count = size_t(canvas_.width) * size_t(canvas_.height);
        if (count == 0) return;
        const uint32_t* src = scene_.background.data();
        std::copy(src, src + count, canvas_.pixels);
    }

    void control(const SkinControl& c, const ControlState& state) {
        const Box box = Box::at(c.x, c.y, c.width, c.height);
        switch (c.kind) {
        case ControlKind::Button:
            drawImage(canvas_, buttonImage(c, state), c.x, c.y, canvas_.bounds());
            break;
        case ControlKind::Image:
            drawImage(canvas_, c.imageUp, c.x, c.y, canvas_.bounds());
            break;
        case ControlKind::Gauge:
            drawImage(canvas_, c.imageEmpty, c.x, c.y, box);
            drawImage(canvas_, c.imageFull, c.x, c.y,
                      Box::at(c.x, c.y, gaugeColumns(state.progress, c.width), c.height).intersect(box));
            break;
        case ControlKind::Text:
            text(c, state.text.empty() ? std::wstring_view(c.text) : std::wstring_view(state.text));
            break;
        case ControlKind::Iframe:
            if (preview_) newsPlaceholder(box);
            break;
        case ControlKind::Unknown:
            break;
        }
    }

private:
    void text(const SkinControl& c, std::wstring_view content) {
        if (content.empty()) return;
        TextRun run;
        run.text = content;
        run.font = c.font;
        run.sizePoints = c.size;
        run.bold = c.bold;
        run.color = c.color;
        run.shadow = c.shadow;
        run.shadowColor = c.shadowColor;
        // Without a width the text simply runs to the right from x, whatever the alignment says.
        if (c.width > 0) {
            run.align = c.align;
            run.box = Box::at(c.x, c.y, c.width, c.height);
        } else {
            run.box = {c.x, c.y, std::max<int64_t>(c.x, canvas_.width), int64_t(c.y) + c.height};
        }
        text_.draw(run);
    }

    void newsPlaceholder(const Box& box) {
        if (box.empty()) return;
        fillBox(canvas_, box, premultiply(kNewsFill));
        const uint32_t edge = premultiply(kNewsBorder);
        fillBox(canvas_, {box.x0, box.y0, box.x1, box.y0 + 1}, edge);
        fillBox(canvas_, {box.x0, box.y1 - 1, box.x1, box.y1}, edge);
        fillBox(canvas_, {box.x0, box.y0 + 1, box.x0 + 1, box.y1 - 1}, edge);
        fillBox(canvas_, {box.x1 - 1, box.y0 + 1, box.x1, box.y1 - 1}, edge);

        const std::wstring title = sceneText(scene_, "NV_NEWS");
        TextRun run;
        run.text = title;
        run.font = L"Tahoma";
        run.sizePoints = kNewsTitleSize;
        run.bold = true;
        run.color = kNewsTitle;
        run.shadow = true;
        run.box = Box{box.x0 + kNewsPadding, box.y0 + kNewsPadding / 2, box.x1 - kNewsPadding,
                      box.y0 + kNewsPadding / 2 + kNewsTitleSize + 12}
                      .intersect(box);
        if (!run.box.empty()) text_.draw(run);
    }

    const PatcherScene& scene_;
    bool preview_;
    Canvas canvas_;
    TextPainter text_;
};

} // namespace

void renderScene(const PatcherScene& scene, const std::vector<ControlState>& states, bool preview,
                 uint32_t* pixels) {
    if (scene.width <= 0 || scene.height <= 0 || scene.background.empty() || pixels == nullptr) return;
    Renderer renderer(scene, preview, pixels);
    renderer.background();
    for (size_t i = 0; i < scene.controls.size(); ++i) {
        const ControlState& state = i < states.size() ? states[i] : kDefaultState;
        if (state.visible) renderer.control(scene.controls[i], state);
    }
}

bool rendererDrawsText() {
    return TextPainter::available();
}

} // namespace nv
