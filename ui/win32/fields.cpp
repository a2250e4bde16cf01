// The edit fields: creation, Ctrl+A, placement on the current section, and the copy of their texts into the
// working skin and the build's inputs.

#include "ui/win32/app.h"

#include "core/files.h"
#include "core/paths.h"
#include "core/text.h"
#include "core/values.h"
#include "ui/readiness.h"

#include <commctrl.h>

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

HWND BuilderApp::createEdit(int id, const std::wstring& text, uint32_t style, bool mono,
                            const std::wstring& placeholder) {
    DWORD windowStyle = WS_CHILD | WS_TABSTOP | ES_AUTOHSCROLL;
    if (style == kStyleNumberCentered) windowStyle |= ES_NUMBER | ES_CENTER;
    if (style == kStylePassword) windowStyle |= ES_PASSWORD;
    HWND edit = CreateWindowExW(0, L"EDIT", text.c_str(), windowStyle, 0, 0, 0, 0, hwnd_,
                                reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), GetModuleHandleW(nullptr),
                                nullptr);
    if (!edit) return nullptr;
    SendMessageW(edit, EM_SETLIMITTEXT, kFieldTextLimit, 0);
    SendMessageW(edit, WM_SETFONT, reinterpret_cast<WPARAM>(fonts_.get(mono ? kFontMono : kFontBody)), FALSE);
    SendMessageW(edit, EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN, 0);
    if (!placeholder.empty())
        SendMessageW(edit, EM_SETCUEBANNER, TRUE, reinterpret_cast<LPARAM>(placeholder.c_str()));
    SetWindowSubclass(edit, editSubclass, 1, 0);
    return edit;
}

void BuilderApp::createFields() {
    fields_.reserve(512);
    for (const FieldSpec& spec : fixedFields()) {
        FieldRecord record;
        record.id = spec.id;
        record.section = spec.section;
        record.label = spec.label;
        record.hint = spec.hint;
        record.mono = spec.mono;
        record.hwnd = createEdit(spec.id, spec.defaultText, spec.style, spec.mono, spec.placeholder);
        if (record.hwnd) fields_.push_back(std::move(record));
    }
    enableSigningFields();
}

FieldRecord* BuilderApp::findFieldRecord(int id) {
    for (FieldRecord& field : fields_)
        if (field.id == id) return &field;
    return nullptr;
}

const FieldRecord* BuilderApp::findFieldRecord(int id) const {
    for (const FieldRecord& field : fields_)
        if (field.id == id) return &field;
    return nullptr;
}

void BuilderApp::setFieldText(int id, const std::wstring& text) {
    if (FieldRecord* field = findFieldRecord(id)) SetWindowTextW(field->hwnd, text.c_str());
}

HWND BuilderApp::fieldWindow(int id) const {
    const FieldRecord* field = findFieldRecord(id);
    return field ? field->hwnd : nullptr;
}

std::wstring BuilderApp::fieldText(int id) const {
    const FieldRecord* field = findFieldRecord(id);
    return field ? windowText(field->hwnd) : std::wstring();
}

void BuilderApp::enableSigningFields() {
    for (const FieldRecord& field : fields_)
        if (isSigningField(field.id)) EnableWindow(field.hwnd, signing_ && !building());
}

// One field per button that opens a link, in the skin's order; ids from 1200 up.
void BuilderApp::rebuildLinkFields() {
    for (auto it = fields_.begin(); it != fields_.end();) {
        if (isLinkField(it->id)) {
            DestroyWindow(it->hwnd);
            it = fields_.erase(it);
        } else {
            ++it;
        }
    }
    linkButtons_.clear();
    linkPage_ = 0;
    const auto& buttons = workspace_.buttonLinks;
    for (size_t i = 0; i < buttons.size(); ++i) {
        const ButtonLink& button = buttons[i];
        if (button.importedLink.empty() && button.localeKey.empty()) continue;
        const int id = kFieldLinkFirst + static_cast<int>(linkButtons_.size());
        if (id > kFieldLinkLast) break;
        FieldRecord record;
        record.id = id;
        record.section = kBaglantilar;
        record.label = utf8ToWide(button.id);
        record.mono = true;
        record.hwnd = createEdit(id, button.link, kStylePlain, true, L"");
        if (!record.hwnd) continue;
        linkButtons_.push_back(i);
        fields_.push_back(std::move(record));
    }
}

void BuilderApp::relayout() {
    if (!hwnd_) return;
    layout_ = computeLayout();
    // Only the links section knows how many pages there are; elsewhere the page stays as it was.
    if (section_ == kBaglantilar && linkPage_ >= layout_.linkPages) {
        linkPage_ = layout_.linkPages - 1;
        layout_ = computeLayout();
    }
    std::vector<std::pair<int, Rect>> rows = fieldRows(layout_);
    HDWP batch = BeginDeferWindowPos(static_cast<int>(fields_.size()) + 1);
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
        const Rect r = editRect(field.row, fonts_.textHeight(field.mono ? kFontMono : kFontBody), dpi_);
        if (batch)
            batch = DeferWindowPos(batch, field.hwnd, nullptr, r.left, r.top, r.width(), r.height(),
                                   SWP_SHOWWINDOW | SWP_NOZORDER | SWP_NOACTIVATE);
    }
    if (HWND log = log_.hwnd()) {
        const Rect r = layout_.logView;
        if (batch)
            batch =
                DeferWindowPos(batch, log, nullptr, r.left, r.top, r.width(), r.height(),
                               (r.empty() ? SWP_HIDEWINDOW : SWP_SHOWWINDOW) | SWP_NOZORDER | SWP_NOACTIVATE);
    }
    if (batch) EndDeferWindowPos(batch);
}

void BuilderApp::onEditCommand(int id, int code) {
    switch (code) {
    case EN_SETFOCUS:
        InvalidateRect(hwnd_, nullptr, FALSE);
        break;
    case EN_KILLFOCUS:
        InvalidateRect(hwnd_, nullptr, FALSE);
        if (refreshesPreview(id)) refreshPreview();
        saveSession();
        break;
    case EN_CHANGE:
        if (id == kFieldOutPath) InvalidateRect(hwnd_, nullptr, FALSE);
        break;
    default:
        break;
    }
}

void BuilderApp::copyFieldsToSettings() {
    workspace_.serverAddress = fieldText(kFieldConfigUrl);
    workspace_.newsAddress = fieldText(kFieldNewsUrl);
    workspace_.feedUrl = fieldText(kFieldFeedUrl);
    PatcherSettings& settings = workspace_.settings;
    settings.title = fieldText(kFieldTitle);
    settings.segmentMb = stepSegment(fieldText(kFieldSegment), 0);
    settings.runArgs = fieldText(kFieldRunArgs);
    if (connections_ >= kMinConnections && connections_ <= kMaxConnections)
        settings.connections = connections_;
    settings.closeOnStart = toggles_[0];
    settings.autoStart = toggles_[1];
    settings.allowStartOnError = toggles_[2];
    settings.browserEmulation = toggles_[3];
    for (size_t i = 0; i < linkButtons_.size(); ++i) {
        const ButtonLink& button = workspace_.buttonLinks[linkButtons_[i]];
        workspace_.setButtonLink(button.id, fieldText(kFieldLinkFirst + static_cast<int>(i)));
    }
}

BuildInputs BuilderApp::buildInputs() const {
    BuildInputs inputs;
    inputs.templatePath = templatePath_;
    inputs.outputPath = fieldText(kFieldOutPath);
    inputs.iconBytes = iconBytes_;
    inputs.version.productName = fieldText(kFieldProduct);
    inputs.version.companyName = fieldText(kFieldCompany);
    inputs.version.versionText = fieldText(kFieldVersion);
    inputs.version.legalCopyright = fieldText(kFieldCopyright);
    inputs.version.originalFilename = fieldText(kFieldOutName);
    inputs.signing.enabled = signing_;
    inputs.signing.pfxPath = fieldText(kFieldPfx);
    inputs.signing.pfxPassword = fieldText(kFieldPassword);
    inputs.signing.timestampUrl = fieldText(kFieldTimestamp);
    inputs.signing.signtoolPath = signtoolPath_;
    return inputs;
}

} // namespace nv::ui::win
