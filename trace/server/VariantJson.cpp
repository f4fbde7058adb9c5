#include "trace/server/VariantJson.h"

#include "programs/ArrayAccess.h"
#include "trace/core/ErrorText.h"
#include "trace/server/JsonText.h"
#include "trace/server/VariantVisit.h"

#include <map>

namespace kinora::trace {
namespace {

std::string ScalarName(VARTYPE type) {
    static const std::map<VARTYPE, const char*> names = {{VT_EMPTY, "EMPTY"},     {VT_NULL, "NULL"},
                                                         {VT_I2, "I2"},           {VT_I4, "I4"},
                                                         {VT_R4, "R4"},           {VT_R8, "R8"},
                                                         {VT_CY, "CY"},           {VT_DATE, "DATE"},
                                                         {VT_BSTR, "BSTR"},       {VT_DISPATCH, "DISPATCH"},
                                                         {VT_ERROR, "ERROR"},     {VT_BOOL, "BOOL"},
                                                         {VT_VARIANT, "VARIANT"}, {VT_UNKNOWN, "UNKNOWN"},
                                                         {VT_DECIMAL, "DECIMAL"}, {VT_I1, "I1"},
                                                         {VT_UI1, "UI1"},         {VT_UI2, "UI2"},
                                                         {VT_UI4, "UI4"},         {VT_I8, "I8"},
                                                         {VT_UI8, "UI8"},         {VT_INT, "INT"},
                                                         {VT_UINT, "UINT"},       {VT_RECORD, "RECORD"}};
    const auto found = names.find(type);
    return found == names.end() ? "VT_" + std::to_string(type) : found->second;
}

/// A VARIANT that looks at an element of an array, or at what another one refers to, without owning it.
VARIANT View(VARTYPE type, const void* content) {
    VARIANT view;
    VariantInit(&view);
    V_VT(&view) = static_cast<VARTYPE>(type | VT_BYREF);
    V_BYREF(&view) = const_cast<void*>(content);
    return view;
}

/// The platform's conversions take their source as changeable, and do not change it.
VARIANT* Source(const VARIANT& value) {
    return const_cast<VARIANT*>(&value);
}

ULONG ElementSize(SAFEARRAY* array) {
    return array == nullptr ? 0 : SafeArrayGetElemsize(array);
}

} // namespace

std::string TypeName(VARTYPE type) {
    const std::string reference = (type & VT_BYREF) != 0 ? "BYREF|" : "";
    const std::string array = (type & VT_ARRAY) != 0 ? "ARRAY|" : "";
    return reference + array + ScalarName(static_cast<VARTYPE>(type & ~(VT_BYREF | VT_ARRAY)));
}

void VariantJson::Append(const VARIANT& value, int depth) {
    const VARTYPE type = V_VT(&value);
    m_out += "{\"vt\":\"" + TypeName(type) + '"';
    if ((type & VT_BYREF) != 0) {
        AppendReferred(value, depth);
    } else if ((type & VT_ARRAY) != 0) {
        AppendArray(V_ARRAY(&value), static_cast<VARTYPE>(type & ~VT_ARRAY), depth);
    } else {
        AppendScalar(value);
    }
    m_out += '}';
}

void VariantJson::AppendReferred(const VARIANT& value, int depth) {
    if (!V_BYREF(&value) || depth > deepestArray) {
        m_out += ",\"v\":null";
        return;
    }
    m_out += ",\"v\":";
    AppendContent(value, depth);
}

void VariantJson::AppendContent(const VARIANT& value, int depth) {
    const auto type = static_cast<VARTYPE>(V_VT(&value) & ~VT_BYREF);
    if (type == VT_VARIANT) {
        Append(*V_VARIANTREF(&value), depth + 1);
        return;
    }
    VARIANT content;
    VariantInit(&content);
    if ((type & VT_ARRAY) != 0) {
        V_VT(&content) = type;
        V_ARRAY(&content) = *V_ARRAYREF(&value);
        Append(content, depth + 1);
    } else if (type == VT_DISPATCH || type == VT_UNKNOWN || type == VT_BSTR) {
        // Looked at, not copied: a copy would take references and allocate.
        V_VT(&content) = type;
        V_UNKNOWN(&content) = *V_UNKNOWNREF(&value);
        Append(content, depth + 1);
    } else if (SUCCEEDED(VariantCopyInd(&content, Source(value)))) {
        Append(content, depth + 1);
        VariantClear(&content);
    } else {
        m_out += "null";
    }
}

void VariantJson::AppendScalar(const VARIANT& value) {
    const VARTYPE type = V_VT(&value);
    if (type == VT_EMPTY || type == VT_NULL) {
        return;
    }
    if (type == VT_DISPATCH || type == VT_UNKNOWN) {
        AppendObject(V_UNKNOWN(&value));
        return;
    }
    m_out += ",\"v\":";
    if (type == VT_BSTR) {
        AppendText(V_BSTR(&value));
    } else if (type == VT_BOOL) {
        const bool isProper = V_BOOL(&value) == VARIANT_TRUE || V_BOOL(&value) == VARIANT_FALSE;
        m_out += !isProper ? std::to_string(V_BOOL(&value)) : V_BOOL(&value) == VARIANT_TRUE ? "true" : "false";
    } else if (type == VT_R8 || type == VT_DATE) {
        AppendJson(m_out, V_R8(&value));
    } else if (type == VT_R4) {
        AppendJson(m_out, static_cast<double>(V_R4(&value)));
    } else if (type == VT_ERROR) {
        AppendJson(m_out, HResultNumber(static_cast<std::uint32_t>(V_ERROR(&value))));
    } else if (type == VT_CY) {
        m_out += std::to_string(V_CY(&value).int64);
    } else if (type == VT_UI8) {
        m_out += std::to_string(V_UI8(&value));
    } else {
        VARIANT number;
        VariantInit(&number);
        const bool isWhole = type != VT_DECIMAL && SUCCEEDED(VariantChangeType(&number, Source(value), 0, VT_I8));
        m_out += isWhole ? std::to_string(V_I8(&number)) : "null";
    }
}

void VariantJson::AppendText(BSTR text) {
    const UINT length = SysStringLen(text);
    if (length <= mostCharacters) {
        AppendJson(m_out, std::wstring_view(text, length));
        return;
    }
    AppendJson(m_out, std::wstring_view(text, mostCharacters));
    m_out += ",\"length\":" + std::to_string(length);
}

void VariantJson::AppendObject(IUnknown* object) {
    if (!object) {
        m_out += ",\"v\":null";
    } else if (!m_writeObject(m_out, object)) {
        m_out += ",\"v\":\"an object of the client\"";
    }
}

void VariantJson::AppendArray(SAFEARRAY* array, VARTYPE type, int depth) {
    const ULONG elementSize = ElementSize(array);
    const programs::ArrayAccess access(array);
    const bool isFollowed = depth <= deepestArray && type != VT_RECORD;
    ULONG written = 0;
    m_out += ",\"v\":[";
    for (; isFollowed && written < access.Count() && m_elements < mostElements; ++written, ++m_elements) {
        m_out += written == 0 ? "" : ",";
        const char* const element = access.Elements<char>() + std::size_t{written} * elementSize;
        if (type == VT_VARIANT) {
            Append(*reinterpret_cast<const VARIANT*>(element), depth + 1);
        } else {
            AppendContent(View(type, element), depth + 1);
        }
    }
    m_out += ']';
    if (written < access.Count()) {
        m_out += ",\"count\":" + std::to_string(access.Count());
    }
    if (array && array->cDims == 1 && array->rgsabound[0].lLbound != 0) {
        m_out += ",\"lower\":" + std::to_string(array->rgsabound[0].lLbound);
    } else if (array && array->cDims > 1) {
        m_out += ",\"dimensions\":" + std::to_string(array->cDims);
    }
}

} // namespace kinora::trace
