#pragma once

#include "comutils/Value.h"

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

struct ReleaseObject {
    void operator()(IDispatch* object) const noexcept { object->Release(); }
};

/// An automation object with one reference of its own. (The platform's ComPtr does not fit: its Attach takes a further
/// reference in some headers and none in others.)
using CObject = std::unique_ptr<IDispatch, ReleaseObject>;

/// The one road to the desktop: look-up and invocation of methods, and nothing else. Every command of the families
/// (comutils/*Commands.h) is made of these calls.
namespace Dispatch {

/// The last call of this thread that failed. No operation looks at it: it is for whoever has to say why one failed.
struct Refusal {
    /// The method's name, cut off where it is longer than any of the desktop's; empty when no call has failed.
    wchar_t method[64];
    HRESULT code;
};

/// @return the thread's last refusal since `ForgetRefusal`
const Refusal& LastRefusal();
void ForgetRefusal();

/// @return true when the object is there and knows a method of this name
bool Knows(IDispatch* object, const wchar_t* methodName);

/// Looks a method up and invokes it with an argument block that is made already, last argument first.
/// @param flags   dispatch flags, DISPATCH_METHOD everywhere in this library
/// @param result  receives the result; neither initialised nor cleared here
/// @return false when the object is null, does not know the name, or the call fails
bool Invoke(IDispatch* object, const wchar_t* methodName, unsigned short flags, DISPPARAMS& arguments, VARIANT& result);

/// Invokes a method with arguments that are written down in braces.
/// @param arguments  in the desktop's order
/// @param result     receives the result; nothing (VT_EMPTY) when the call fails
/// @return false when the object is null, does not know the name, or the call fails
bool Call(IDispatch* object, const wchar_t* methodName, std::initializer_list<CValue> arguments, CValue& result);

/// The same for a method whose result is not looked at.
bool Call(IDispatch* object, const wchar_t* methodName, std::initializer_list<CValue> arguments);

/// Invokes a method without arguments that must give a text.
/// @return false when the call fails or its result is no text
bool QueryText(IDispatch* object, const wchar_t* methodName, std::string& text);

/// Invokes a method without arguments that gives a list of texts.
/// @return the texts; none when the call fails or gives something else
std::vector<std::string> QueryTexts(IDispatch* object, const wchar_t* methodName);

/// @return the object that the method gives; null when the call fails or gives none
CObject QueryObject(IDispatch* object, const wchar_t* methodName, std::initializer_list<CValue> arguments);

} // namespace Dispatch
