#pragma once
// Allocations sized by untrusted input (a whole file, a decoded picture, a skin set) can fail on a machine
// that has less memory than the caps allow. The entry points of the layers turn std::bad_alloc into an
// ordinary failure with kOutOfMemory, so that it never crosses a boundary or a thread.

#include <new>
#include <string>

namespace nv {

inline constexpr const wchar_t* kOutOfMemory = L"Bellek yetersiz.";

// fn's result, or false with kOutOfMemory in *error (when given) after an allocation inside fn failed.
template <typename Fn> bool failOnBadAlloc(std::wstring* error, Fn&& fn) {
    try {
        return fn();
    } catch (const std::bad_alloc&) {
        if (error) *error = kOutOfMemory;
        return false;
    }
}

} // namespace nv
