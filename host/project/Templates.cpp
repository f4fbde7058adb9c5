#include "host/project/Templates.h"

#include "host/project/ObjWriter.h"
#include "host/project/TemplateTexts.h"

#include <fmt/format.h>

namespace kinora::host {
namespace {

using scenario::Vector;

/// Two discs of six poles that face each other over a gap of 4 mm.
std::string CouplingGeometry() {
    constexpr int poles = 6;
    constexpr double pitch = 3.14159265358979323846 * 2.0 / poles;
    constexpr double half = 0.45 * pitch;
    ObjWriter writer("Axial coupling: two discs of six poles");
    const auto addDisc = [&](const char* side, double bottom, double top) {
        for (int pole = 0; pole < poles; ++pole) {
            writer.AddSector(fmt::format("{}_{}", side, pole + 1), {10.0, 25.0, bottom, top}, pole * pitch - half,
                             pole * pitch + half, 6);
        }
    };
    addDisc("driver", -8.0, -2.0);
    addDisc("driven", 2.0, 8.0);
    return writer.Text();
}

void AddCube(ObjWriter& writer, const std::string& name, const Vector& middle) {
    const Vector half = Vector::Constant(5.0);
    writer.AddBlock(name, middle - half, middle + half);
}

/// Three cubes of 10 mm in a row, 10 mm apart.
std::string SpringGeometry() {
    ObjWriter writer("Magnetic spring: a cube between two others");
    AddCube(writer, "bottom_magnet", {0.0, 0.0, -20.0});
    AddCube(writer, "moving_magnet", {0.0, 0.0, 0.0});
    AddCube(writer, "top_magnet", {0.0, 0.0, 20.0});
    return writer.Text();
}

/// A ring in another one.
std::string BearingGeometry() {
    constexpr int sides = 24;
    ObjWriter writer("Radial bearing: a ring in another one");
    writer.AddRing("stator_magnet", {14.0, 20.0, -3.0, 3.0}, sides);
    writer.AddRing("rotor_magnet", {4.0, 9.0, -3.0, 3.0}, sides);
    return writer.Text();
}

/// A cube of 10 mm over another one, 6 mm apart and 2 mm aside.
std::string FreeGeometry() {
    ObjWriter writer("A free cube over a fixed one");
    AddCube(writer, "fixed_magnet", {0.0, 0.0, 0.0});
    AddCube(writer, "free_magnet", {2.0, 0.0, 16.0});
    return writer.Text();
}

} // namespace

const std::vector<ProjectTemplate>& ProjectTemplates() {
    static const std::vector<ProjectTemplate> templates = {
        {"coupling", "two discs of magnets, torque over angle", CouplingTemplate(), CouplingGeometry},
        {"spring", "a magnet on a slider between two that repel it", SpringTemplate(), SpringGeometry},
        {"bearing", "a ring that another one carries", BearingTemplate(), BearingGeometry},
        {"free", "a magnet with six degrees of freedom, pushed away", FreeTemplate(), FreeGeometry}};
    return templates;
}

} // namespace kinora::host
