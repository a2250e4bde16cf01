#pragma once
// What a skin.xml may say, as the loader reads it: the root's attributes, a control's attributes, and the ids
// that the patcher gives a meaning to. lint checks skins against these tables and the skin authors' reference
// (docs/skin-format.md) is checked against them, so neither can drift from what the loader does.

#include "skin/skin_model.h"

#include <string_view>

namespace nv {

// The root element's attributes (its name is free).
inline constexpr std::string_view kRootAttributes[] = {"background_image", "feed_url", "feed_refresh"};

// A control element's attributes; "w" and "h" stand for "width" and "height" where those are absent.
inline constexpr std::string_view kControlAttributes[] = {
    "type", "id",     "x",      "y",          "image",       "link_url",    "exec_path", "enable_on_complete",
    "text", "color",  "shadow", "bold",       "size",        "font",        "align",     "width",
    "w",    "height", "h",      "image_full", "image_empty", "feed_message"};

// A control id the patcher acts on, and the kind of control it acts on: the same id on another kind is read
// but does nothing. Ids are compared in upper case.
struct ControlRole {
    std::string_view id;
    ControlKind kind;
    bool prefix = false; // the id starts with this (a family of controls) rather than being it
};

inline constexpr ControlRole kControlRoles[] = {
    // The window's own buttons.
    {"BTN_CLOSE", ControlKind::Button},
    {"BTN_MINIMIZE", ControlKind::Button},
    // The update: its status lines and gauges, and the start button it enables (with exec_path and
    // enable_on_complete).
    {"TEXT_MAIN", ControlKind::Text},
    {"TEXT_SUB", ControlKind::Text},
    {"TEXT_TORRENT", ControlKind::Text},
    {"PROGRESS_MAIN", ControlKind::Gauge},
    {"PROGRESS_SUB", ControlKind::Gauge},
    {"BTN_START", ControlKind::Button},
    // Links: any button whose id starts so opens its link_url; "URL_NEW" falls back to LAUNCHER_NEW_URL.
    {"URL_", ControlKind::Button, true},
    {"URL_NEW", ControlKind::Button},
    // The server-status feed (its presence lets the operator set feed_url).
    {"FEED_STATUS", ControlKind::Text},
    {"FEED_PLAYERS", ControlKind::Text},
    {"FEED_LAMP", ControlKind::Image},
};

// The prefix of the feed's controls.
inline constexpr std::string_view kFeedIdPrefix = "FEED_";

// The role of an upper-cased id: an exact row first, then a prefix row; null when the id has none.
const ControlRole* controlRole(std::string_view id);

} // namespace nv
