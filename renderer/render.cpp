// Drawing one frame of the patcher window: the background, then every visible control in document order.

#include "renderer/composite.h"
#include "renderer/news_area.h"
#include "renderer/scene.h"
#include "renderer/text_painter.h"

#include <algorithm>
#include <cmath>

namespace nv {
namespace {

// The news area drawn by the renderer: a dark glass panel with a thin light edge under the texts, so that
// they read on any background; a faint line between headlines.
constexpr uint32_t kNewsFill = 0xC8081019;      // straight ARGB
constexpr uint32_t kNewsBorder = 0x8C6E8CA4;    // straight ARGB
constexpr uint32_t kNewsSeparator = 0x306E8CA4; // straight ARGB
constexpr uint32_t kDateAlpha = 0xA6;           // of the title's alpha: the date is read second

// A lamp without a picture of its own for a status is its picture in this colour (straight RGB), by
// FeedStatus: grey for no data, green, amber, red.
constexpr uint32_t kLampTints[kFeedStatusCount] = {0x8C99A6, 0x3DDC84, 0xF2B33D, 0xE5484D};

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
    Renderer(const PatcherScene& scene, bool drawNews, uint32_t* pixels)
        : scene_(scene), drawNews_(drawNews), canvas_{pixels, scene.width, scene.height},
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
            if (c.id == "FEED_LAMP")
                lamp(c, state.lamp);
            else
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
            if (drawNews_) newsArea(c, box, state.headlines);
            break;
        case ControlKind::Unknown:
            break;
        }
    }

private:
    // A run in the control's own text style.
    static TextRun styled(const SkinControl& c, std::wstring_view content) {
        TextRun run;
        run.text = content;
        run.font = c.font;
        run.sizePoints = c.size;
        run.bold = c.bold;
        run.color = c.color;
        run.shadow = c.shadow;
        run.shadowColor = c.shadowColor;
        return run;
    }

    void text(const SkinControl& c, std::wstring_view content) {
        if (content.empty()) return;
        TextRun run = styled(c, content);
        // Without a width the text simply runs to the right from x, whatever the alignment says.
        if (c.width > 0) {
            run.align = c.align;
            run.box = Box::at(c.x, c.y, c.width, c.height);
        } else {
            run.box = {c.x, c.y, std::max<int64_t>(c.x, canvas_.width), int64_t(c.y) + c.height};
        }
        text_.draw(run);
    }

    // The skin's picture for the status, else its one picture tinted in the status's colour: a green lamp
    // never stays green while the server is down.
    void lamp(const SkinControl& c, FeedStatus status) {
        const size_t index = std::min(size_t(status), kFeedStatusCount - 1);
        if (!c.imageLamp[index].empty())
            drawImage(canvas_, c.imageLamp[index], c.x, c.y, canvas_.bounds());
        else
            drawImageTinted(canvas_, c.imageUp, c.x, c.y, canvas_.bounds(), kLampTints[index]);
    }

    void newsArea(const SkinControl& c, const Box& box, const std::vector<FeedHeadline>& headlines) {
        if (box.empty()) return;
        fillBox(canvas_, box, premultiply(kNewsFill));
        const uint32_t edge = premultiply(kNewsBorder);
        fillBox(canvas_, {box.x0, box.y0, box.x1, box.y0 + 1}, edge);
        fillBox(canvas_, {box.x0, box.y1 - 1, box.x1, box.y1}, edge);
        fillBox(canvas_, {box.x0, box.y0 + 1, box.x0 + 1, box.y1 - 1}, edge);
        fillBox(canvas_, {box.x1 - 1, box.y0 + 1, box.x1, box.y1 - 1}, edge);

        const std::vector<NewsRow> rows = newsRows(c, std::max<size_t>(headlines.size(), 1));
        if (rows.empty()) return;
        if (headlines.empty()) {
            const std::wstring title = sceneText(scene_, "NV_NEWS");
            TextRun run = styled(c, title);
            run.bold = true;
            run.box = rows.front().row;
            text_.draw(run);
            return;
        }
        const uint32_t separator = premultiply(kNewsSeparator);
        const uint32_t dateColor = (divide255((c.color >> 24) * kDateAlpha) << 24) | (c.color & 0xFFFFFFu);
        for (size_t i = 0; i < rows.size(); ++i) {
            const NewsRow& row = rows[i];
            if (i > 0) fillBox(canvas_, {row.row.x0, row.row.y0, row.row.x1, row.row.y0 + 1}, separator);
            TextRun title = styled(c, headlines[i].title);
            title.box = row.title;
            text_.draw(title);
            if (row.date.empty()) continue;
            const std::wstring date = feedDateText(headlines[i].date);
            TextRun run = styled(c, date);
            run.bold = false;
            run.color = dateColor;
            run.align = 2;
            run.box = row.date;
            text_.draw(run);
        }
    }

    const PatcherScene& scene_;
    bool drawNews_;
    Canvas canvas_;
    TextPainter text_;
};

} // namespace

void renderScene(const PatcherScene& scene, const std::vector<ControlState>& states, bool drawNews,
                 uint32_t* pixels) {
    if (scene.width <= 0 || scene.height <= 0 || scene.background.empty() || pixels == nullptr) return;
    Renderer renderer(scene, drawNews, pixels);
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
