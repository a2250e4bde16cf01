// The commands that ask the operator for a file or a folder: the skin source, the icon and the certificate.
// Every dialog is owned by the main window, so it is modal to it; cancelling one changes nothing.

#include "ui/win32/app.h"

#include "packager/icon.h"
#include "core/files.h"
#include "core/paths.h"

#include <commdlg.h>
#include <shobjidl.h>

namespace nv::ui::win {
namespace {

// A COM interface pointer released on every way out.
template <typename T> class ComPtr {
public:
    ComPtr() = default;
    ~ComPtr() {
        if (p_) p_->Release();
    }
    ComPtr(const ComPtr&) = delete;
    ComPtr& operator=(const ComPtr&) = delete;
    T* get() const { return p_; }
    T* operator->() const { return p_; }
    T** out() { return &p_; }

private:
    T* p_ = nullptr;
};

// The classic open dialog. The filter holds label/pattern pairs separated by zeros, as the API wants it.
bool chooseOpenFile(HWND owner, const wchar_t* title, const std::wstring& filter, std::wstring& path) {
    std::wstring buffer(MAX_PATH * 4, L'\0');
    OPENFILENAMEW ofn{};
    ofn.lStructSize = sizeof(ofn);
    ofn.hwndOwner = owner;
    ofn.lpstrFilter = filter.c_str();
    ofn.lpstrFile = buffer.data();
    ofn.nMaxFile = static_cast<DWORD>(buffer.size());
    ofn.lpstrTitle = title;
    ofn.Flags = OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST | OFN_NOCHANGEDIR | OFN_EXPLORER;
    if (!GetOpenFileNameW(&ofn)) return false;
    path = buffer.c_str();
    return !path.empty();
}

// The shell's file dialog in folder-picking mode, opened in startFolder when there is one.
bool chooseFolder(HWND owner, const wchar_t* title, const std::wstring& startFolder, std::wstring& path) {
    ComPtr<IFileDialog> dialog;
    if (FAILED(CoCreateInstance(CLSID_FileOpenDialog, nullptr, CLSCTX_INPROC_SERVER,
                                IID_PPV_ARGS(dialog.out()))))
        return false;
    DWORD options = 0;
    dialog->GetOptions(&options);
    dialog->SetOptions(options | FOS_PICKFOLDERS | FOS_FORCEFILESYSTEM | FOS_PATHMUSTEXIST | FOS_NOCHANGEDIR);
    dialog->SetTitle(title);
    if (!startFolder.empty()) {
        ComPtr<IShellItem> start;
        if (SUCCEEDED(SHCreateItemFromParsingName(startFolder.c_str(), nullptr, IID_PPV_ARGS(start.out()))))
            dialog->SetFolder(start.get());
    }
    if (dialog->Show(owner) != S_OK) return false; // cancelled, or the dialog failed
    ComPtr<IShellItem> item;
    if (FAILED(dialog->GetResult(item.out()))) return false;
    PWSTR name = nullptr;
    if (FAILED(item->GetDisplayName(SIGDN_FILESYSPATH, &name)) || !name) return false;
    path = name;
    CoTaskMemFree(name);
    return !path.empty();
}

std::wstring filter(std::initializer_list<const wchar_t*> parts) {
    std::wstring text;
    for (const wchar_t* part : parts) {
        text += part;
        text += L'\0';
    }
    return text; // c_str() adds the second zero that ends the list
}

} // namespace

void BuilderApp::chooseSkin(bool folder) {
    std::wstring path;
    if (folder) {
        // Opens beside the skin loaded now, where its siblings are.
        const std::wstring start = skinLoaded_ ? pathParent(skinSource_) : std::wstring();
        if (!chooseFolder(hwnd_, L"Skin klasörünü seçin", folderExists(start) ? start : L"", path)) return;
    } else if (!chooseOpenFile(hwnd_, L"Skin .zip dosyası seçin",
                               filter({L"Skin paketi (*.zip)", L"*.zip", L"Tüm dosyalar (*.*)", L"*.*"}),
                               path)) {
        return;
    }
    loadSkin(path, false);
}

void BuilderApp::chooseIcon() {
    std::wstring path;
    // The pattern also admits .jpeg, which the label leaves unnamed.
    if (chooseOpenFile(hwnd_, L"Simge seçin",
                       filter({L"Simge ve görsel (*.ico;*.png;*.jpg;*.bmp)",
                               L"*.ico;*.png;*.jpg;*.jpeg;*.bmp", L"Tüm dosyalar (*.*)", L"*.*"}),
                       path))
        setIcon(path, false);
}

void BuilderApp::setIcon(const std::wstring& path, bool quiet) {
    Bytes ico;
    DecodedImage preview;
    bool previewDecoded = false;
    std::wstring message;
    if (!readIconFile(path, ico, preview, previewDecoded, message)) {
        if (!quiet) setStatus(message, true);
        return;
    }
    iconBytes_ = std::move(ico);
    decisions_.icon = path;
    iconPreview_ = previewDecoded ? std::move(preview) : DecodedImage();
    if (!quiet) {
        setStatus(L"Simge ayarlandı: " + pathFileName(path), false);
        session_.save();
    }
    InvalidateRect(hwnd_, nullptr, FALSE);
}

void BuilderApp::removeIcon() {
    iconBytes_.clear();
    decisions_.icon.clear();
    iconPreview_ = DecodedImage();
    setStatus(L"Simge kaldırıldı — şablonun simgesi kullanılacak.", false);
    session_.save();
}

void BuilderApp::chooseCertificate() {
    std::wstring path;
    if (chooseOpenFile(hwnd_, L"Kod imzalama sertifikası",
                       filter({L"Sertifika (*.pfx;*.p12)", L"*.pfx;*.p12", L"Tüm dosyalar (*.*)", L"*.*"}),
                       path))
        useCertificate(path);
}

void BuilderApp::choosePluginFile(int item) {
    const bool plugin = item == kItemChoosePlugin;
    std::wstring path;
    if (!chooseOpenFile(hwnd_,
                        plugin ? L"İmza eklentisi (signtool /dlib)" : L"Eklentinin ayar dosyası (/dmdf)",
                        plugin ? filter({L"Eklenti (*.dll)", L"*.dll", L"Tüm dosyalar (*.*)", L"*.*"})
                               : filter({L"Ayar dosyası (*.json)", L"*.json", L"Tüm dosyalar (*.*)", L"*.*"}),
                        path))
        return;
    fields_.setText(plugin ? kFieldPlugin : kFieldPluginMetadata, path);
    // As with a certificate file: choosing the plug-in means signing with it is wanted.
    if (!decisions_.signing.enabled) runCommand(kItemToggleSigning, 0);
    session_.save();
    InvalidateRect(hwnd_, nullptr, FALSE);
}

void BuilderApp::useCertificate(const std::wstring& path) {
    fields_.setText(kFieldPfx, path);
    // Choosing a certificate means signing is wanted.
    if (!decisions_.signing.enabled) runCommand(kItemToggleSigning, 0);
    session_.save();
    InvalidateRect(hwnd_, nullptr, FALSE);
}

} // namespace nv::ui::win
