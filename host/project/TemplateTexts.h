#pragma once

#include <string_view>

namespace kinora::host {

/// The texts of host/templates/, built into the program.
std::string_view CouplingTemplate();
std::string_view SpringTemplate();
std::string_view BearingTemplate();
std::string_view FreeTemplate();

} // namespace kinora::host
