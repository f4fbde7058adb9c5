#pragma once

#include <windows.h>

#include <oleauto.h>

namespace kinora::programs {

/// Pairs SafeArrayAccessData with SafeArrayUnaccessData.
class ArrayAccess {
public:
    /// @param array  may be null; must outlive this
    explicit ArrayAccess(SAFEARRAY* array);
    ~ArrayAccess();
    ArrayAccess(const ArrayAccess&) = delete;
    ArrayAccess& operator=(const ArrayAccess&) = delete;

    /// False for no array and for one that cannot be read: it has no elements.
    bool IsOpen() const { return m_array != nullptr; }

    /// Elements of all dimensions together, in the order of the memory.
    ULONG Count() const { return m_count; }

    /// @pre  Element is what the array holds
    template <class Element>
    Element* Elements() const {
        return static_cast<Element*>(m_data);
    }

private:
    SAFEARRAY* m_array;
    void* m_data = nullptr;
    ULONG m_count = 0;
};

} // namespace kinora::programs
