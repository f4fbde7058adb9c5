#include "tests/support/OpenHandles.h"

#include <filesystem>
#include <iterator>
#include <string>

std::size_t OpenHandles(unsigned long processId) {
    const std::filesystem::directory_iterator open("/proc/" + std::to_string(processId) + "/fd");
    return static_cast<std::size_t>(std::distance(begin(open), end(open)));
}
