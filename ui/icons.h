#pragma once
// The builder's line icons, each a path on a 24 x 24 grid (see icon_path.h).

namespace nv::ui {

enum class Icon {
    Upload,
    Folder,
    FolderOpen,
    Link,
    Sliders,
    Package,
    ShieldCheck,
    Bolt,
    Check,
    Warning,
    Info,
    Play,
    Copy,
    Image,
    Refresh,
    Download,
    File,
    Trash,
    Globe,
    Key,
    ChevronLeft,
    ChevronRight,
    Minus,
    Plus,
    Count
};

const char* iconPath(Icon icon);

} // namespace nv::ui
