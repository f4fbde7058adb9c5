#pragma once

#include <cstddef>

/// What tests share that inject one fault after the other.
namespace sweep {

/// Only every so many of the faults are injected (KINORA_FAULT_STRIDE; 1, all of them, when it is not set).
std::size_t Stride();

/// Complaints of the running test up to now.
int Complaints();

} // namespace sweep
