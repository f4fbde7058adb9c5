#include "tests/support/VariantTree.h"

#include "tests/support/ArrayElements.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>

namespace fake {
namespace {

constexpr std::size_t lineWidth = 110;

std::string Escaped(char32_t character) {
    switch (character) {
    case U'"':
        return "\\\"";
    case U'\\':
        return "\\\\";
    case U'\0':
        return "\\0";
    case U'\n':
        return "\\n";
    case U'\r':
        return "\\r";
    default:
        char code[8];
        std::snprintf(code, sizeof code, "\\x%02X", static_cast<unsigned>(character));
        return code;
    }
}

std::string Quoted(const std::wstring& text) {
    std::string quoted = "\"";
    for (const char character : ToUtf8(text)) {
        const bool isPlain = static_cast<unsigned char>(character) >= 0x20 && character != '"' && character != '\\';
        quoted += isPlain ? std::string(1, character) : Escaped(static_cast<char32_t>(character));
    }
    return quoted + '"';
}

/// The shortest text that reads back as the same number, always recognisable as a real.
std::string PrintReal(double number) {
    char text[40];
    if (std::fabs(number) < 1e15 && std::floor(number) == number) {
        std::snprintf(text, sizeof text, "%.1f", number);
        return text;
    }
    for (int digits = 1; digits <= 17; ++digits) {
        std::snprintf(text, sizeof text, "%.*g", digits, number);
        if (std::strtod(text, nullptr) == number) {
            break;
        }
    }
    return text;
}

std::string PrintFlag(std::int64_t raw) {
    if (raw == VARIANT_TRUE) {
        return "true";
    }
    return raw == VARIANT_FALSE ? "false" : "bool(" + std::to_string(raw) + ")";
}

std::string ArrayOpening(const Value& array) {
    std::string opening;
    if (array.type != (VT_ARRAY | VT_VARIANT)) {
        opening += "array of vt" + std::to_string(array.type & VT_TYPEMASK);
    }
    if (array.dimensions != 1) {
        opening += std::to_string(array.dimensions) + " dimensions";
    }
    opening += "[";
    if (array.lowerBound != 0) {
        opening += "from " + std::to_string(array.lowerBound) + ": ";
    }
    return opening;
}

bool IsKey(const Value& value) {
    return value.type == VT_BSTR && value.text.size() >= 2 && value.text.compare(value.text.size() - 2, 2, L":=") == 0;
}

/// An element of an array that does not hold VARIANTs, seen as one; empty for elements that no VARIANT takes.
VARIANT SeenAsVariant(const unsigned char* element, UINT size, VARTYPE type) {
    VARIANT variant;
    VariantInit(&variant);
    if (size <= sizeof variant.llVal) {
        std::memcpy(&variant.llVal, element, size);
        variant.vt = type;
    }
    return variant;
}

void ReadArray(const VARIANT& variant, Value& value) {
    SAFEARRAY* const array = variant.parray;
    value.dimensions = array == nullptr ? 0 : SafeArrayGetDim(array);
    if (value.dimensions != 1) {
        return;
    }
    const auto type = static_cast<VARTYPE>(variant.vt & VT_TYPEMASK);
    const UINT size = SafeArrayGetElemsize(array);
    LONG upperBound = -1;
    SafeArrayGetLBound(array, 1, &value.lowerBound);
    SafeArrayGetUBound(array, 1, &upperBound);
    const ArrayElements<unsigned char> elements(array);
    const unsigned char* element = elements.First();
    value.items.reserve(static_cast<std::size_t>(std::int64_t{upperBound} - value.lowerBound + 1));
    for (LONG index = value.lowerBound; index <= upperBound; ++index, element += size) {
        value.items.push_back(
            Read(type == VT_VARIANT ? *reinterpret_cast<const VARIANT*>(element) : SeenAsVariant(element, size, type)));
    }
}

} // namespace

Value Read(const VARIANT& variant) {
    Value value;
    value.type = variant.vt;
    if ((variant.vt & VT_ARRAY) != 0) {
        ReadArray(variant, value);
        return value;
    }
    switch (variant.vt) {
    case VT_BSTR:
        value.isNullText = variant.bstrVal == nullptr;
        value.text.assign(value.isNullText ? L"" : variant.bstrVal, SysStringLen(variant.bstrVal));
        break;
    case VT_BOOL:
        value.integer = variant.boolVal;
        break;
    case VT_I4:
    case VT_INT:
        value.integer = variant.lVal;
        break;
    case VT_R8:
        value.real = variant.dblVal;
        break;
    default:
        break;
    }
    return value;
}

std::string Print(const Value& value) {
    if ((value.type & VT_ARRAY) != 0) {
        std::string list = ArrayOpening(value);
        for (const Value& item : value.items) {
            list += (&item == value.items.data() ? "" : ", ") + Print(item);
        }
        return list + "]";
    }
    switch (value.type) {
    case VT_EMPTY:
        return "empty";
    case VT_NULL:
        return "null";
    case VT_BSTR:
        return value.isNullText ? "null text" : Quoted(value.text);
    case VT_BOOL:
        return PrintFlag(value.integer);
    case VT_INT:
        return "int(" + std::to_string(value.integer) + ")";
    case VT_I4:
        return "i4(" + std::to_string(value.integer) + ")";
    case VT_R8:
        return PrintReal(value.real);
    case VT_DISPATCH:
        return "object";
    default:
        return "vt" + std::to_string(value.type);
    }
}

std::string Layout(const Value& value, unsigned indent) {
    const std::string line = Print(value);
    if ((value.type & VT_ARRAY) == 0 || line.size() + indent <= lineWidth) {
        return line;
    }
    std::string lines = ArrayOpening(value);
    const std::string margin = "\n" + std::string(indent + 4, ' ');
    for (std::size_t index = 0; index < value.items.size(); ++index) {
        const bool followsKey = index > 0 && IsKey(value.items[index - 1]) && !IsKey(value.items[index]);
        lines += (followsKey ? " " : margin) + Layout(value.items[index], indent + 4);
        lines += index + 1 < value.items.size() ? "," : "]";
    }
    return lines;
}

} // namespace fake
