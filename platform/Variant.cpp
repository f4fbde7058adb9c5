#include "platform/Elements.h"

#include <oleauto.h>

#include <cmath>
#include <optional>

namespace {

using platform::IsElementType;

bool IsValid(VARTYPE type) {
    if (type & VT_ARRAY) {
        return IsElementType(type & ~(VT_ARRAY | VT_BYREF));
    }
    if (type & VT_BYREF) {
        return IsElementType(type & ~VT_BYREF);
    }
    return type == VT_EMPTY || type == VT_NULL || (type != VT_VARIANT && IsElementType(type));
}

/// What a value owns when it is no reference: its copy.
HRESULT CopyOwned(VARIANT& target, const VARIANT& source) {
    if (source.vt & VT_ARRAY) {
        return source.parray ? SafeArrayCopy(source.parray, &target.parray) : S_OK;
    }
    return platform::CopyElement(source.vt, &target.llVal, &source.llVal);
}

/// The number in a value; nothing when it is none.
std::optional<double> NumberOf(const VARIANT& value) {
    switch (value.vt) {
    case VT_EMPTY:
        return 0.0;
    case VT_I2:
    case VT_BOOL:
        return value.iVal;
    case VT_I4:
    case VT_INT:
        return value.lVal;
    case VT_UI1:
        return value.bVal;
    case VT_UI2:
        return value.uiVal;
    case VT_UI4:
    case VT_UINT:
        return value.ulVal;
    case VT_R4:
        return value.fltVal;
    case VT_R8:
        return value.dblVal;
    default:
        return std::nullopt;
    }
}

} // namespace

void VariantInit(VARIANT* value) {
    *value = VARIANT{};
}

HRESULT VariantClear(VARIANT* value) {
    if (!value) {
        return E_INVALIDARG;
    }
    if (!IsValid(value->vt)) {
        return DISP_E_BADVARTYPE;
    }
    if (value->vt & VT_BYREF) {
        // Somebody else's.
    } else if (value->vt & VT_ARRAY) {
        const HRESULT outcome = value->parray ? SafeArrayDestroy(value->parray) : S_OK;
        if (FAILED(outcome)) {
            return outcome;
        }
    } else {
        platform::ClearElement(value->vt, &value->llVal);
    }
    value->vt = VT_EMPTY;
    return S_OK;
}

HRESULT VariantCopy(VARIANT* target, const VARIANT* source) {
    if (!target || !source) {
        return E_INVALIDARG;
    }
    if (target == source) {
        return S_OK;
    }
    if (!IsValid(source->vt)) {
        return DISP_E_BADVARTYPE;
    }
    HRESULT outcome = VariantClear(target);
    if (FAILED(outcome)) {
        return outcome;
    }
    VARIANT copy = *source;
    if (!(source->vt & VT_BYREF)) {
        outcome = CopyOwned(copy, *source);
    }
    if (SUCCEEDED(outcome)) {
        *target = copy;
    }
    return outcome;
}

HRESULT VariantChangeType(VARIANT* target, const VARIANT* source, USHORT, VARTYPE type) {
    if (!target || !source) {
        return E_INVALIDARG;
    }
    const std::optional<double> number = NumberOf(*source);
    if (!number || type != VT_I4) {
        return DISP_E_TYPEMISMATCH;
    }
    const double rounded = std::nearbyint(*number);
    if (!(rounded >= INT32_MIN && rounded <= INT32_MAX)) {
        return DISP_E_OVERFLOW;
    }
    const HRESULT outcome = VariantClear(target);
    if (SUCCEEDED(outcome)) {
        target->vt = VT_I4;
        target->lVal = static_cast<LONG>(rounded);
    }
    return outcome;
}
