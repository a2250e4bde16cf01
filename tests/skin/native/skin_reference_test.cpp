// docs/skin-format.md, the skin authors' reference, against the code's own tables: each table that follows a
// "<!-- checked: NAME -->" line must hold exactly the code's rows in its first columns (the prose columns are
// free). On a mismatch the test prints those columns as they must read.

#include "core/text.h"
#include "skin/locale.h"
#include "skin/settings.h"
#include "skin/skin_model.h"
#include "skin/skin_schema.h"
#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace nv {
namespace {

using Rows = std::vector<std::vector<std::string>>;

std::string documentText() {
    std::ifstream in(NV_DOCS_DIR "/skin-format.md", std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// A cell as the reader sees it: trimmed, without the backticks of code, "\|" as "|".
std::string cellText(std::string cell) {
    cell = trim(cell);
    if (cell.size() >= 2 && cell.front() == '`' && cell.back() == '`') cell = cell.substr(1, cell.size() - 2);
    std::string out;
    for (size_t i = 0; i < cell.size(); ++i)
        if (!(cell[i] == '\\' && i + 1 < cell.size() && cell[i + 1] == '|')) out += cell[i];
    return out;
}

// The rows of the table after the marker, header and separator left out; each row cut to its first columns.
Rows tableAfter(const std::string& document, const std::string& name, size_t columns) {
    Rows rows;
    const size_t marker = document.find("<!-- checked: " + name + " -->");
    if (marker == std::string::npos) return rows;
    std::istringstream lines(document.substr(marker));
    std::string line;
    std::getline(lines, line);
    bool started = false;
    int skipped = 0;
    while (std::getline(lines, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty() && !started) continue;
        if (line.empty() || line[0] != '|') break;
        started = true;
        if (skipped++ < 2) continue; // header and separator
        std::vector<std::string> cells;
        std::string cell;
        for (size_t i = 1; i < line.size(); ++i) {
            if (line[i] == '|' && line[i - 1] != '\\') {
                cells.push_back(cellText(cell));
                cell.clear();
            } else {
                cell += line[i];
            }
        }
        cells.resize(columns);
        rows.push_back(cells);
    }
    return rows;
}

std::string shown(const Rows& rows) {
    std::string out;
    for (const auto& row : rows) {
        out += "|";
        for (const std::string& cell : row)
            out += " `" + cell + "` |";
        out += "\n";
    }
    return out;
}

// A locale text as the table writes it: line breaks as \n, an empty text as a dash.
std::string localeCell(const wchar_t* text) {
    std::string out;
    for (char c : wideToUtf8(text))
        out += c == '\n' ? std::string("\\n") : std::string(1, c);
    return out.empty() ? "—" : out;
}

const char* settingKindName(SettingKind kind) {
    return kind == SettingKind::Number ? "number" : kind == SettingKind::Switch ? "switch" : "text";
}

TEST(SkinReference, TablesAreTheCodesOwn) {
    const std::string document = documentText();
    ASSERT_FALSE(document.empty()) << "docs/skin-format.md is missing";

    Rows kinds, root, attributes, roles, pictures, locale, settings;
    for (ControlKind kind : {ControlKind::Button, ControlKind::Text, ControlKind::Gauge, ControlKind::Iframe,
                             ControlKind::Image})
        kinds.push_back({controlKindName(kind)});
    for (std::string_view name : kRootAttributes)
        root.push_back({std::string(name)});
    for (std::string_view name : kControlAttributes)
        attributes.push_back({std::string(name)});
    for (const ControlRole& role : kControlRoles)
        roles.push_back({std::string(role.id) + (role.prefix ? "*" : ""), controlKindName(role.kind)});
    const ButtonImageNames names = buttonImageNames("btn.png");
    for (const std::string* name : {&names.up, &names.on, &names.down, &names.disabled})
        pictures.push_back({*name});
    for (size_t i = 0; i < kLocaleDefaultCount; ++i)
        locale.push_back({kLocaleDefaults[i].key, localeCell(kLocaleDefaults[i].text)});
    for (const SettingKey& key : kSettingKeys)
        settings.push_back({std::string(key.key), settingKindName(key.kind),
                            key.kind == SettingKind::Number
                                ? std::to_string(key.low) + ".." + std::to_string(key.high)
                                : "—",
                            key.defaultText.empty() ? "—" : std::string(key.defaultText)});

    const std::pair<const char*, const Rows*> tables[] = {
        {"control-types", &kinds}, {"root-attributes", &root},     {"control-attributes", &attributes},
        {"control-ids", &roles},   {"button-pictures", &pictures}, {"locale-keys", &locale},
        {"settings", &settings},
    };
    for (const auto& [name, expected] : tables) {
        const Rows written = tableAfter(document, name, expected->front().size());
        EXPECT_EQ(written, *expected)
            << "docs/skin-format.md, table \"" << name << "\": its first columns must read\n"
            << shown(*expected);
    }
}

} // namespace
} // namespace nv
