#pragma once
// The keyboard's way through the window: the stops that Tab visits (the sidebar's sections first, then the
// page top to bottom, the form column before the right one, last the sidebar's build button), and what the
// arrow keys do on a stop. Worked out from the layout, so that the order follows what the page shows.

#include "ui/layout.h"

#include <vector>

namespace nv::ui {

struct FocusStop {
    enum class Kind { Item, Field, Log };
    Kind kind = Kind::Item;
    int item = kItemNone, sub = 0; // Item: the clickable item
    int field = 0;                 // Field: the edit control's id
    Rect rect;                     // where it is, to scroll it into view

    bool operator==(const FocusStop& o) const {
        return kind == o.kind && item == o.item && (item == kItemConnectionChip || sub == o.sub) &&
               field == o.field;
    }
};

// The connection chips are one stop (the chosen count's chip; the arrows choose another). Disabled items
// and fields are skipped; the log view is a stop when it is shown.
std::vector<FocusStop> focusChain(const WindowLayout& layout);

// The index of the stop after (or before) current, wrapping around; current -1 starts at either end.
int nextFocusStop(const std::vector<FocusStop>& chain, int current, bool forward);
// The index of a stop in the chain, -1 when it is not there.
int findFocusStop(const std::vector<FocusStop>& chain, const FocusStop& stop);

// What an arrow key does on a stop: the item to run with its sub-item (kItemNone: nothing). On the sections
// and the chips the focus moves with the choice. Up walks the sections up but makes the segment larger, as a
// spin box does.
enum class Arrow { Left, Right, Up, Down };
struct ArrowCommand {
    int item = kItemNone, sub = 0;
};
ArrowCommand arrowCommand(const FocusStop& stop, Arrow arrow);

} // namespace nv::ui
