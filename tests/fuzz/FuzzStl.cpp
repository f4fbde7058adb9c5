// An STL file either gives closed solids or a complaint.
#include "simulator/model/StlReader.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    try {
        const std::string text(reinterpret_cast<const char*>(data), size);
        for (const auto& solid : vantor::model::ReadStl(text, "fuzz.stl", "fuzz").solids) {
            if (!(vantor::model::SignedVolume(solid.mesh) >= 0.0)) {
                std::abort();
            }
        }
    } catch (const vantor::model::GeometryFileError&) {
    }
    return 0;
}
