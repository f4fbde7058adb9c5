#include "comutils/Dispatch.h"

#include "comutils/ComUtils.h"

#include <array>
#include <cassert>
#include <iterator>

namespace Dispatch {
namespace {

// The longest argument list is that of "CreateReport".
constexpr std::size_t mostArguments = 7;

} // namespace

bool Call(IDispatch* object, const wchar_t* methodName, std::initializer_list<CValue> arguments, CValue& result) {
    assert(arguments.size() <= mostArguments);
    // The block looks at the arguments, last first; the caller's braces own and clear them.
    std::array<VARIANT, mostArguments> block; // NOLINT(*-member-init): only the places that are filled are read
    auto next = block.begin();
    for (auto argument = std::rbegin(arguments); argument != std::rend(arguments); ++argument)
        *next++ = argument->Get();
    DISPPARAMS parameters = {block.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
    if (CComUtils::CallComFunction(object, methodName, DISPATCH_METHOD, parameters, *result.Receive()))
        return true;
    result = CValue();
    return false;
}

bool Call(IDispatch* object, const wchar_t* methodName, std::initializer_list<CValue> arguments) {
    CValue ignored;
    return Call(object, methodName, arguments, ignored);
}

bool QueryText(IDispatch* object, const wchar_t* methodName, std::string& text) {
    CValue result;
    if (!Call(object, methodName, {}, result) || !result.IsText())
        return false;
    text = result.ToText();
    return true;
}

CObject QueryObject(IDispatch* object, const wchar_t* methodName, std::initializer_list<CValue> arguments) {
    CValue result;
    Call(object, methodName, arguments, result);
    return Own(result.DetachObject());
}

bool QueryLocalVariables(IDispatch* design, std::vector<std::string>& names) {
    CValue result;
    if (!Call(design, L"GetProperties", {"LocalVariableTab", "LocalVariables"}, result))
        return false;
    names = CComUtils::ReadStringArray(result.Get());
    return true;
}

CValue QueryReportNames(IDispatch* design) {
    const CObject results = Own(CComUtils::CallGetChildObject(design, "Results"));
    CValue names;
    Call(results.get(), L"GetChildNames", {}, names);
    return names;
}

} // namespace Dispatch
