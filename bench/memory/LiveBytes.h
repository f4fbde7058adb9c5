#pragma once

#include <cstddef>

/// Bytes in use in the heap of automation and in that of the C run-time.
std::size_t LiveBytes();
