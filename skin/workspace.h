#pragma once
// The builder's working skin: the loaded files, the editable values imported from them, and the composition
// of the final skin set for a build or the preview. No UI in here: the builder window and nvbuild drive it.

#include "core/files.h"
#include "readers/skin_files.h"
#include "skin/settings.h"
#include "skin/skin_model.h"

#include <string>
#include <vector>

namespace nv {

struct ButtonLink {
    std::string id;            // as written in skin.xml
    std::string type;          // the control's type, lower-cased
    std::string image;         // the control's image name, to show the operator
    std::wstring importedLink; // "link_url" resolved through the locale file at import
    std::wstring link;         // as edited
    bool edited = false;
    std::string localeKey; // the key that "link_url" named at import; empty for a literal address
};

// The source label of a skin put together from dropped files alone.
inline constexpr const wchar_t* kDroppedFilesLabel = L"(bırakılan dosyalar)";

class SkinWorkspace {
public:
    SkinFileSet files;
    bool loaded = false;
    std::wstring sourceLabel;
    std::string addressFile;
    std::string localeFile;
    std::wstring configUrl;
    std::wstring iframeUrl;
    std::wstring feedUrl;
    std::vector<ButtonLink> buttonLinks;
    PatcherSettings settings;
    bool hasFeed = false;

    // The values as imported, against which edits are compared at composition.
    std::wstring importedConfigUrl;
    std::wstring importedIframeUrl;
    std::wstring importedFeedUrl;

    // Loads a folder or a .zip as the new working skin. On success message holds the first file of a folder
    // that could not be read, if any (the load goes on without it).
    bool loadSkinSource(const std::wstring& path, std::wstring& message);
    // Takes an already collected set (a package read back from a patcher, say) as the new working skin.
    bool loadSkinSet(SkinFileSet set, const std::wstring& label, std::wstring& message);
    // Merges dropped folders, zips and single files into the working set.
    void addDroppedFiles(const std::vector<std::wstring>& paths, int& count, std::wstring& note);
    // Fills the editable values from the working set.
    void importSkinValues();
    // Sets the edited link of the button links with this id (ASCII case-insensitive); false when none has it.
    bool setButtonLink(std::string_view id, const std::wstring& link);
    // Sets the edited link of one button (nothing for an index past the buttons).
    void setButtonLinkAt(size_t index, const std::wstring& link);

    // The working set with the operator's edits applied (the working set itself never changes).
    bool composeSkinFiles(SkinFileSet& out, std::wstring& message) const;
    // Compose, validate with the skin loader and pack. messages gets the loader's warnings and, on failure,
    // the reason (the composition's, the loader's or the packer's).
    bool buildSkinPackage(Bytes& out, LoadMessages& messages) const;
    // Compose and load for the preview. Unlike a build the preview carries on past a composition failure,
    // which then joins the warnings.
    bool loadPreviewModel(SkinModel& model, LoadMessages& messages) const;
};

} // namespace nv
