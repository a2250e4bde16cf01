#pragma once
// The builder's edit fields: the fixed ones of the sections and one per link-opening button of the loaded
// skin. They are created, placed on the current section, enabled and read here; what each one holds is its
// recipe key's (recipe/recipe_keys.h names the field of each key), so the fields bind to a Recipe in both
// directions.

#include "recipe/recipe.h"
#include "recipe/recipe_keys.h"
#include "skin/workspace.h"
#include "ui/layout.h"
#include "ui/win32/draw.h"

#include <string>
#include <vector>

namespace nv::ui::win {

struct FieldRecord {
    int id = 0;
    HWND hwnd = nullptr;
    Rect row;
    bool mono = false;
};

class FieldSet {
public:
    FieldSet() = default;
    FieldSet(const FieldSet&) = delete;
    FieldSet& operator=(const FieldSet&) = delete;

    // The fixed fields as children of parent, each with its key's text in a fresh recipe.
    void create(HWND parent, const FontSet& fonts, int dpi);
    // One field per button that opens a link (or names a locale key for one), in the skin's order, ids from
    // 1200 up; the fields of an earlier skin go.
    void rebuildLinks(const std::vector<ButtonLink>& buttons);

    // Moves every field of the layout into its row and hides the others.
    void place(const WindowLayout& layout, HDWP& batch);
    // Enabled exactly while no build runs; the signing fields only while signing is on, too.
    void enable(bool building, bool signing);

    HWND window(int id) const;
    std::wstring text(int id) const;
    // An unknown id does nothing.
    void setText(int id, const std::wstring& text);
    // The edit control that has the focus, 0 for none.
    int focused() const;
    size_t count() const { return fields_.size(); }
    // False while the window is being torn down and some fields are gone already.
    bool allAlive() const;

    // The link fields: their count, and the button each one edits.
    size_t linkCount() const { return linkButtons_.size(); }
    size_t linkButton(size_t field) const { return linkButtons_[field]; }
    // The link field of a button, 0 when it has none.
    int linkField(size_t button) const;

    // The fields' texts into the recipe, each read by its key's rules; link fields into their buttons' links.
    void read(Recipe& recipe) const;
    // The recipe's values into the fields of these keys (a text that is already there stays untouched, with
    // its cursor); link fields from their buttons' links.
    void show(const Recipe& recipe, RestoreStep step);

private:
    FieldRecord* find(int id);
    const FieldRecord* find(int id) const;
    HWND createEdit(int id, const std::wstring& text, uint32_t style, bool mono,
                    const std::wstring& placeholder);
    void setTextIfChanged(HWND hwnd, const std::wstring& text);

    HWND parent_ = nullptr;
    const FontSet* fonts_ = nullptr;
    int dpi_ = 96;
    std::vector<FieldRecord> fields_;
    std::vector<size_t> linkButtons_; // link field i edits buttonLinks[linkButtons_[i]]
};

} // namespace nv::ui::win
