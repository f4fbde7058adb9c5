#pragma once

/// @file
/// The exception that carries a result code.

#include <oleauto.h>

#pragma GCC visibility push(default)

class _com_error {
public:
    explicit _com_error(HRESULT result) noexcept : m_result(result) {}
    _com_error(const _com_error&) = default;
    _com_error& operator=(const _com_error&) = default;
    virtual ~_com_error() = default;

    HRESULT Error() const noexcept { return m_result; }

private:
    HRESULT m_result;
};

#pragma GCC visibility pop
