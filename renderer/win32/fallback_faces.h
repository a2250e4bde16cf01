#pragma once
// The faces text falls back to when a skin's face and the common UI faces are all missing: a player's Wine or
// Proton prefix has none of Tahoma, Segoe UI, Arial or Microsoft Sans Serif, and GDI+'s generic sans serif is
// one of those, so without a last resort every text of the window would vanish.

#include <string>
#include <vector>

namespace nv {

// In the order to try them: the system's message font by its name and by the face GDI realises it as (GDI
// always maps a font to something installed, while GDI+ opens installed families only and refuses aliases
// such as "MS Shell Dlg"), then installed families that cover Turkish letters, then any other installed
// family that is not a symbol font. Looked up once per process; the faces come from the system, so each may
// still fail to open in GDI+ and the caller tries the next.
const std::vector<std::wstring>& fallbackFaces();

} // namespace nv
