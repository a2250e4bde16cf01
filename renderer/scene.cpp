#include "renderer/scene.h"

#include "core/format.h"
#include "core/text.h"
#include "renderer/news_area.h"
#include "renderer/composite.h"
#include "renderer/text_painter.h"

namespace nv {

PatcherScene buildScene(const SkinModel& model, const PatcherSettings& settings) {
    PatcherScene scene;
    scene.width = model.width;
    scene.height = model.height;
    scene.background = model.background;
    // The window is as large as the background; a model whose sizes disagree with its picture draws nothing.
    if (scene.background.width != scene.width || scene.background.height != scene.height) {
        scene.width = scene.height = 0;
        scene.background = {};
    }
    scene.transparent = scene.background.hasTransparency;
    scene.controls = model.controls;
    scene.strings = model.strings;
    scene.settings = settings;
    scene.textCache = std::make_shared<TextCache>();
    return scene;
}

std::wstring sceneText(const PatcherScene& scene, std::string_view key) {
    return localeText(scene.strings, key);
}

int findControl(const PatcherScene& scene, std::string_view name) {
    for (size_t i = 0; i < scene.controls.size(); ++i)
        if (equalsIgnoreCase(scene.controls[i].id, name)) return int(i);
    return -1;
}

std::vector<ControlState> defaultStates(const PatcherScene& scene) {
    std::vector<ControlState> states(scene.controls.size());
    applyFeed(scene, ServerFeed{}, states);
    return states;
}

void applyFeed(const PatcherScene& scene, const ServerFeed& feed, std::vector<ControlState>& states) {
    states.resize(scene.controls.size());
    const std::wstring statusText = sceneText(scene, feedStatusKey(feed.status));
    for (size_t i = 0; i < scene.controls.size(); ++i) {
        const SkinControl& control = scene.controls[i];
        ControlState& state = states[i];
        if (control.kind == ControlKind::Iframe) {
            state.headlines = feed.headlines;
        } else if (control.kind == ControlKind::Image && control.id == "FEED_LAMP") {
            state.lamp = feed.status;
        } else if (control.kind == ControlKind::Text && control.id == "FEED_STATUS") {
            state.text = control.feedMessage && !feed.message.empty() ? feed.message : statusText;
        } else if (control.kind == ControlKind::Text && control.id == "FEED_PLAYERS") {
            state.visible = feed.players >= 0;
            state.text = state.visible ? fillPlaceholder(sceneText(scene, "NV_FEED_PLAYERS"),
                                                         groupedIntegerText(uint64_t(feed.players)))
                                       : std::wstring();
        }
    }
}

ServerFeed previewSampleFeed() {
    ServerFeed feed;
    feed.status = FeedStatus::Online;
    feed.players = 2481;
    feed.headlines = {
        {L"Yaz etkinliği başladı: hafta sonu çift deneyim", "2024-06-14",
         L"https://www.kaldra.example/haberler/yaz-etkinligi"},
        {L"Yeni zindan: Sisli Vadi'nin derinlikleri açıldı", "2024-06-07",
         L"https://www.kaldra.example/haberler/sisli-vadi"},
        {L"Bakım notları: denge ve hata düzeltmeleri", "2024-05-31",
         L"https://www.kaldra.example/haberler/bakim-notlari"},
    };
    return feed;
}

void applyPreviewSamples(const PatcherScene& scene, std::vector<ControlState>& states) {
    applyFeed(scene, previewSampleFeed(), states);
    const std::wstring mainText = sceneText(scene, "TORRENT_STATE_DOWNLOADING") + L"  %45";
    for (size_t i = 0; i < scene.controls.size(); ++i) {
        const SkinControl& control = scene.controls[i];
        ControlState& state = states[i];
        if (control.kind == ControlKind::Gauge) {
            state.progress = control.id == "PROGRESS_SUB" ? 0.45f : 0.7f;
        } else if (control.kind == ControlKind::Text) {
            if (control.id == "TEXT_MAIN")
                state.text = mainText;
            else if (control.id == "TEXT_SUB" || control.id == "TEXT_TORRENT")
                state.text = L"pack\\root.kdx (%45)";
        }
    }
}

int controlAt(const PatcherScene& scene, const std::vector<ControlState>& states, int x, int y) {
    for (size_t i = scene.controls.size(); i-- > 0;) {
        const SkinControl& control = scene.controls[i];
        if (control.kind != ControlKind::Button && control.kind != ControlKind::Iframe) continue;
        if (i < states.size() && !states[i].visible) continue;
        if (Box::at(control.x, control.y, control.width, control.height).contains(x, y)) return int(i);
    }
    return -1;
}

HeadlineHit headlineAt(const PatcherScene& scene, const std::vector<ControlState>& states, int x, int y) {
    const int control = controlAt(scene, states, x, y);
    if (control < 0 || size_t(control) >= states.size() ||
        scene.controls[size_t(control)].kind != ControlKind::Iframe)
        return {};
    const std::vector<FeedHeadline>& headlines = states[size_t(control)].headlines;
    const std::vector<NewsRow> rows = newsRows(scene.controls[size_t(control)], headlines.size());
    for (size_t i = 0; i < rows.size(); ++i)
        if (rows[i].row.contains(x, y)) return {control, int(i)};
    return {};
}

} // namespace nv
