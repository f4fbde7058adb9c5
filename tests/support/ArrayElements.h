#pragma once

#include <windows.h>

#include <oleauto.h>

namespace fake {

/// The elements of a SAFEARRAY of one dimension, in memory for as long as this lives.
template <typename Element>
class ArrayElements {
public:
    explicit ArrayElements(SAFEARRAY* array) : m_array(array) {
        SafeArrayAccessData(array, reinterpret_cast<void**>(&m_first));
    }
    ~ArrayElements() { SafeArrayUnaccessData(m_array); }
    ArrayElements(const ArrayElements&) = delete;
    ArrayElements& operator=(const ArrayElements&) = delete;

    Element* First() const { return m_first; }

private:
    SAFEARRAY* m_array;
    Element* m_first = nullptr;
};

} // namespace fake
