#include "patcher/win32/news_browser.h"

#include "core/paths.h"
#include "core/text.h"
#include "core/files.h"
#include "skin/server_feed.h"

#include <exdisp.h>
#include <exdispid.h>
#include <ocidl.h>
#include <ole2.h>
#include <shellapi.h>

namespace nv {
namespace {

constexpr const wchar_t* kHostClass = L"NV_NewsHost";
// The document mode of the newest engine the system has ("IE11 edge"); without it the control renders as
// IE7 and most news pages break.
constexpr DWORD kEmulationMode = 11001;

void switchOnEmulation() {
    HKEY key = nullptr;
    if (RegCreateKeyExW(
            HKEY_CURRENT_USER,
            L"Software\\Microsoft\\Internet Explorer\\Main\\FeatureControl\\FEATURE_BROWSER_EMULATION", 0,
            nullptr, 0, KEY_SET_VALUE, nullptr, &key, nullptr) != ERROR_SUCCESS)
        return;
    const std::wstring name = pathFileName(exePath());
    RegSetValueExW(key, name.c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&kEmulationMode),
                   sizeof kEmulationMode);
    RegCloseKey(key);
}

bool allowedAddress(const wchar_t* url) {
    return url && (isWebAddress(wideToUtf8(url)) || lowerWide(url) == L"about:blank");
}

// The n-th argument of an event as DISPPARAMS holds them (in reverse order).
VARIANT* argument(DISPPARAMS* params, UINT fromLast) {
    return params && fromLast < params->cArgs ? &params->rgvarg[fromLast] : nullptr;
}

const wchar_t* textOf(VARIANT* v) {
    if (!v) return nullptr;
    if (v->vt == VT_BSTR) return v->bstrVal;
    if (v->vt == (VT_BYREF | VT_VARIANT) && v->pvarVal && v->pvarVal->vt == VT_BSTR)
        return v->pvarVal->bstrVal;
    return nullptr;
}

void setCancel(VARIANT* v) {
    if (v && v->vt == (VT_BYREF | VT_BOOL) && v->pboolVal) *v->pboolVal = VARIANT_TRUE;
}

} // namespace

// The container the control lives in: its client site, in-place site and frame, and the receiver of its
// events. It is owned by NewsBrowser, which releases the control before it goes, so its reference count is
// not what keeps it alive.
struct NewsBrowser::Host : public IOleClientSite,
                           public IOleInPlaceSite,
                           public IOleInPlaceFrame,
                           public IDispatch {
    HWND owner = nullptr;
    HWND window = nullptr;
    RECT area{};
    bool popup = false;
    bool failed = false;
    IOleObject* object = nullptr;
    IWebBrowser2* browser = nullptr;
    IConnectionPoint* events = nullptr;
    DWORD cookie = 0;
    bool oleStarted = false;

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        if (!out) return E_POINTER;
        *out = nullptr;
        if (iid == IID_IUnknown || iid == IID_IOleClientSite)
            *out = static_cast<IOleClientSite*>(this);
        else if (iid == IID_IOleWindow || iid == IID_IOleInPlaceSite)
            *out = static_cast<IOleInPlaceSite*>(this);
        else if (iid == IID_IOleInPlaceUIWindow || iid == IID_IOleInPlaceFrame)
            *out = static_cast<IOleInPlaceFrame*>(this);
        else if (iid == IID_IDispatch || iid == DIID_DWebBrowserEvents2)
            *out = static_cast<IDispatch*>(this);
        else
            return E_NOINTERFACE;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    // IOleClientSite
    HRESULT STDMETHODCALLTYPE SaveObject() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMoniker(DWORD, DWORD, IMoniker**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetContainer(IOleContainer** c) override {
        if (c) *c = nullptr;
        return E_NOINTERFACE;
    }
    HRESULT STDMETHODCALLTYPE ShowObject() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnShowWindow(BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE RequestNewObjectLayout() override { return E_NOTIMPL; }

    // IOleWindow (both sites')
    HRESULT STDMETHODCALLTYPE GetWindow(HWND* w) override {
        if (!w) return E_POINTER;
        *w = window;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }

    // IOleInPlaceSite
    HRESULT STDMETHODCALLTYPE CanInPlaceActivate() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnInPlaceActivate() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnUIActivate() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** doc, RECT* pos,
                                               RECT* clip, OLEINPLACEFRAMEINFO* info) override {
        if (frame) *frame = static_cast<IOleInPlaceFrame*>(this);
        if (doc) *doc = nullptr;
        RECT client{};
        GetClientRect(window, &client);
        if (pos) *pos = client;
        if (clip) *clip = client;
        if (info) {
            info->fMDIApp = FALSE;
            info->hwndFrame = window;
            info->haccel = nullptr;
            info->cAccelEntries = 0;
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Scroll(SIZE) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OnUIDeactivate(BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnInPlaceDeactivate() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE DiscardUndoState() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE DeactivateAndUndo() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnPosRectChange(LPCRECT) override { return S_OK; }

    // IOleInPlaceUIWindow, IOleInPlaceFrame: no menus, toolbars or status bar to share.
    HRESULT STDMETHODCALLTYPE GetBorder(LPRECT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE RequestBorderSpace(LPCBORDERWIDTHS) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetBorderSpace(LPCBORDERWIDTHS) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetActiveObject(IOleInPlaceActiveObject*, LPCOLESTR) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE InsertMenus(HMENU, LPOLEMENUGROUPWIDTHS) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetMenu(HMENU, HOLEMENU, HWND) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE RemoveMenus(HMENU) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetStatusText(LPCOLESTR) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE EnableModeless(BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE TranslateAccelerator(LPMSG, WORD) override { return S_FALSE; }

    // IDispatch: the control's events (DWebBrowserEvents2)
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* n) override {
        if (n) *n = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* params, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        switch (id) {
        case DISPID_BEFORENAVIGATE2: // pDisp, URL, Flags, TargetFrameName, PostData, Headers, Cancel
            if (!allowedAddress(textOf(argument(params, 5)))) setCancel(argument(params, 0));
            break;
        case DISPID_NEWWINDOW3: { // ppDisp, Cancel, dwFlags, bstrUrlContext, bstrUrl
            setCancel(argument(params, 3));
            const wchar_t* url = textOf(argument(params, 0));
            if (url && isWebAddress(wideToUtf8(url)))
                ShellExecuteW(owner, L"open", url, nullptr, nullptr, SW_SHOWNORMAL);
            break;
        }
        case DISPID_NAVIGATEERROR: // pDisp, URL, Frame, StatusCode, Cancel
            // The control's own error page is no news: the headlines stay.
            failed = true;
            setCancel(argument(params, 0));
            ShowWindow(window, SW_HIDE);
            break;
        case DISPID_DOCUMENTCOMPLETE:
            if (!failed) {
                place();
                ShowWindow(window, SW_SHOWNOACTIVATE);
            }
            break;
        default:
            break;
        }
        return S_OK;
    }

    // Where the host goes: the area itself for a child, its place on the screen for a popup.
    void place() {
        RECT r = area;
        if (popup) MapWindowPoints(owner, nullptr, reinterpret_cast<POINT*>(&r), 2);
        SetWindowPos(window, nullptr, r.left, r.top, r.right - r.left, r.bottom - r.top,
                     SWP_NOZORDER | SWP_NOACTIVATE);
    }

    static LRESULT CALLBACK proc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_SIZE) {
            auto* self = reinterpret_cast<Host*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
            IOleInPlaceObject* inPlace = nullptr;
            if (self && self->object &&
                SUCCEEDED(self->object->QueryInterface(IID_IOleInPlaceObject,
                                                       reinterpret_cast<void**>(&inPlace)))) {
                RECT client{0, 0, LOWORD(lParam), HIWORD(lParam)};
                inPlace->SetObjectRects(&client, &client);
                inPlace->Release();
            }
            return 0;
        }
        return DefWindowProcW(hwnd, message, wParam, lParam);
    }

    bool create(const std::wstring& url) {
        HINSTANCE instance = GetModuleHandleW(nullptr);
        WNDCLASSEXW wc{};
        wc.cbSize = sizeof wc;
        wc.lpfnWndProc = proc;
        wc.hInstance = instance;
        wc.hCursor = LoadCursorW(nullptr, IDC_ARROW);
        wc.lpszClassName = kHostClass;
        if (!RegisterClassExW(&wc) && GetLastError() != ERROR_CLASS_ALREADY_EXISTS) return false;
        const DWORD style = popup ? WS_POPUP : WS_CHILD | WS_CLIPSIBLINGS;
        const DWORD exStyle = popup ? WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE : 0;
        window = CreateWindowExW(exStyle, kHostClass, L"", style, 0, 0, area.right - area.left,
                                 area.bottom - area.top, owner, nullptr, instance, nullptr);
        if (!window) return false;
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        place();

        if (FAILED(OleInitialize(nullptr))) return false;
        oleStarted = true;
        if (FAILED(CoCreateInstance(CLSID_WebBrowser, nullptr, CLSCTX_INPROC_SERVER, IID_IOleObject,
                                    reinterpret_cast<void**>(&object))))
            return false;
        if (FAILED(object->SetClientSite(static_cast<IOleClientSite*>(this)))) return false;
        RECT client{};
        GetClientRect(window, &client);
        if (FAILED(object->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, static_cast<IOleClientSite*>(this), 0,
                                  window, &client)))
            return false;
        if (FAILED(object->QueryInterface(IID_IWebBrowser2, reinterpret_cast<void**>(&browser))))
            return false;
        browser->put_Silent(VARIANT_TRUE);
        IConnectionPointContainer* points = nullptr;
        if (SUCCEEDED(
                object->QueryInterface(IID_IConnectionPointContainer, reinterpret_cast<void**>(&points)))) {
            if (SUCCEEDED(points->FindConnectionPoint(DIID_DWebBrowserEvents2, &events)))
                events->Advise(static_cast<IDispatch*>(this), &cookie);
            points->Release();
        }
        // Without the events nothing would say when the page is there or that it failed: no browser then.
        if (!cookie) return false;
        BSTR address = SysAllocString(url.c_str());
        const HRESULT navigated = browser->Navigate(address, nullptr, nullptr, nullptr, nullptr);
        SysFreeString(address);
        return SUCCEEDED(navigated);
    }

    void destroy() {
        if (events) {
            if (cookie) events->Unadvise(cookie);
            events->Release();
            events = nullptr;
        }
        if (browser) {
            browser->Stop();
            browser->Release();
            browser = nullptr;
        }
        if (object) {
            object->Close(OLECLOSE_NOSAVE);
            object->SetClientSite(nullptr);
            object->Release();
            object = nullptr;
        }
        if (window) DestroyWindow(window);
        window = nullptr;
        if (oleStarted) OleUninitialize();
        oleStarted = false;
    }
};

NewsBrowser::NewsBrowser() = default;

NewsBrowser::~NewsBrowser() {
    close();
}

bool NewsBrowser::open(HWND owner, const RECT& area, bool popup, const std::wstring& url, bool emulation) {
    close();
    if (!isWebAddress(wideToUtf8(url)) || area.right <= area.left || area.bottom <= area.top) return false;
    if (emulation) switchOnEmulation();
    host_ = std::make_unique<Host>();
    host_->owner = owner;
    host_->area = area;
    host_->popup = popup;
    if (!host_->create(url)) {
        close();
        return false;
    }
    return true;
}

void NewsBrowser::close() {
    if (!host_) return;
    host_->destroy();
    host_.reset();
}

void NewsBrowser::follow() {
    if (host_ && host_->popup && host_->window) host_->place();
}

} // namespace nv
