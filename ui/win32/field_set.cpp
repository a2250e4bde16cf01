// The edit fields: creation, Ctrl+A, placement on the current section, and their binding to the recipe.

#include "ui/win32/field_set.h"

#include "core/text.h"
#include "recipe/recipe_keys.h"

#include <commctrl.h>

#include <algorithm>

namespace nv::ui::win {
namespace {

// Ctrl+A arrives as the character 1: select everything instead of beeping.
LRESULT CALLBACK editSubclass(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR) {
    if (message == WM_CHAR && wParam == 1) {
        SendMessageW(hwnd, EM_SETSEL, 0, -1);
        return 0;
    }
    return DefSubclassProc(hwnd, message, wParam, lParam);
}

std::wstring windowText(HWND hwnd) {
    const int length = GetWindowTextLengthW(hwnd);
    std::wstring text(static_cast<size_t>(length) + 1, L'\0');
    const int copied = GetWindowTextW(hwnd, text.data(), length + 1);
    text.resize(static_cast<size_t>(copied > 0 ? copied : 0));
    return text;
}

} // namespace

HWND FieldSet::createEdit(int id, const std::wstring& text, uint32_t style, bool mono,
                          const std::wstring& placeholder) {
    DWORD windowStyle = WS_CHILD | WS_TABSTOP | ES_AUTOHSCROLL;
    if (style == kStyleNumberCentered) windowStyle |= ES_NUMBER | ES_CENTER;
    if (style == kStylePassword) windowStyle |= ES_PASSWORD;
    HWND edit = CreateWindowExW(0, L"EDIT", text.c_str(), windowStyle, 0, 0, 0, 0, parent_,
                                reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), GetModuleHandleW(nullptr),
                                nullptr);
    if (!edit) return nullptr;
    SendMessageW(edit, EM_SETLIMITTEXT, kFieldTextLimit, 0);
    SendMessageW(edit, WM_SETFONT, reinterpret_cast<WPARAM>(fonts_->get(mono ? kFontMono : kFontBody)),
                 FALSE);
    SendMessageW(edit, EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN, 0);
    if (!placeholder.empty())
        SendMessageW(edit, EM_SETCUEBANNER, TRUE, reinterpret_cast<LPARAM>(placeholder.c_str()));
    SetWindowSubclass(edit, editSubclass, 1, 0);
    return edit;
}

void FieldSet::create(HWND parent, const FontSet& fonts, int dpi) {
    parent_ = parent;
    fonts_ = &fonts;
    dpi_ = dpi;
    fields_.reserve(512);
    const Recipe fresh;
    for (const FieldSpec& spec : fixedFields()) {
        const RecipeKey* key = findKeyByField(spec.id);
        const std::wstring text = key ? keyText(*key, fresh) : std::wstring();
        FieldRecord record{spec.id, nullptr, {}, spec.mono};
        record.hwnd = createEdit(spec.id, text, spec.style, spec.mono, spec.placeholder);
        if (record.hwnd) fields_.push_back(record);
    }
}

void FieldSet::rebuildLinks(const std::vector<ButtonLink>& buttons) {
    for (auto it = fields_.begin(); it != fields_.end();) {
        if (isLinkField(it->id)) {
            DestroyWindow(it->hwnd);
            it = fields_.erase(it);
        } else {
            ++it;
        }
    }
    linkButtons_.clear();
    for (size_t i = 0; i < buttons.size(); ++i) {
        const ButtonLink& button = buttons[i];
        if (button.importedLink.empty() && button.localeKey.empty()) continue;
        const int id = kFieldLinkFirst + static_cast<int>(linkButtons_.size());
        if (id > kFieldLinkLast) break;
        FieldRecord record{id, nullptr, {}, true};
        record.hwnd = createEdit(id, button.link, kStylePlain, true, L"");
        if (!record.hwnd) continue;
        linkButtons_.push_back(i);
        fields_.push_back(record);
    }
}

FieldRecord* FieldSet::find(int id) {
    for (FieldRecord& field : fields_)
        if (field.id == id) return &field;
    return nullptr;
}

const FieldRecord* FieldSet::find(int id) const {
    for (const FieldRecord& field : fields_)
        if (field.id == id) return &field;
    return nullptr;
}

HWND FieldSet::window(int id) const {
    const FieldRecord* field = find(id);
    return field ? field->hwnd : nullptr;
}

std::wstring FieldSet::text(int id) const {
    const FieldRecord* field = find(id);
    return field ? windowText(field->hwnd) : std::wstring();
}

void FieldSet::setText(int id, const std::wstring& text) {
    if (FieldRecord* field = find(id)) SetWindowTextW(field->hwnd, text.c_str());
}

void FieldSet::setTextIfChanged(HWND hwnd, const std::wstring& text) {
    if (windowText(hwnd) != text) SetWindowTextW(hwnd, text.c_str());
}

int FieldSet::focused() const {
    HWND focus = GetFocus();
    for (const FieldRecord& field : fields_)
        if (field.hwnd == focus) return field.id;
    return 0;
}

bool FieldSet::allAlive() const {
    return std::all_of(fields_.begin(), fields_.end(), [](const FieldRecord& f) { return IsWindow(f.hwnd); });
}

int FieldSet::linkField(size_t button) const {
    for (size_t field = 0; field < linkButtons_.size(); ++field)
        if (linkButtons_[field] == button) return kFieldLinkFirst + static_cast<int>(field);
    return 0;
}

void FieldSet::enable(bool building, bool signing) {
    for (const FieldRecord& field : fields_)
        EnableWindow(field.hwnd, isSigningField(field.id) ? !building && signing : !building);
}

void FieldSet::place(const WindowLayout& layout, HDWP& batch) {
    const std::vector<std::pair<int, Rect>> rows = fieldRows(layout);
    for (FieldRecord& field : fields_) {
        const auto placed =
            std::find_if(rows.begin(), rows.end(), [&](const auto& row) { return row.first == field.id; });
        if (placed == rows.end()) {
            field.row = {};
            if (batch)
                batch =
                    DeferWindowPos(batch, field.hwnd, nullptr, 0, 0, 0, 0,
                                   SWP_HIDEWINDOW | SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOMOVE | SWP_NOSIZE);
            continue;
        }
        field.row = placed->second;
        const Rect r = editRect(field.row, fonts_->textHeight(field.mono ? kFontMono : kFontBody), dpi_);
        if (batch)
            batch = DeferWindowPos(batch, field.hwnd, nullptr, r.left, r.top, r.width(), r.height(),
                                   SWP_SHOWWINDOW | SWP_NOZORDER | SWP_NOACTIVATE);
    }
}

void FieldSet::read(Recipe& recipe) const {
    for (const FieldRecord& field : fields_)
        if (const RecipeKey* key = findKeyByField(field.id))
            readKeyText(*key, recipe, windowText(field.hwnd));
    for (size_t i = 0; i < linkButtons_.size(); ++i)
        if (linkButtons_[i] < recipe.links.size())
            recipe.links[linkButtons_[i]].address = text(kFieldLinkFirst + static_cast<int>(i));
}

void FieldSet::show(const Recipe& recipe, RestoreStep step) {
    for (const FieldRecord& field : fields_) {
        const RecipeKey* key = findKeyByField(field.id);
        if (key && key->step == step) setTextIfChanged(field.hwnd, keyText(*key, recipe));
    }
    if (step != RestoreStep::SkinValues) return;
    for (size_t i = 0; i < linkButtons_.size(); ++i)
        if (linkButtons_[i] < recipe.links.size())
            setTextIfChanged(window(kFieldLinkFirst + static_cast<int>(i)),
                             recipe.links[linkButtons_[i]].address);
}

} // namespace nv::ui::win
