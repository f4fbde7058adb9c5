#pragma once

#include <windows.h>

#include <oleauto.h>

namespace fake {

inline VARIANT Number(double number) {
    VARIANT variant{};
    variant.vt = VT_R8;
    variant.dblVal = number;
    return variant;
}

} // namespace fake
