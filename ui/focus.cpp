#include "ui/focus.h"

#include <algorithm>

namespace nv::ui {
namespace {

bool sidebarKind(BlockKind kind) {
    return kind == BlockKind::NavEntry || kind == BlockKind::SidebarBuild || kind == BlockKind::SkinCard ||
           kind == BlockKind::Brand || kind == BlockKind::SidebarBackground;
}

} // namespace

std::vector<FocusStop> focusChain(const WindowLayout& layout) {
    std::vector<FocusStop> sections, page, last;
    bool chips = false;
    // The chip that stands for the group: the chosen count's, else the first.
    const Block* chip = nullptr;
    for (const Block& b : layout.blocks)
        if (b.kind == BlockKind::Chip && (!chip || (b.on && !chip->on))) chip = &b;
    for (const Block& b : layout.blocks) {
        if (b.kind == BlockKind::FieldBox) {
            if (!b.disabled) page.push_back({FocusStop::Kind::Field, kItemNone, 0, b.field, b.rect});
            continue;
        }
        if (b.item == kItemNone || b.disabled) continue;
        if (b.kind == BlockKind::Chip) {
            if (chips) continue;
            chips = true;
            page.push_back({FocusStop::Kind::Item, chip->item, chip->sub, 0, chip->rect});
            continue;
        }
        const FocusStop stop{FocusStop::Kind::Item, b.item, b.sub, 0, b.rect};
        if (b.kind == BlockKind::NavEntry)
            sections.push_back(stop);
        else if (b.kind == BlockKind::SidebarBuild)
            last.push_back(stop);
        else if (!sidebarKind(b.kind))
            page.push_back(stop);
    }
    if (!layout.logView.empty()) page.push_back({FocusStop::Kind::Log, kItemNone, 0, 0, layout.logView});
    // Top to bottom, the form column before the right one; within a row left to right.
    const int rightColumn = layout.frame.right.left;
    std::stable_sort(page.begin(), page.end(), [&](const FocusStop& a, const FocusStop& b) {
        const bool ar = a.rect.left >= rightColumn, br = b.rect.left >= rightColumn;
        if (ar != br) return br;
        if (a.rect.top != b.rect.top) return a.rect.top < b.rect.top;
        return a.rect.left < b.rect.left;
    });
    std::vector<FocusStop> chain = std::move(sections);
    chain.insert(chain.end(), page.begin(), page.end());
    chain.insert(chain.end(), last.begin(), last.end());
    return chain;
}

int nextFocusStop(const std::vector<FocusStop>& chain, int current, bool forward) {
    const int count = static_cast<int>(chain.size());
    if (count == 0) return -1;
    if (current < 0 || current >= count) return forward ? 0 : count - 1;
    return (current + (forward ? 1 : count - 1)) % count;
}

int findFocusStop(const std::vector<FocusStop>& chain, const FocusStop& stop) {
    const auto it = std::find(chain.begin(), chain.end(), stop);
    return it == chain.end() ? -1 : static_cast<int>(it - chain.begin());
}

ArrowCommand arrowCommand(const FocusStop& stop, Arrow arrow) {
    if (stop.kind != FocusStop::Kind::Item) return {};
    const int step = arrow == Arrow::Left || arrow == Arrow::Up ? -1 : 1;
    switch (stop.item) {
    case kItemSection: {
        const int section = stop.sub + step;
        if (section < 0 || section >= kSectionCount) return {};
        return {kItemSection, section};
    }
    case kItemConnectionChip: {
        const int count = stop.sub + step;
        if (count < kMinConnections || count > kMaxConnections) return {};
        return {kItemConnectionChip, count};
    }
    case kItemSegmentMinus:
    case kItemSegmentPlus:
        // Up and right make the segment larger, down and left smaller, on either button.
        return {arrow == Arrow::Up || arrow == Arrow::Right ? kItemSegmentPlus : kItemSegmentMinus, 0};
    case kItemLinkPagePrev:
    case kItemLinkPageNext:
        return {step > 0 ? kItemLinkPageNext : kItemLinkPagePrev, 0};
    default:
        return {};
    }
}

} // namespace nv::ui
