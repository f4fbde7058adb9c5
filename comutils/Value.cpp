#include "comutils/Value.h"

#include "comutils/Text.h"

#include <comdef.h>

#include <cassert>

namespace {

constexpr VARTYPE listType = VT_ARRAY | VT_VARIANT;

} // namespace

CValue::CValue(std::string_view text) : CValue() {
    m_value.bstrVal = Text::ToBstr(text);
    m_value.vt = VT_BSTR;
}

CValue::CValue(bool flag) noexcept : CValue() {
    m_value.vt = VT_BOOL;
    m_value.boolVal = flag ? VARIANT_TRUE : VARIANT_FALSE;
}

CValue::CValue(double number) noexcept : CValue() {
    m_value.vt = VT_R8;
    m_value.dblVal = number;
}

CValue::CValue(std::initializer_list<CValue> elements) : CValue() {
    CListBuilder list(elements.size());
    for (const CValue& element : elements) {
        list.Add(Attach(element.Take()));
    }
    *this = list.Finish();
}

CValue CValue::Int(int number) noexcept {
    CValue value;
    value.m_value.vt = VT_INT;
    value.m_value.intVal = number;
    return value;
}

CValue CValue::Attach(const VARIANT& value) noexcept {
    CValue owner;
    owner.m_value = value;
    return owner;
}

CValue CValue::EmptyList() {
    return CListBuilder(0).Finish();
}

HRESULT CValue::CopyFrom(const VARIANT& source) noexcept {
    // Some platform headers lack the constant in the declaration.
    return VariantCopy(&m_value, const_cast<VARIANT*>(&source));
}

CValue CValue::Copy(const VARIANT& source) {
    CValue copy;
    const HRESULT outcome = copy.CopyFrom(source);
    if (FAILED(outcome)) {
        throw _com_error(outcome);
    }
    return copy;
}

CValue& CValue::operator=(CValue&& other) noexcept {
    if (this != &other) {
        Clear();
        m_value = other.Detach();
    }
    return *this;
}

VARIANT* CValue::Receive() noexcept {
    Clear();
    m_value = VARIANT{}; // all bytes zero, also those of the value
    return &m_value;
}

VARIANT CValue::Take() const noexcept {
    const VARIANT taken = m_value;
    m_value = VARIANT{};
    return taken;
}

std::string CValue::ToText() const {
    return IsText() ? Text::FromBstr(m_value.bstrVal) : std::string();
}

std::vector<std::string> CValue::TextsOf(const VARIANT& list) {
    std::vector<std::string> texts;
    if (list.vt != listType || !list.parray || SafeArrayGetDim(list.parray) != 1 || !list.parray->pvData) {
        return texts;
    }
    const auto* elements = static_cast<const VARIANT*>(list.parray->pvData);
    const ULONG count = list.parray->rgsabound[0].cElements;
    texts.reserve(count);
    for (const VARIANT* element = elements; element != elements + count; ++element) {
        if (element->vt == VT_BSTR) {
            texts.push_back(Text::FromBstr(element->bstrVal));
        }
    }
    return texts;
}

IDispatch* CValue::DetachObject() noexcept {
    return m_value.vt == VT_DISPATCH ? Detach().pdispVal : nullptr;
}

CListBuilder::CListBuilder(std::size_t count)
    : m_array(SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(count))),
      m_next(m_array ? static_cast<VARIANT*>(m_array->pvData) : nullptr) {}

CListBuilder::~CListBuilder() {
    Finish();
}

void CListBuilder::Add(CValue value) {
    if (m_next) {
        assert(m_next < static_cast<VARIANT*>(m_array->pvData) + m_array->rgsabound[0].cElements);
        *m_next++ = value.Detach();
    }
}

CValue CListBuilder::OfCopies(const std::vector<VARIANT>& values) {
    CListBuilder list(values.size());
    for (const VARIANT& value : values) {
        CValue copy;
        if (FAILED(copy.CopyFrom(value))) {
            return CValue();
        }
        list.Add(std::move(copy));
    }
    return list.Finish();
}

CValue CListBuilder::Finish() {
    if (!m_array) {
        return CValue();
    }
    VARIANT list{};
    list.vt = listType;
    list.parray = std::exchange(m_array, nullptr);
    m_next = nullptr;
    return CValue::Attach(list);
}
