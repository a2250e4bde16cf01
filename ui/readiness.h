#pragma once
// What the Derleme page says about the session: the readiness checklist, the page's state, the result texts,
// and how a connection chip looks.

#include "packager/signing.h"
#include "ui/style.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nv::ui {

// An address of the skin that a page or a button opens: its name, its text and its edit field.
struct ReadinessAddress {
    std::wstring name;
    std::wstring text;
    int field = 0;
};

// What the window found out about the chosen certificate source, beyond what the options say.
struct SigningFacts {
    bool signtoolFound = false;
    bool pfxExists = false, pluginExists = false, metadataExists = false;
    StoreCertificate store;     // the thumbprint looked up in its store
    std::wstring unsetVariable; // a %NAME% of the operator's command that the environment does not hold
};

struct ReadinessInputs {
    bool skinLoaded = false;
    std::wstring skinSource; // the .zip or folder path
    int skinWidth = 0;       // the window size the skin declares; 0 when unknown
    int skinHeight = 0;
    std::wstring configUrl;  // field 1100
    std::wstring outputPath; // field 1110
    bool outputFolderExists = false;
    std::wstring iconPath; // empty: the template's icon
    SigningOptions signing;
    SigningFacts signingFacts;
    bool templateExists = false;
    // The news page, the feed and the buttons' links; an empty one is a choice, a malformed one is named.
    std::vector<ReadinessAddress> addresses;
};

struct ReadinessRow {
    const wchar_t* label;
    std::wstring value;
    bool ready = false;
    // Not ready, but the build goes on: the patcher will be made, only it cannot do everything (amber).
    bool warning = false;
    // Where the operator fixes it: the section and the field there (0: the section's first item); -1 when
    // nothing in the window fixes it.
    int fixSection = -1;
    int fixField = 0;
};

// The design's six rows; a seventh, "Adresler", only when a page or link address is malformed.
std::vector<ReadinessRow> readinessRows(const ReadinessInputs& inputs);
// The "İmza" row: off, or whether the chosen source has what it needs, and what to do when it has not.
ReadinessRow signingRow(const SigningOptions& signing, const SigningFacts& facts);
// "N / 6 hazır".
std::wstring readinessHeader(const std::vector<ReadinessRow>& rows);

// The name the operator knows a skin source by: the last part of its path (a trailing separator ignored).
std::wstring sourceName(std::wstring_view path);

enum class BuildPageState { NoSkin, Ready, Building, Done, Failed };
BuildPageState buildPageState(bool skinLoaded, bool building, bool finished, bool succeeded);

// "< 1 sn" below one second, else the whole seconds and " sn".
std::wstring durationText(uint32_t milliseconds);
// "%08X".
std::wstring crcText(uint32_t crc);

// How one connection chip looks: the current count's chip stands out; a hovered one is tinted.
struct ChipLook {
    Rgb fill;
    bool border;
    bool bold;
    Rgb text;
};
ChipLook chipLook(int chip, int currentCount, bool hovered);

} // namespace nv::ui
