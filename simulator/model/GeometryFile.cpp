#include "simulator/model/GeometryFile.h"

#include "simulator/model/DesktopError.h"
#include "simulator/model/Files.h"
#include "simulator/model/ObjReader.h"
#include "simulator/model/StlReader.h"
#include "simulator/model/Text.h"

#include <algorithm>
#include <cctype>

namespace vantor::model {

ImportedGeometry ReadGeometryFile(const std::filesystem::path& path) {
    std::string extension = Utf8(path.extension());
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const std::string fileName = Utf8(path);
    if (extension != ".obj" && extension != ".stl") {
        throw GeometryFileError(fileName + ": geometry comes from .obj (Wavefront) and .stl files only");
    }
    std::string source;
    try {
        source = ReadWholeFile(path);
    } catch (const DesktopError& error) {
        throw GeometryFileError(error.what());
    }
    const std::string defaultName = Utf8(path.stem());
    return extension == ".obj" ? ReadObj(source, fileName, defaultName) : ReadStl(source, fileName, defaultName);
}

} // namespace vantor::model
