#include "report/core/Base64.h"

namespace kinora::report {

std::string Base64(std::string_view bytes) {
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const auto byte = [&](std::size_t k) {
            return i + k < bytes.size() ? static_cast<unsigned int>(static_cast<unsigned char>(bytes[i + k])) : 0U;
        };
        const unsigned int group = (byte(0) << 16U) | (byte(1) << 8U) | byte(2);
        for (std::size_t k = 0; k < 4; ++k) {
            text += i + k <= bytes.size() ? alphabet[(group >> (18U - 6U * static_cast<unsigned int>(k))) & 63U] : '=';
        }
    }
    return text;
}

} // namespace kinora::report
