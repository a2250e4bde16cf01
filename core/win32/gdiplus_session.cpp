#include "core/win32/gdiplus_session.h"

#include "core/win32/gdiplus_include.h"

#include <atomic>

namespace nv {
namespace {

std::atomic<int> startedSessions{0};

} // namespace

GdiplusSession::GdiplusSession() {
    Gdiplus::GdiplusStartupInput input;
    ULONG_PTR token = 0;
    if (Gdiplus::GdiplusStartup(&token, &input, nullptr) == Gdiplus::Ok && token != 0) {
        token_ = token;
        startedSessions.fetch_add(1);
    }
}

GdiplusSession::~GdiplusSession() {
    if (token_ == 0) return;
    startedSessions.fetch_sub(1);
    Gdiplus::GdiplusShutdown(token_);
}

bool GdiplusSession::active() {
    return startedSessions.load() > 0;
}

} // namespace nv
