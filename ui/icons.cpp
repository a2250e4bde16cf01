#include "ui/icons.h"

#include <cstddef>

namespace nv::ui {

const char* iconPath(Icon icon) {
    // The "h0.01" endings draw a dot with the round cap; circles are arcs to a point 0.01 beside their start.
    static const char* const paths[] = {
        "M12 15.5v-12 M7 8.5l5-5 5 5 M4.5 20.5h15",
        "M3 7.5A2 2 0 0 1 5 5.5h4l2 2h8a2 2 0 0 1 2 2v8a2 2 0 0 1-2 2H5a2 2 0 0 1-2-2z",
        "M3.5 18.5V7A1.5 1.5 0 0 1 5 5.5h4l2 2h6.5A1.5 1.5 0 0 1 19 9v1.5 M3.5 18.5l2.6-6.7A1.5 1.5 0 0 1 "
        "7.5 "
        "10.8H21l-2.7 6.9a1.5 1.5 0 0 1-1.4 0.8z",
        "M10 14a4.5 4.5 0 0 0 6.4 0l3-3a4.5 4.5 0 0 0-6.4-6.4l-1 1 M14 10a4.5 4.5 0 0 0-6.4 0l-3 3a4.5 4.5 0 "
        "0 0 "
        "6.4 6.4l1-1",
        "M4 7h9 M17 7h3 M15 5v4 M4 12h3 M11 12h9 M9 10v4 M4 17h11 M19 17h1 M17 15v4",
        "M12 3l8.5 4.5v9L12 21l-8.5-4.5v-9z M3.5 7.5L12 12l8.5-4.5 M12 12v9",
        "M12 3l7.5 2.8v6c0 4.6-3.2 7.7-7.5 9.2-4.3-1.5-7.5-4.6-7.5-9.2v-6z M9 12l2.2 2.2L15.5 10",
        "M13.5 2.5L4.5 13.5h6.5l-1 8 9-11h-6.5z",
        "M5 12.5l4.5 4.5L19 7.5",
        "M12 3.5l9.5 16.5h-19z M12 10v4.5 M12 17.3h0.01",
        "M12 3a9 9 0 1 0 0.01 0z M12 11v5.5 M12 7.8h0.01",
        "M7.5 4.5l12 7.5-12 7.5z",
        "M9 9h10.5v11.5H9z M5 15V4.5h10.5",
        "M5 4h14a2 2 0 0 1 2 2v12a2 2 0 0 1-2 2H5a2 2 0 0 1-2-2V6a2 2 0 0 1 2-2z M21 15.5l-5-5L5.5 20 M8.5 "
        "7.5a1.5 1.5 0 1 0 0.01 0z",
        "M20 12a8 8 0 1 1-2.4-5.7 M20 4.5v4.5h-4.5",
        "M12 3.5v12 M7 10.5l5 5 5-5 M4.5 20.5h15",
        "M14 3H6.5A1.5 1.5 0 0 0 5 4.5v15A1.5 1.5 0 0 0 6.5 21h11a1.5 1.5 0 0 0 1.5-1.5V8z M14 3v5h5",
        "M4 7h16 M10 11v6 M14 11v6 M6 7l0.9 11.6A2 2 0 0 0 8.9 20.5h6.2a2 2 0 0 0 2-1.9L18 7 M9 7V4.5h6V7",
        "M12 3a9 9 0 1 0 0.01 0z M3 12h18 M12 3c2.4 2.5 3.7 5.6 3.7 9s-1.3 6.5-3.7 "
        "9c-2.4-2.5-3.7-5.6-3.7-9S9.6 "
        "5.5 12 3z",
        "M14.5 4a5.5 5.5 0 1 1-4.7 8.4L3.5 18.7v2h3v-2h2v-2h2l1.6-1.6 M16 8h0.01",
        "M14.5 6.5L9 12l5.5 5.5",
        "M9.5 6.5l5.5 5.5-5.5 5.5",
        "M6 12h12",
        "M12 6v12 M6 12h12",
    };
    static_assert(sizeof(paths) / sizeof(paths[0]) == static_cast<size_t>(Icon::Count));
    const auto index = static_cast<size_t>(icon);
    return index < static_cast<size_t>(Icon::Count) ? paths[index] : "";
}

} // namespace nv::ui
