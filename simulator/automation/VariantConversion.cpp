#include "simulator/automation/VariantConversion.h"

#include "programs/ArrayAccess.h"
#include "programs/Utf.h"
#include "simulator/model/DesktopError.h"

#include <windows.h>

#include <oleauto.h>

#include <new>

namespace vantor::automation {
namespace {

using commands::Value;
using kinora::programs::ArrayAccess;
using kinora::programs::Utf8FromWide;
using kinora::programs::WideFromUtf8;
using model::DesktopError;
using model::ErrorCode;

constexpr int deepestArray = 32;

Value Read(const VARIANT& variant, int depth);

Value ReadText(BSTR text) {
    return Value(Utf8FromWide({text, SysStringLen(text)}));
}

Value ReadArray(SAFEARRAY* array, int depth) {
    if (!array) {
        return {};
    }
    if (SafeArrayGetDim(array) != 1) {
        throw DesktopError(ErrorCode::WrongArrayRank,
                           "an array has " + std::to_string(SafeArrayGetDim(array)) + " dimensions");
    }
    if (depth > deepestArray) {
        throw DesktopError(ErrorCode::InvalidArrayAccess,
                           "arrays are nested deeper than " + std::to_string(deepestArray) + " levels");
    }
    const ArrayAccess access(array);
    if (!access.IsOpen()) {
        throw DesktopError(ErrorCode::InvalidArrayAccess, "an array cannot be read");
    }
    Value::List list;
    list.reserve(access.Count());
    for (ULONG i = 0; i < access.Count(); ++i) {
        list.push_back(Read(access.Elements<VARIANT>()[i], depth + 1));
    }
    return list;
}

Value Integer(long value, Value::Integer::Type type) {
    return Value(Value::Integer{static_cast<std::int32_t>(value), type});
}

/// @pre the VARIANT holds a reference.
Value ReadReference(const VARIANT& variant, int depth) {
    switch (variant.vt & ~VT_BYREF) {
    case VT_VARIANT:
        return variant.pvarVal != nullptr && depth <= deepestArray ? Read(*variant.pvarVal, depth + 1) : Value();
    case VT_ARRAY | VT_VARIANT:
        return variant.pparray != nullptr ? ReadArray(*variant.pparray, depth) : Value();
    case VT_BSTR:
        return variant.pbstrVal != nullptr ? ReadText(*variant.pbstrVal) : Value();
    case VT_BOOL:
        return Value(*variant.pboolVal != VARIANT_FALSE);
    case VT_R8:
        return Value(*variant.pdblVal);
    case VT_I2:
        return Integer(*variant.piVal, Value::Integer::Type::Short);
    case VT_I4:
        return Integer(*variant.plVal, Value::Integer::Type::Long);
    case VT_INT:
        return Integer(*variant.pintVal, Value::Integer::Type::Int);
    default:
        return Value(Value::Foreign{variant.vt});
    }
}

Value Read(const VARIANT& variant, int depth) {
    if ((variant.vt & VT_BYREF) != 0) {
        return ReadReference(variant, depth);
    }
    switch (variant.vt) {
    case VT_EMPTY:
        return {};
    case VT_BSTR:
        return ReadText(variant.bstrVal);
    case VT_BOOL:
        return Value(variant.boolVal != VARIANT_FALSE);
    case VT_R8:
        return Value(variant.dblVal);
    case VT_I2:
        return Integer(variant.iVal, Value::Integer::Type::Short);
    case VT_I4:
        return Integer(variant.lVal, Value::Integer::Type::Long);
    case VT_INT:
        return Integer(variant.intVal, Value::Integer::Type::Int);
    case VT_ARRAY | VT_VARIANT:
        return ReadArray(variant.parray, depth);
    default:
        return Value(Value::Foreign{variant.vt});
    }
}

BSTR NewText(const std::string& text) {
    const std::wstring wide = WideFromUtf8(text);
    const BSTR result = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
    if (!result) {
        throw std::bad_alloc();
    }
    return result;
}

void WriteList(const Value::List& list, const MakeDispatch& makeDispatch, VARIANT& variant) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(list.size()));
    if (!array) {
        throw std::bad_alloc();
    }
    variant.vt = VT_ARRAY | VT_VARIANT;
    variant.parray = array;
    try {
        const ArrayAccess access(array);
        if (!access.IsOpen()) {
            throw std::bad_alloc();
        }
        for (std::size_t i = 0; i < list.size(); ++i) {
            VariantFromValue(list[i], makeDispatch, access.Elements<VARIANT>()[i]);
        }
    } catch (...) {
        VariantClear(&variant);
        throw std::bad_alloc();
    }
}

void WriteInteger(const Value::Integer& integer, VARIANT& variant) {
    switch (integer.type) {
    case Value::Integer::Type::Short:
        variant.vt = VT_I2;
        variant.iVal = static_cast<SHORT>(integer.value);
        return;
    case Value::Integer::Type::Long:
        variant.vt = VT_I4;
        variant.lVal = integer.value;
        return;
    case Value::Integer::Type::Int:
        variant.vt = VT_INT;
        variant.intVal = integer.value;
        return;
    }
}

} // namespace

commands::Value ValueFromVariant(const VARIANT& variant) {
    return Read(variant, 0);
}

void VariantFromValue(const commands::Value& value, const MakeDispatch& makeDispatch, VARIANT& variant) {
    VariantInit(&variant);
    if (const bool* flag = value.AsFlag()) {
        variant.vt = VT_BOOL;
        variant.boolVal = *flag ? VARIANT_TRUE : VARIANT_FALSE;
    } else if (const double* number = value.AsNumber()) {
        variant.vt = VT_R8;
        variant.dblVal = *number;
    } else if (const Value::Integer* integer = value.AsInteger()) {
        WriteInteger(*integer, variant);
    } else if (const Value::Text* text = value.AsText()) {
        variant.bstrVal = NewText(*text);
        variant.vt = VT_BSTR;
    } else if (const Value::List* list = value.AsList()) {
        WriteList(*list, makeDispatch, variant);
    } else if (const Value::Object* object = value.AsObject()) {
        variant.pdispVal = *object ? makeDispatch(*object) : nullptr;
        variant.vt = VT_DISPATCH;
    }
}

} // namespace vantor::automation
