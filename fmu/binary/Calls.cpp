#include "fmu/binary/Calls.h"

#include "fmu/binary/Errors.h"
#include "scenario/Text.h"

#include <charconv>
#include <memory>

namespace kinora::fmu {
namespace {

/// Letters for their codes of two hexadecimal digits.
std::string WithoutCodes(const std::string& text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned letter = 0;
        const char* digits = text.data() + i + 1;
        if (text[i] == '%' && i + 2 < text.size() &&
            std::from_chars(digits, digits + 2, letter, 16).ptr == digits + 2) {
            plain += static_cast<char>(letter);
            i += 2;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

} // namespace

void* Make(const char* function, Instantiation instantiation) noexcept {
    const Log log = instantiation.log;
    try {
        try {
            return std::make_unique<Instance>(std::move(instantiation)).release();
        } catch (const std::exception& error) {
            log(Status::Error, errorCategory, std::string(function) + ": " + error.what());
        }
    } catch (...) {
        // No memory for the text either.
        return nullptr;
    }
    return nullptr;
}

void Free(void* instance) noexcept {
    delete static_cast<Instance*>(instance);
}

void Refuse(const std::string& what) {
    throw CallError("this FMU has no " + what + ".");
}

void RequirePointer(const void* pointer, std::size_t count) {
    if (!pointer && count > 0) {
        throw CallError("a null pointer, where there is to be something.");
    }
}

std::filesystem::path PathFromLocation(const std::string& location) {
    const std::string scheme = "file:";
    if (location.rfind(scheme, 0) != 0) {
        throw CallError("the location of the resources is \"" + location + "\", and has to begin with \"file:\".");
    }
    std::string path = location.substr(scheme.size());
    if (path.rfind("//", 0) == 0) {
        const std::size_t end = path.find('/', 2); // of the machine's name
        const std::string machine = path.substr(2, end == std::string::npos ? end : end - 2);
        if (machine.empty() || machine == "localhost") {
            path.erase(0, 2 + machine.size());
        }
    }
#ifdef _WIN32
    if (path.size() > 2 && path[0] == '/' && path[2] == ':') {
        path.erase(0, 1);
    }
#endif
    return scenario::PathFromUtf8(WithoutCodes(path));
}

} // namespace kinora::fmu
