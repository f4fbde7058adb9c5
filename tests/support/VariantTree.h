#pragma once

#include "tests/support/Texts.h"

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>

#include <cstdint>
#include <string>
#include <vector>

namespace fake {

/// One VARIANT as the desktop received it, copied out so that it can be kept, compared and printed.
struct Value {
    VARTYPE type = VT_EMPTY;
    /// VT_BSTR: every character, zeros included.
    std::wstring text;
    /// VT_BSTR with a null pointer in place of a text.
    bool isNullText = false;
    /// Integers, and the raw value of a VT_BOOL.
    std::int64_t integer = 0;
    double real = 0.0;
    /// Arrays.
    std::vector<Value> items;
    LONG lowerBound = 0;
    unsigned dimensions = 1;
};

/// Arguments of a call, first argument first.
using Arguments = std::vector<Value>;

/// Takes a VARIANT apart, arrays included.
Value Read(const VARIANT& variant);

/// One line, for example ["NAME:Shape", "Closed:=", true, "Turns:=", 12.0]. The notation tells all types apart:
/// "text" (VT_BSTR, escaped as in C++), true and false (VT_BOOL -1 and 0), bool(1), 0.5 (VT_R8), int(0) (VT_INT),
/// i4(0) (VT_I4), empty, null, object, [..] (an array of VARIANTs from index 0).
std::string Print(const Value& value);

/// As `Print`, over several lines where one would be too long; keys that end in ":=" stay with their values.
std::string Layout(const Value& value, unsigned indent);

} // namespace fake
