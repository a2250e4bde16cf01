#pragma once
// The parsed, renderable description of one patcher skin, loaded from a skin file set. The live preview, the
// build's final validation and nvbuild inspect all load it the same way.

#include "readers/image.h"
#include "readers/skin_files.h"
#include "skin/locale.h"
#include "skin/server_feed.h"
#include "skin/settings.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nv {

enum class ControlKind { Button = 0, Text = 1, Gauge = 2, Iframe = 3, Image = 4, Unknown = 5 };

// "button", "text", "gauge", "iframe", "image", "unknown".
const char* controlKindName(ControlKind kind);

struct SkinControl {
    ControlKind kind = ControlKind::Unknown;
    uint32_t index = 0; // ordinal among the control elements, from 0
    std::string id;     // upper-cased
    int x = 0, y = 0;
    int width = 0, height = 0;
    std::string image;
    std::string linkUrl; // "link_url" as written
    std::wstring link;   // resolved through the locale table
    std::wstring execPath;
    bool enableOnComplete = false;
    std::wstring text;
    uint32_t color = 0xFFFFFFFFu;       // ARGB
    uint32_t shadowColor = 0xFF000000u; // ARGB
    bool shadow = false;
    bool bold = false;
    int size = 12; // points, 6..96
    std::wstring font = L"Tahoma";
    int align = 0; // 0 left, 1 center, 2 right
    // "FEED_STATUS": "feed_message" (yes/no) shows the feed's message, when it has one, instead of the
    // status.
    bool feedMessage = false;
    DecodedImage imageUp, imageOn, imageDown, imageDisabled;
    DecodedImage imageFull, imageEmpty;
    // "FEED_LAMP" image controls: the skin's own picture for each status (lampPictureNames), by FeedStatus;
    // empty where it ships none.
    std::array<DecodedImage, kFeedStatusCount> imageLamp;
};

struct SkinModel {
    DecodedImage background;
    int width = 0, height = 0;
    std::wstring remoteConfigPath;
    std::wstring localConfigPath = L"kaldratorrent.config.xml";
    std::wstring languagePath = L"Fernwick.locale.xml";
    std::wstring feedUrl;
    int feedRefresh = 60;
    LocaleTable strings;
    PatcherSettings settings;
    std::string skinFile, addressFile, localeFile;
    std::vector<SkinControl> controls;

    SkinModel() = default;
    SkinModel(SkinModel&&) = default;
    SkinModel& operator=(SkinModel&&) = default;
    SkinModel(const SkinModel&) = delete; // owns decoded images
    SkinModel& operator=(const SkinModel&) = delete;
};

// The picture extensions, in the order the loader cuts them off names and completes names with them.
inline constexpr std::string_view kSkinImageExtensions[] = {".png", ".jpg", ".jpeg", ".bmp", ".gif"};

// A picture name split before its extension (one of kSkinImageExtensions, in any case): "btn_up.PNG" gives
// "btn_up" and ".PNG"; a name without one is all base.
struct PictureName {
    std::string base, ext;
};
PictureName splitPictureName(std::string_view name);

// The four state pictures a button's "image" stands for: its extension and a trailing "_up" cut off, then
// "_up", "_on", "_dn" and "_ds" put back with the extension ("btn.png" -> "btn_up.png", "btn_on.png", ...).
struct ButtonImageNames {
    std::string base; // without the state and the extension, as the missing-picture warning names it
    std::string up, on, down, disabled;
};
ButtonImageNames buttonImageNames(std::string_view image);

// What loading a skin said: its warnings (the builder's words, one line each, in the order found) and, when
// the skin could not be loaded, why.
struct LoadMessages {
    std::vector<std::wstring> warnings;
    std::wstring error; // empty when the load succeeded

    // Every line, the warnings first and the reason last, as a report lists them.
    std::vector<std::wstring> lines() const;
};

// True when the model is usable; otherwise messages->error says why. Warnings are appended either way.
bool loadSkinModel(const SkinFileSet& files, SkinModel& model, LoadMessages* messages = nullptr);

// The text of an upper-cased key, or the key itself when the table lacks it.
std::wstring localeText(const SkinModel& model, std::string_view key);
std::wstring localeText(const LocaleTable& strings, std::string_view key);

// "" for an empty value; the locale text when the upper-cased value names a key; else the value itself.
std::wstring resolveLink(const SkinModel& model, std::string_view linkUrl);
std::wstring resolveLink(const LocaleTable& strings, std::string_view linkUrl);

// "#RRGGBB" / "#AARRGGBB" (the '#' optional, either case) to ARGB; false for anything else.
bool parseColor(std::string_view text, uint32_t& argb);

} // namespace nv
