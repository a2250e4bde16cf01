#pragma once
// The patcher's renderer: one picture of the patcher window, drawn from a loaded skin. The patcher itself,
// the builder's live preview and `nvbuild render` all draw with it, so what the operator previews is what the
// players see, pixel for pixel.
//
// Use:
//   PatcherScene scene = buildScene(model, settings);      // after loadSkinModel
//   std::vector<ControlState> states = defaultStates(scene);
//   applyPreviewSamples(scene, states);                       // the preview's stand-in values and feed
//   std::vector<uint32_t> pixels(size_t(scene.width) * size_t(scene.height));
//   renderScene(scene, states, /*drawNews=*/true, pixels.data());
//
// The patcher shows its server feed with applyFeed(scene, feed, states) after each fetch.
//
// Pictures, button states, gauges and clipping are composited by portable code. Text is drawn through GDI+ on
// Windows (GDI+ must have been started, as for decoding); the native build draws no text at all, so there
// text controls and the news area's texts leave the pixels under them untouched (see rendererDrawsText()).

#include "readers/image.h"
#include "skin/locale.h"
#include "skin/server_feed.h"
#include "skin/settings.h"
#include "skin/skin_model.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace nv {

class TextCache;

// What one control shows at one moment. A scene's state list holds one per control, in the scene's order.
struct ControlState {
    bool visible = true;
    bool enabled = true;  // buttons: a disabled button shows its disabled picture and takes no clicks
    bool hover = false;   // buttons: the pointer is over it
    bool pressed = false; // buttons: held down (wins over hover)
    float progress = 0.f; // gauges: the share of the full picture shown, 0..1 (clamped; NaN counts as 0)
    std::wstring text;    // texts: shown instead of the control's own text when not empty
    FeedStatus lamp = FeedStatus::NoData; // "FEED_LAMP": the status whose picture shows
    std::vector<FeedHeadline> headlines;  // news areas: drawn in the area, newest first (see renderScene)
};

// A skin ready to draw. It shares the model's decoded pictures (building one copies no pixels) and stays
// valid after the model is gone; build it anew whenever the skin or the settings change.
struct PatcherScene {
    int width = 0, height = 0; // the window: the background picture's size
    bool transparent = false;  // the background has transparent pixels: the patcher needs a layered window
    DecodedImage background;
    std::vector<SkinControl> controls; // document order; a control's name is its `id` (upper-cased)
    LocaleTable strings;               // the skin's locale table over the built-in defaults
    PatcherSettings settings;          // the settings the patcher runs with (its title is the window's)
    // Text already drawn for this scene, shared by its copies: redrawing a hover or a press draws no text
    // anew.
    std::shared_ptr<TextCache> textCache;
};

PatcherScene buildScene(const SkinModel& model, const PatcherSettings& settings);

// The locale text of a key (the key itself when the table lacks it).
std::wstring sceneText(const PatcherScene& scene, std::string_view key);

// Index of the first control of that name (compared without regard to ASCII case), or -1.
int findControl(const PatcherScene& scene, std::string_view name);

// One default state per control: visible, enabled, nothing hovered or pressed, progress 0, no text, and the
// feed's controls as applyFeed shows a feed that has not arrived: no skin's stand-in text can pass for the
// server's state.
std::vector<ControlState> defaultStates(const PatcherScene& scene);

// What the feed's controls and the news areas show of a feed: "FEED_STATUS" texts the locale text of its
// status (feedStatusKey), or its message where the control says feed_message="1" and the feed has one;
// "FEED_PLAYERS" texts NV_FEED_PLAYERS with the count grouped the Turkish way (12.345), hidden while the
// count is not known; "FEED_LAMP" images the picture of its status; every news area the headlines. Other
// states stay as they are. The list is first sized to the scene (added states are defaults).
void applyFeed(const PatcherScene& scene, const ServerFeed& feed, std::vector<ControlState>& states);

// The feed that stands in for the server's wherever the patcher is only shown: online, 2.481 players, three
// headlines, no message.
ServerFeed previewSampleFeed();

// The values that stand in for a running download and for the server's feed wherever the patcher is only
// shown: every gauge 0.7 except "PROGRESS_SUB" at 0.45; "TEXT_MAIN" the locale text of
// "TORRENT_STATE_DOWNLOADING" followed by "  %45"; "TEXT_SUB" and "TEXT_TORRENT" "pack\root.kdx (%45)"; the
// feed's controls and the news areas previewSampleFeed(). Other states stay as they are. The list is first
// sized to the scene (added states are defaults).
void applyPreviewSamples(const PatcherScene& scene, std::vector<ControlState>& states);

// Draws the scene into width * height premultiplied 0xAARRGGBB pixels (rows from the top, no padding), every
// one of which is written: the background first (its transparent margin stays transparent), then each visible
// control in document order, composited source-over. States beyond the list count as defaults.
// drawNews: each news area is drawn by the renderer, a glass panel with its state's headlines (newest first,
// as many as fit, in the area's own font, size, colour and shadow) or, with none, the locale text of
// "NV_NEWS"; false leaves the area to the patcher's web browser.
void renderScene(const PatcherScene& scene, const std::vector<ControlState>& states, bool drawNews,
                 uint32_t* pixels);

// Whether this build draws text (GDI+ on Windows); false in the native build.
bool rendererDrawsText();

// The control under a window point that takes the pointer: the topmost visible button or news area whose box
// holds the point, or -1 (the window is dragged from there). Disabled buttons still count: they cover the
// window but do nothing.
int controlAt(const PatcherScene& scene, const std::vector<ControlState>& states, int x, int y);

// The headline under a window point, as renderScene draws the news areas: the news area's control and the
// headline's index in its state, or -1 and -1. Opening headlines[headline].url is the patcher's to do.
struct HeadlineHit {
    int control = -1;
    int headline = -1;
};
HeadlineHit headlineAt(const PatcherScene& scene, const std::vector<ControlState>& states, int x, int y);

} // namespace nv
