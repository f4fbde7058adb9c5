#include "tests/fault/Sweep.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

namespace sweep {

std::size_t Stride() {
    const char* const text = std::getenv("KINORA_FAULT_STRIDE");
    return text == nullptr ? 1 : std::max<std::size_t>(1, std::strtoul(text, nullptr, 10));
}

int Complaints() {
    return testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count();
}

} // namespace sweep
