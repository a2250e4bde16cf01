#pragma once
// The import of a skin's text files, shared by the skin loader and the working skin so that the two never
// disagree on which file they read or how they read it: the address file, the locale file, "norvane.ini",
// and skin.xml with the attributes of its controls. Pictures are the loader's alone.

#include "readers/skin_files.h"
#include "readers/xml.h"
#include "skin/locale.h"
#include "skin/settings.h"
#include "skin/skin_model.h"

#include <string>
#include <vector>

namespace nv {

struct SkinTexts {
    std::string addressFile;   // the set name found, "" when the set has none
    bool addressRead = false;  // found and parsed
    std::wstring addressError; // the parser's message when it did not parse
    std::wstring remoteConfigPath;
    std::wstring localConfigPath = L"kaldratorrent.config.xml"; // also when the file leaves it empty
    std::string languagePath = "Fernwick.locale.xml";           // the preferred locale file
    std::string localeFile;                                     // "" when the set has none
    std::wstring localeError; // the parser's message when it did not parse (the defaults then stand alone)
    LocaleTable strings;      // the built-in texts, overridden by the locale file
    PatcherSettings settings; // from "norvane.ini", else the defaults
    bool skinPresent = false; // the set holds "skin.xml"
    bool skinRead = false;    // ... and it parsed
    std::wstring skinError;   // the parser's message when it did not parse
    XmlDocument skin;
};

// Reads every text file of the set; a file that is missing or does not parse is noted, never fatal here.
void readSkinTexts(const SkinFileSet& files, SkinTexts& texts);

// skin.xml's controls: the root's children named exactly "control", in document order.
std::vector<const XmlElement*> controlElements(const XmlDocument& skin);

// A control's attributes as the patcher reads them, pictures left out: kind, upper-cased id, position,
// texts, the link resolved through the locale table, and the sizes that do not come from a picture.
SkinControl readControl(const XmlElement& element, uint32_t index, const LocaleTable& strings);

// "width" (or "w" only when "width" is absent), likewise "height" / "h"; 0 when neither is there.
int sizeAttribute(const XmlElement& element, std::string_view name, std::string_view alias);

// The server-status feed's own controls, whose presence lets the operator change the feed address.
bool isFeedControl(const SkinControl& control);

} // namespace nv
