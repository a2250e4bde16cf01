#include "cli/skin_input.h"

namespace nv {

bool readExecutableSkin(const std::wstring& path, SkinFileSet&, std::wstring& message) {
    message = L"Exe dosyaları yalnızca Windows sürümünde okunur: " + path;
    return false;
}

} // namespace nv
