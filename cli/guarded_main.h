#pragma once
// The last line of defence of nvbuild's main: the layers report failures by their results, but an exception
// that still escapes (out of memory while building the arguments, say) ends the program with a message and
// exit code 1 instead of an abort.

#include "cli/console.h"
#include "cli/nvbuild.h"
#include "core/memory_guard.h"
#include "core/text.h"

#include <exception>
#include <new>

namespace nv {

template <typename Body> int runGuarded(Body&& body) noexcept {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        processConsole().errLine(kOutOfMemory);
    } catch (const std::exception& e) {
        processConsole().errLine(L"Beklenmeyen hata: " + utf8ToWide(e.what()));
    } catch (...) {
        processConsole().errLine(L"Beklenmeyen hata.");
    }
    return kExitFailed;
}

} // namespace nv
