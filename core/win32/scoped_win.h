#pragma once
// Owners for Win32 handles: each closes what it holds on every path out of a scope.

#include <windows.h>

#include <cstdint>

namespace nv::win {

// The calling thread's last error, or the fallback when the call that failed left none (some do, under Wine
// among others): a failure is never reported as error 0, "success".
inline DWORD lastErrorOr(DWORD fallback) {
    const DWORD error = GetLastError();
    return error != 0 ? error : fallback;
}

// A kernel handle from CreateFileW and friends (INVALID_HANDLE_VALUE and null both mean "none").
class ScopedHandle {
public:
    explicit ScopedHandle(HANDLE h = nullptr) : h_(h) {}
    ~ScopedHandle() { reset(); }
    ScopedHandle(const ScopedHandle&) = delete;
    ScopedHandle& operator=(const ScopedHandle&) = delete;

    HANDLE get() const { return h_; }
    bool valid() const { return h_ != nullptr && h_ != INVALID_HANDLE_VALUE; }
    // Closes the handle now and reports whether closing succeeded.
    bool close() {
        bool ok = !valid() || CloseHandle(h_) != 0;
        h_ = nullptr;
        return ok;
    }
    void reset(HANDLE h = nullptr) {
        close();
        h_ = h;
    }

private:
    HANDLE h_;
};

// A FindFirstFileW search.
class ScopedFind {
public:
    explicit ScopedFind(HANDLE h) : h_(h) {}
    ~ScopedFind() {
        if (h_ != INVALID_HANDLE_VALUE) FindClose(h_);
    }
    ScopedFind(const ScopedFind&) = delete;
    ScopedFind& operator=(const ScopedFind&) = delete;
    HANDLE get() const { return h_; }
    bool valid() const { return h_ != INVALID_HANDLE_VALUE; }

private:
    HANDLE h_;
};

// A module loaded with LoadLibraryExW (as a data file or otherwise).
class ScopedModule {
public:
    explicit ScopedModule(HMODULE m = nullptr) : m_(m) {}
    ~ScopedModule() {
        if (m_) FreeLibrary(m_);
    }
    ScopedModule(const ScopedModule&) = delete;
    ScopedModule& operator=(const ScopedModule&) = delete;
    HMODULE get() const { return m_; }
    void reset(HMODULE m = nullptr) {
        if (m_) FreeLibrary(m_);
        m_ = m;
    }

private:
    HMODULE m_;
};

// A view of a file mapping (MapViewOfFile).
class ScopedView {
public:
    explicit ScopedView(void* view) : view_(view) {}
    ~ScopedView() {
        if (view_) UnmapViewOfFile(view_);
    }
    ScopedView(const ScopedView&) = delete;
    ScopedView& operator=(const ScopedView&) = delete;
    uint8_t* get() const { return static_cast<uint8_t*>(view_); }

private:
    void* view_;
};

} // namespace nv::win
