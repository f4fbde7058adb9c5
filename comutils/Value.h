#pragma once

#include <windows.h>

#include <oleauto.h>

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

/// One automation value, owned: text, flag, number, object, list or nothing.
///
/// An argument is written down as it arrives at the desktop; braces make lists:
/// @code
///     const CValue shape = {"NAME:Shape", "Kind:=", "Ring", "Closed:=", true, "Turns:=", 12.0,
///                           {"NAME:Origin", "1mm", "0mm"}};
/// @endcode
/// Every text is allocated once and every element goes straight into its array; nothing is copied on the way up.
/// A list whose array cannot be created is VT_EMPTY. Move-only.
class CValue {
public:
    /// Nothing (VT_EMPTY). Empty braces mean this; a list without elements is `EmptyList`.
    CValue() noexcept : m_value() {}
    /// Text, from the ANSI code page. @throws _com_error  E_OUTOFMEMORY
    CValue(std::string_view text);
    CValue(const std::string& text) : CValue(std::string_view(text)) {}
    CValue(const char* text) : CValue(std::string_view(text)) {}
    /// Flag, -1 or 0.
    CValue(bool flag) noexcept;
    /// Plain number.
    CValue(double number) noexcept;
    /// List. The elements are moved out of the braces.
    CValue(std::initializer_list<CValue> elements);
    /// Whole numbers say which kind they are (`Int`, or a double); other pointers are no texts.
    template <class Other, class = std::enable_if_t<std::is_integral_v<Other> || std::is_pointer_v<Other>>>
    CValue(Other) = delete;

    /// A 32-bit integer of the type that the desktop takes for indices and severities (VT_INT).
    static CValue Int(int number) noexcept;
    static CValue EmptyList();
    /// Takes the VARIANT over.
    static CValue Attach(const VARIANT& value) noexcept;
    /// A copy. @throws _com_error  the value cannot be copied
    static CValue Copy(const VARIANT& source);

    CValue(CValue&& other) noexcept : m_value(other.Detach()) {}
    CValue& operator=(CValue&& other) noexcept;
    ~CValue() { Clear(); }

    /// Replaces this value by a copy; a failure is returned, not thrown.
    HRESULT CopyFrom(const VARIANT& source) noexcept;

    const VARIANT& Get() const noexcept { return m_value; }
    /// @return the emptied value's address, to receive a result in
    VARIANT* Receive() noexcept;
    /// @return the VARIANT, which the caller now owns; this value is empty afterwards
    VARIANT Detach() noexcept { return Take(); }

    bool IsText() const noexcept { return m_value.vt == VT_BSTR; }
    /// @return the text in the ANSI code page; empty unless IsText()
    std::string ToText() const;
    /// @return the texts of the list in their order, elements of other types left out; none unless it is a list
    std::vector<std::string> ToTexts() const { return TextsOf(m_value); }
    /// The same of a VARIANT that stays somebody else's.
    static std::vector<std::string> TextsOf(const VARIANT& list);
    /// @return the object with its reference, which the caller now owns; null when the value is no object
    IDispatch* DetachObject() noexcept;

private:
    /// Most values have been moved on before they end; those need no call into the platform.
    void Clear() noexcept {
        if (m_value.vt != VT_EMPTY) {
            VariantClear(&m_value);
        }
    }

    /// Braces hand over their elements as constants; they move on into the array all the same.
    VARIANT Take() const noexcept;

    mutable VARIANT m_value;
};

/// Makes a list (VT_ARRAY | VT_VARIANT, lower bound 0) element by element.
class CListBuilder {
public:
    /// @param count  number of elements that will be added
    explicit CListBuilder(std::size_t count);
    CListBuilder(const CListBuilder&) = delete;
    CListBuilder& operator=(const CListBuilder&) = delete;
    ~CListBuilder();

    /// @pre Fewer than `count` elements have been added. Checked in checked builds.
    void Add(CValue value);
    /// @return the list; nothing (VT_EMPTY) when its array could not be created
    CValue Finish();

    /// @return a list of copies; nothing (VT_EMPTY) when one cannot be made
    static CValue OfCopies(const std::vector<VARIANT>& values);

    /// @return a list of texts
    template <class Texts>
    static CValue OfTexts(const Texts& texts) {
        CListBuilder list(texts.size());
        for (const auto& text : texts) {
            list.Add(text);
        }
        return list.Finish();
    }

private:
    SAFEARRAY* m_array;
    VARIANT* m_next;
};
