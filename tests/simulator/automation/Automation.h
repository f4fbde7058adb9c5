#pragma once

#include <oaidl.h>
#include <oleauto.h>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

/// What a client of the desktop needs to call it, written for tests.
namespace calls {

/// A VARIANT that clears itself.
struct Variant : VARIANT {
    Variant() { VariantInit(this); }
    Variant(const Variant& other) {
        VariantInit(this);
        VariantCopy(this, const_cast<Variant*>(&other)); // mingw declares the source without const
    }
    Variant& operator=(const Variant& other) {
        VariantCopy(this, const_cast<Variant*>(&other)); // mingw declares the source without const
        return *this;
    }
    ~Variant() { VariantClear(this); }
};

/// An owned reference.
class Object {
public:
    Object() = default;
    explicit Object(IDispatch* object) : m_object(object) {}
    Object(Object&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    Object& operator=(Object&& other) noexcept {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~Object() {
        if (m_object) {
            m_object->Release();
        }
    }

    IDispatch* Get() const { return m_object; }

private:
    IDispatch* m_object = nullptr;
};

Variant Text(const wchar_t* text);
Variant Int(int value);
Variant Flag(bool value);
Variant Array(const std::vector<Variant>& elements);

/// All that a call gives back.
struct Outcome {
    HRESULT status = S_OK;
    SCODE scode = S_OK;
    std::wstring source;
    std::wstring description;
    Variant result;
};

HRESULT Lookup(IDispatch* object, const wchar_t* method, DISPID& id);

/// Calls a method by its name; arguments in the desktop's order.
Outcome Try(IDispatch* object, const wchar_t* method, const std::vector<Variant>& arguments);

/// As Try; a failure fails the test.
Variant Call(IDispatch* object, const wchar_t* method, const std::vector<Variant>& arguments);

/// As Call, for results that are objects.
Object CallObject(IDispatch* object, const wchar_t* method, const std::vector<Variant>& arguments);

} // namespace calls
