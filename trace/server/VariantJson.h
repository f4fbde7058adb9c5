#pragma once

#include <windows.h>

#include <oleauto.h>

#include <functional>
#include <string>

namespace kinora::trace {

/// Writes VARIANTs as they stand in a trace: {"vt":"R8","v":0.5}. docs/trace.md lists the forms.
class VariantJson {
public:
    /// Elements of all arrays of one value together; those beyond are counted and left out.
    static constexpr ULONG mostElements = 100000;
    /// Characters of one text; those beyond are counted and left out.
    static constexpr UINT mostCharacters = 65536;

    /// Writes the fields ,"v":..,"id":.. of a known object; returns false for others.
    using ObjectWriter = std::function<bool(std::string&, IUnknown*)>;

    VariantJson(std::string& out, ObjectWriter writeObject) : m_out(out), m_writeObject(std::move(writeObject)) {}

    void Append(const VARIANT& value) { Append(value, 0); }

private:
    void Append(const VARIANT& value, int depth);
    void AppendReferred(const VARIANT& value, int depth);
    void AppendContent(const VARIANT& value, int depth);
    void AppendScalar(const VARIANT& value);
    void AppendArray(SAFEARRAY* array, VARTYPE type, int depth);
    void AppendText(BSTR text);
    void AppendObject(IUnknown* object);

    std::string& m_out;
    ObjectWriter m_writeObject;
    ULONG m_elements = 0;
};

/// Name of a VARIANT's type: BSTR, BYREF|ARRAY|VARIANT, or VT_99 for one without a name.
std::string TypeName(VARTYPE type);

} // namespace kinora::trace
