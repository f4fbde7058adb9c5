#pragma once

#include <string>
#include <string_view>

namespace kinora::report {

/// Bytes in the alphabet of base64, padded.
std::string Base64(std::string_view bytes);

} // namespace kinora::report
