// A project file is either read whole, and then written and read again unchanged, or complained about.
#include "simulator/model/DesktopError.h"
#include "simulator/model/ProjectFile.h"
#include "simulator/model/ProjectListing.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    using namespace vantor::model;
    try {
        const auto project = ReadProject(std::string(reinterpret_cast<const char*>(data), size), "fuzz.vtdk");
        const std::string written = WriteProject(*project);
        if (WriteProject(*ReadProject(written, "again.vtdk")) != written) {
            std::abort();
        }
        ListProject(*project);
    } catch (const DesktopError& error) {
        if (error.Code() != ErrorCode::ReadFile) {
            std::abort();
        }
    }
    return 0;
}
