#include "comutils/Dispatch.h"

#include <array>
#include <cassert>
#include <iterator>
#include <string_view>

namespace Dispatch {
namespace {

/// The longest argument list is that of "CreateReport".
constexpr std::size_t mostArguments = 7;

thread_local Refusal lastRefusal = {};

/// @return whether the call succeeded; one that did not is noted
bool Noted(const wchar_t* methodName, HRESULT code) {
    if (SUCCEEDED(code)) {
        return true;
    }
    constexpr std::size_t longest = std::size(lastRefusal.method) - 1;
    const std::wstring_view name(methodName);
    const std::size_t length = name.copy(lastRefusal.method, longest);
    lastRefusal.method[length] = L'\0';
    lastRefusal.code = code;
    return false;
}

bool FindMethod(IDispatch* object, const wchar_t* methodName, DISPID& id) {
    if (!object) {
        return false;
    }
    LPOLESTR name = const_cast<LPOLESTR>(methodName);
    return Noted(methodName, object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_SYSTEM_DEFAULT, &id));
}

} // namespace

const Refusal& LastRefusal() {
    return lastRefusal;
}

void ForgetRefusal() {
    lastRefusal = {};
}

bool Knows(IDispatch* object, const wchar_t* methodName) {
    DISPID id = DISPID_UNKNOWN;
    return FindMethod(object, methodName, id);
}

bool Invoke(IDispatch* object, const wchar_t* methodName, unsigned short flags, DISPPARAMS& arguments,
            VARIANT& result) {
    DISPID id = DISPID_UNKNOWN;
    return FindMethod(object, methodName, id) &&
           Noted(methodName,
                 object->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, flags, &arguments, &result, nullptr, nullptr));
}

bool Call(IDispatch* object, const wchar_t* methodName, std::initializer_list<CValue> arguments, CValue& result) {
    assert(arguments.size() <= mostArguments);
    // The block looks at the arguments, last first; the caller's braces own and clear them.
    std::array<VARIANT, mostArguments> block; // NOLINT(*-member-init): only the places that are filled are read
    auto next = block.begin();
    for (auto argument = std::rbegin(arguments); argument != std::rend(arguments); ++argument) {
        *next++ = argument->Get();
    }
    DISPPARAMS parameters = {block.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
    if (Invoke(object, methodName, DISPATCH_METHOD, parameters, *result.Receive())) {
        return true;
    }
    result = CValue();
    return false;
}

bool Call(IDispatch* object, const wchar_t* methodName, std::initializer_list<CValue> arguments) {
    CValue ignored;
    return Call(object, methodName, arguments, ignored);
}

bool QueryText(IDispatch* object, const wchar_t* methodName, std::string& text) {
    CValue result;
    if (!Call(object, methodName, {}, result) || !result.IsText()) {
        return false;
    }
    text = result.ToText();
    return true;
}

std::vector<std::string> QueryTexts(IDispatch* object, const wchar_t* methodName) {
    CValue result;
    Call(object, methodName, {}, result);
    return result.ToTexts();
}

CObject QueryObject(IDispatch* object, const wchar_t* methodName, std::initializer_list<CValue> arguments) {
    CValue result;
    Call(object, methodName, arguments, result);
    return CObject(result.DetachObject());
}

} // namespace Dispatch
