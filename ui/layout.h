#pragma once
// The builder window's layout: where the sidebar, the page, its cards, fields, chips, toggles and buttons go
// for a given client size, section and session state. The result is a display list of blocks that the
// Windows painter draws one by one and that the mouse is hit-tested against, so the arithmetic lives here,
// apart from any drawing, and is tested natively.

#include "recipe/recipe.h"
#include "ui/icons.h"
#include "ui/readiness.h"
#include "ui/scroll.h"
#include "ui/sections.h"
#include "ui/style.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nv::ui {

struct Rect {
    int left = 0, top = 0, right = 0, bottom = 0;
    int width() const { return right - left; }
    int height() const { return bottom - top; }
    bool empty() const { return right <= left || bottom <= top; }
    bool contains(int x, int y) const { return x >= left && x < right && y >= top && y < bottom; }
    bool contains(const Rect& r) const {
        return r.left >= left && r.right <= right && r.top >= top && r.bottom <= bottom;
    }
    bool intersects(const Rect& r) const {
        return r.left < right && left < r.right && r.top < bottom && top < r.bottom;
    }
    Rect inset(int dx, int dy) const { return {left + dx, top + dy, right - dx, bottom - dy}; }
    bool operator==(const Rect&) const = default;
};

// The fixed frame: sidebar, page header, page area split into the form column and the right column, footer.
struct FrameLayout {
    int dpi = 96;
    bool compact = false; // client height below 780 px (scaled)
    Rect client, sidebar, header, page, form, right, footer;
    int s(int length) const { return scaleLength(length, dpi); }
};
FrameLayout layoutFrame(int clientWidth, int clientHeight, int dpi);

// Text metrics from the real fonts (the painter's device context) or, in tests, a fixed model.
class TextMeasure {
public:
    virtual ~TextMeasure() = default;
    virtual int width(std::wstring_view text, int font) const = 0;
    virtual int lineHeight(int font) const = 0;
    // Height of the text word-wrapped to the width (at least one line).
    virtual int wrappedHeight(std::wstring_view text, int font, int width) const = 0;
};

// What the page shows, gathered from the application's state before every layout.
enum class PreviewState { NoSkin, Unresolved, Waiting, Pixels };

struct SkinSummary {
    bool resolved = false; // the skin description loaded
    int width = 0, height = 0;
    bool transparent = false;
    int buttons = 0, links = 0, textAreas = 0;
    std::vector<std::wstring> warnings;
    std::vector<std::wstring> newsAreas; // one line per news frame of the skin
};

struct LinkFieldInfo {
    int fieldId = 0;
    std::wstring label; // the button's id
    std::wstring note;  // its image and where the link came from
};

struct PageModel {
    int section = kKaynak;
    int hoverItem = kItemNone, hoverSub = 0;
    int pressedItem = kItemNone, pressedSub = 0;
    int focusField = 0; // the edit control that has the focus, 0 for none
    // The self-drawn item that has the keyboard's focus (the window itself has it), kItemNone for none.
    int focusItem = kItemNone, focusSub = 0;
    int tick = 0;       // busy animation
    int pageScroll = 0; // how far the form column is scrolled down, in pixels

    bool skinLoaded = false;
    bool skinLoadFailed = false;
    std::wstring skinSource;
    SkinSummary summary;

    std::vector<LinkFieldInfo> links;
    int linkPage = 0;
    std::wstring configOrigin, newsOrigin, feedOrigin; // "skin.xml'den", "dil dosyasından" or empty

    // The operator's decisions: connections, switches, signing (with the signtool found, empty when none),
    // the icon's picture and the output place.
    Recipe recipe;
    bool iconPreview = false; // decoded pixels of the icon are at hand

    bool building = false;
    BuildPageState buildState = BuildPageState::NoSkin;
    std::wstring lastMessage;
    bool hasResult = false;   // a successful build's numbers
    bool resultStale = false; // the settings changed since the last build
    uint32_t crc = 0;
    bool signedResult = false;
    SignatureInfo signature; // read back from the signed patcher
    uint32_t elapsedMs = 0;
    std::vector<ReadinessRow> readiness;

    std::wstring status;
    bool statusWarning = false;

    PreviewState preview = PreviewState::NoSkin;
    int previewWidth = 0, previewHeight = 0; // the rendered picture's size
};

enum class BlockKind {
    // frame
    SidebarBackground,
    Brand,
    NavEntry,
    SkinCard,
    SidebarBuild,
    FooterBar,
    // page
    Card,
    Text,
    FieldBox,
    Button,     // secondary: white with a hairline edge
    IconButton, // a square secondary button with only an icon
    PrimaryButton,
    DropZone,
    StatCell,
    Chip,
    Toggle,
    CheckRow,
    StateTile,
    Pill,
    PreviewArea,
    PagerText,
    StatusDot,
    Separator,
};

enum class Align { Left, Center, Right };

struct Block {
    BlockKind kind = BlockKind::Text;
    Rect rect{};
    int item = kItemNone; // clickable when set
    int sub = 0;
    int field = 0; // FieldBox: the edit control's id
    int font = kFontBody;
    Rgb color = color::kText;
    Align align = Align::Left;
    bool wrap = false;     // Text: word-wrapped over several lines
    bool path = false;     // Text: a path, shortened in its middle rather than at its end
    bool on = false;       // selected, switched on, ready, current
    bool warning = false;  // CheckRow: not ready, but the build goes on (amber rather than red)
    bool scrolls = false;  // in the form column: moves with its scroll and is seen only inside its view
    bool disabled = false; // drawn muted and not clickable
    bool hasIcon = false;
    Icon icon = Icon::Check;
    std::wstring text{};
    std::wstring text2{}; // a second line or a value
};

struct WindowLayout {
    FrameLayout frame;
    std::vector<Block> blocks;
    int linkPages = 1;    // pages of the link list in section 1
    int linkPageSize = 1; // link fields a page
    Rect logView;         // section 5: where the log view goes; empty elsewhere
    // The form column scrolls when its cards are taller than the column: the view, the height of what is in
    // it, the offset used (kept to 0 ... pageContent - view height) and the thin bar beside it.
    Rect pageView;
    int pageContent = 0;
    int pageScroll = 0;
    ThinScrollBar pageBar;
    Rect pageTrack; // where the bar is drawn: a thin strip in the gap right of the form column
    int maxPageScroll() const { return std::max(0, pageContent - pageView.height()); }
};

WindowLayout layoutWindow(int clientWidth, int clientHeight, int dpi, const PageModel& model,
                          const TextMeasure& measure);

// The field boxes of the layout whose edit control is shown: control id and row rectangle. A box of the form
// column that its view cuts is left out (its control would lie over the header or the footer).
std::vector<std::pair<int, Rect>> fieldRows(const WindowLayout& layout);
// Where an edit control sits inside its row: 12 px in from the left, 24 px narrower than the row, as high as
// its font's text plus 2, centred vertically.
Rect editRect(const Rect& row, int textHeight, int dpi);

// Whether a block takes the pointer at a point: each kind says where it can be clicked (today every kind over
// its rectangle). Blocks without an item and disabled ones take no clicks.
bool blockHit(const Block& block, int x, int y);

// The topmost clickable block under the point.
struct Hit {
    int item = kItemNone;
    int sub = 0;
};
Hit hitTest(const WindowLayout& layout, int x, int y);

// The scroll offset that brings a rectangle of the form column (as laid out at offset scroll) wholly into the
// view, with a margin; a rectangle taller than the view is aligned at its top.
int scrollToShow(const WindowLayout& layout, const Rect& rect, int margin);

// The link fields on one page of the list.
int linkPageCount(size_t linkCount, int pageSize);

} // namespace nv::ui
