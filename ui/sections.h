#pragma once
// The builder's six sections, its edit fields and the numbers of its clickable items.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nv::ui {

constexpr int kSectionCount = 6;
enum Section : int { kKaynak = 0, kBaglantilar = 1, kDavranis = 2, kKimlik = 3, kCikti = 4, kDerleme = 5 };

struct SectionInfo {
    const char* identifier; // snapshot file names
    const wchar_t* title;
    const wchar_t* subtitle;
    const wchar_t* description;
};
const SectionInfo& sectionInfo(int section);

// Edit control ids.
enum FieldId : int {
    kFieldConfigUrl = 1100,
    kFieldNewsUrl = 1101,
    kFieldTitle = 1102,
    kFieldSegment = 1103,
    kFieldRunArgs = 1104,
    kFieldOutName = 1105,
    kFieldProduct = 1106,
    kFieldCompany = 1107,
    kFieldVersion = 1108,
    kFieldCopyright = 1109,
    kFieldOutPath = 1110,
    kFieldPfx = 1111,
    kFieldPassword = 1112,
    kFieldTimestamp = 1113,
    kFieldFeedUrl = 1114,
    // The certificate sources beside the PFX file, and the further time-stamp servers.
    kFieldThumbprint = 1115,
    kFieldPlugin = 1116,
    kFieldPluginMetadata = 1117,
    kFieldSignCommand = 1118,
    kFieldTimestampMore = 1119,
    kFieldLinkFirst = 1200,
    kFieldLinkLast = 1599,
    kLogViewId = 1900,
};

constexpr bool isLinkField(int id) {
    return id >= kFieldLinkFirst && id <= kFieldLinkLast;
}
// The fields that only signing uses, enabled while signing is on.
constexpr bool isSigningField(int id) {
    return id == kFieldPfx || id == kFieldPassword || id == kFieldTimestamp ||
           (id >= kFieldThumbprint && id <= kFieldTimestampMore);
}
// Leaving one of these refreshes the live preview.
constexpr bool refreshesPreview(int id) {
    return id == kFieldConfigUrl || id == kFieldNewsUrl || id == kFieldTitle || id == kFieldSegment ||
           isLinkField(id);
}

enum FieldStyle : uint32_t { kStylePlain = 0, kStyleNumberCentered = 1, kStylePassword = 2 };

// How a field looks and where it sits; what it holds is its recipe key's (recipe/recipe_keys.h names the
// field of each key), and so is its first text.
struct FieldSpec {
    int id;
    int section;
    const wchar_t* label;
    const wchar_t* hint;        // may be empty
    const wchar_t* placeholder; // may be empty
    uint32_t style;             // FieldStyle
    bool mono;
};

// The fixed fields (not the per-button link fields), in the order they are created (the tab order).
const std::vector<FieldSpec>& fixedFields();
const FieldSpec* findField(int id);

constexpr int kFieldTextLimit = 1024;

// Clickable items; the sub-item carries a section, chip or page number where one is needed.
enum Item : int {
    kItemNone = -1,
    kItemSection = 1,
    kItemBuildSidebar = 2,
    kItemPreviewPanel = 3,
    kItemChooseZip = 4,
    kItemChooseFolder = 5,
    kItemLinkPagePrev = 6,
    kItemLinkPageNext = 7,
    kItemConnectionChip = 8,
    kItemSegmentMinus = 9,
    kItemSegmentPlus = 10,
    kItemToggleCloseOnStart = 11,
    kItemToggleAutoStart = 12,
    kItemToggleAllowError = 13,
    kItemToggleBrowserEmu = 14,
    kItemChooseIcon = 15,
    kItemRemoveIcon = 16,
    kItemChooseOutput = 17,
    kItemToggleSigning = 18,
    kItemChooseCertificate = 19,
    kItemBuildPage = 20,
    kItemShowInFolder = 21,
    kItemPreviewResult = 22,
    kItemCopyCrc = 23,
    kItemCopyLog = 24,
    kItemCopySelfUpdate = 25,
    kItemSigningSource = 26,        // sub-item = the SigningSource
    kItemToggleMachineStore = 27,   // the computer's store instead of the user's
    kItemChoosePlugin = 28,         // the signing plug-in's .dll, "Seç"
    kItemChoosePluginMetadata = 29, // its metadata file, "Seç"
    kItemReadinessRow = 30, // a checklist row that is not ready; sub-item = the row: goes to its field
};

// The Davranış page's switches: the item that flips each, the recipe key it flips, its title and its line.
struct ToggleSpec {
    int item;
    std::string_view key;
    const wchar_t* title;
    const wchar_t* line;
};
std::span<const ToggleSpec> behaviourToggles();
const ToggleSpec* findToggle(int item);

} // namespace nv::ui
