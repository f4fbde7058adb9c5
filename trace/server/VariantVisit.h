#pragma once

#include "programs/ArrayAccess.h"

#include <windows.h>

#include <oleauto.h>

namespace kinora::trace {

/// Arrays in arrays are followed so deep; what lies deeper is passed on as it is.
constexpr int deepestArray = 64;

/// A pointer to an automation object (or null) in a VARIANT.
struct ObjectSlot {
    /// Where the pointer stands; it is one to IUnknown or IDispatch, see `type`.
    IUnknown** object;
    /// VT_DISPATCH or VT_UNKNOWN.
    VARTYPE type;
    /// The pointer stands in memory that a VARIANT refers to, which a callee may change.
    bool isByReference;
    /// Index in the innermost array; -1 for none.
    long index;
};

template <class Visitor>
void VisitObjects(VARIANT& variant, Visitor&& visit, bool isByReference = false, int depth = 0, long index = -1);

template <class Visitor>
void VisitArray(SAFEARRAY* array, VARTYPE elementType, Visitor&& visit, bool isByReference, int depth) {
    if (depth > deepestArray ||
        (elementType != VT_VARIANT && elementType != VT_DISPATCH && elementType != VT_UNKNOWN)) {
        return;
    }
    const programs::ArrayAccess access(array);
    for (ULONG i = 0; i < access.Count(); ++i) {
        if (elementType == VT_VARIANT) {
            VisitObjects(access.Elements<VARIANT>()[i], visit, isByReference, depth + 1, static_cast<long>(i));
        } else {
            visit(ObjectSlot{access.Elements<IUnknown*>() + i, elementType, isByReference, static_cast<long>(i)});
        }
    }
}

/// Calls a function for every object slot in a VARIANT, nested arrays and references included.
template <class Visitor>
void VisitObjects(VARIANT& variant, Visitor&& visit, bool isByReference, int depth, long index) {
    const VARTYPE type = V_VT(&variant);
    const auto base = static_cast<VARTYPE>(type & ~(VT_BYREF | VT_ARRAY));
    const bool isReference = (type & VT_BYREF) != 0;
    if (isReference && !V_BYREF(&variant)) {
        return;
    }
    if ((type & VT_ARRAY) != 0) {
        VisitArray(isReference ? *V_ARRAYREF(&variant) : V_ARRAY(&variant), base, visit, isByReference || isReference,
                   depth);
    } else if (base == VT_DISPATCH || base == VT_UNKNOWN) {
        visit(ObjectSlot{isReference ? V_UNKNOWNREF(&variant) : &V_UNKNOWN(&variant), base,
                         isByReference || isReference, index});
    } else if (type == (VT_BYREF | VT_VARIANT) && depth <= deepestArray) {
        VisitObjects(*V_VARIANTREF(&variant), visit, true, depth + 1, index);
    }
}

} // namespace kinora::trace
