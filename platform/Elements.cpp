#include "platform/Elements.h"

#include <oleauto.h>

#include <cstring>

namespace platform {
namespace {

template <class Content>
Content Read(const void* element) {
    Content content;
    std::memcpy(&content, element, sizeof(content));
    return content;
}

template <class Content>
void Write(void* element, Content content) {
    std::memcpy(element, &content, sizeof(content));
}

HRESULT CopyText(void* target, BSTR source) {
    const BSTR copy = source ? SysAllocStringLen(source, SysStringLen(source)) : nullptr;
    Write(target, copy);
    return source && !copy ? E_OUTOFMEMORY : S_OK;
}

} // namespace

bool IsElementType(int type) {
    switch (type) {
    case VT_I2:
    case VT_I4:
    case VT_R4:
    case VT_R8:
    case VT_DATE:
    case VT_BSTR:
    case VT_DISPATCH:
    case VT_ERROR:
    case VT_BOOL:
    case VT_VARIANT:
    case VT_UNKNOWN:
    case VT_I1:
    case VT_UI1:
    case VT_UI2:
    case VT_UI4:
    case VT_I8:
    case VT_UI8:
    case VT_INT:
    case VT_UINT:
        return true;
    default:
        return false;
    }
}

std::size_t ElementSize(VARTYPE type) {
    switch (type) {
    case VT_I1:
    case VT_UI1:
        return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
        return 2;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_R4:
    case VT_ERROR:
        return 4;
    case VT_VARIANT:
        return sizeof(VARIANT);
    default:
        return IsElementType(type) ? 8 : 0;
    }
}

void ClearElement(VARTYPE type, void* element) {
    switch (type) {
    case VT_BSTR:
        SysFreeString(Read<BSTR>(element));
        break;
    case VT_UNKNOWN:
    case VT_DISPATCH:
        if (auto* const object = Read<IUnknown*>(element)) {
            object->Release();
        }
        break;
    case VT_VARIANT:
        VariantClear(static_cast<VARIANT*>(element));
        break;
    default:
        break;
    }
    std::memset(element, 0, ElementSize(type));
}

HRESULT CopyElement(VARTYPE type, void* target, const void* source) {
    switch (type) {
    case VT_BSTR:
        return CopyText(target, Read<BSTR>(source));
    case VT_UNKNOWN:
    case VT_DISPATCH:
        if (auto* const object = Read<IUnknown*>(source)) {
            object->AddRef();
        }
        break;
    case VT_VARIANT:
        VariantInit(static_cast<VARIANT*>(target));
        return VariantCopy(static_cast<VARIANT*>(target), static_cast<const VARIANT*>(source));
    default:
        break;
    }
    std::memmove(target, source, ElementSize(type));
    return S_OK;
}

} // namespace platform
