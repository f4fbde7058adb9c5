#pragma once

#include <cstddef>

/// Takes the fuzzer's input apart. Behind its end there are zeros.
class InputBytes {
public:
    InputBytes(const unsigned char* data, std::size_t size) : m_data(data), m_size(size) {}

    bool AtEnd() const { return m_next >= m_size; }
    unsigned Byte() { return AtEnd() ? 0U : m_data[m_next++]; }

private:
    const unsigned char* m_data;
    std::size_t m_size;
    std::size_t m_next = 0;
};
