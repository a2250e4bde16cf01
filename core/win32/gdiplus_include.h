#pragma once
// <gdiplus.h> with what it needs before it: the COM stream declarations (left out by WIN32_LEAN_AND_MEAN) and
// min/max (removed by NOMINMAX), which the GDI+ headers use unqualified inside their namespace.

#include <windows.h>

#include <objidl.h>

#include <algorithm>
namespace Gdiplus {
using std::max;
using std::min;
} // namespace Gdiplus
#include <gdiplus.h>
