#include "platform/Memory.h"

#include <oleauto.h>

#include <cstdint>
#include <cstring>
#include <cwchar>
#include <limits>

namespace {

/// What stands before the characters; they begin behind it, aligned.
struct TextHead {
    std::uint32_t unused;
    std::uint32_t bytes;
};

constexpr std::size_t longest =
    (std::numeric_limits<std::uint32_t>::max() - sizeof(TextHead)) / sizeof(OLECHAR) - 1; // and the closing zero

TextHead* TextHeadOf(BSTR text) {
    return reinterpret_cast<TextHead*>(text) - 1;
}

} // namespace

BSTR SysAllocStringLen(const OLECHAR* text, UINT length) {
    if (length > longest) {
        return nullptr;
    }
    auto* const head =
        static_cast<TextHead*>(platform::Allocate(sizeof(TextHead) + (length + std::size_t{1}) * sizeof(OLECHAR)));
    if (!head) {
        return nullptr;
    }
    *head = {0, static_cast<std::uint32_t>(length * sizeof(OLECHAR))};
    const BSTR result = reinterpret_cast<BSTR>(head + 1);
    if (text) {
        std::wmemcpy(result, text, length);
    } else {
        std::wmemset(result, L'\0', length);
    }
    result[length] = L'\0';
    return result;
}

BSTR SysAllocString(const OLECHAR* text) {
    return text ? SysAllocStringLen(text, static_cast<UINT>(std::wcslen(text))) : nullptr;
}

void SysFreeString(BSTR text) {
    if (text) {
        platform::Free(TextHeadOf(text));
    }
}

UINT SysStringByteLen(BSTR text) {
    return text ? TextHeadOf(text)->bytes : 0;
}

UINT SysStringLen(BSTR text) {
    return SysStringByteLen(text) / sizeof(OLECHAR);
}
