#pragma once
// GDI+ for the lifetime of one object: a program (or a test program) creates one at start and keeps it until
// it ends. decodeImage and every other GDI+ user of this code base refuse to work while no session is alive.

#include <cstdint>

namespace nv {

class GdiplusSession {
public:
    GdiplusSession();
    ~GdiplusSession();
    GdiplusSession(const GdiplusSession&) = delete;
    GdiplusSession& operator=(const GdiplusSession&) = delete;

    // Whether GdiplusStartup succeeded for this object.
    bool started() const { return token_ != 0; }

    // Whether any session of the process is started. GDI+ itself does not reliably refuse calls made before
    // GdiplusStartup (some implementations decode anyway), so callers ask this first.
    static bool active();

private:
    uintptr_t token_ = 0;
};

} // namespace nv
