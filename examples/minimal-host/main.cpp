#include "interface/IKinoraVeltrixInterface.h"

#include <cstdio>

using Coupling = IKinoraVeltrixInterface;

/// Pulls the upper one of two magnets away, a millimetre per step.
static bool Run(Coupling& coupling, const char* project, const char* geometry) {
    std::vector<Coupling::Group> bodies(2);
    bodies[0].transform.name = "lower";
    bodies[0].objects = {"lower_magnet"};
    bodies[1].transform.name = "upper";
    bodies[1].objects = {"upper_magnet"};
    double& height = bodies[1].transform.translation[2];
    height = 0.012; // metres

    const Coupling::Material magnet = {"magnet_1T", {0, 0, 1}}; // magnetised along z
    if (!coupling.CreateProject(project, geometry, "mm") ||
        !coupling.InitMagneticObjects(bodies, {{"lower_magnet", magnet}, {"upper_magnet", magnet}})) {
        return false;
    }
    for (int step = 0; step < 5; ++step) {
        std::vector<Coupling::Result> loads; // newtons and millinewton-metres, in the bodies' axes
        int status = 0;
        if (!coupling.Analyze(0.01 * step, {bodies[0].transform, bodies[1].transform}, loads, status) ||
            loads.size() != bodies.size()) {
            return false;
        }
        std::printf("z = %2.0f mm: %8.4f N\n", 1e3 * height, loads[1].force[2]);
        height += 0.001;
    }
    return true;
}

static void PrintMessages(Coupling& coupling) {
    std::vector<std::string> messages; // none before there is a project with a design
    coupling.GetMessages(messages, Coupling::MessageSeverity::Info);
    std::fprintf(stderr, "The run failed; is PROJECT there already, or GEOMETRY not readable? The desktop says:\n");
    for (const std::string& message : messages) {
        std::fprintf(stderr, "  %s\n", message.c_str());
    }
}

int main(int count, char** arguments) {
    if (count != 3) {
        std::fprintf(stderr, "usage: minimal-host PROJECT GEOMETRY\n");
        return 2;
    }
    if (!IsKinoraVeltrixCompatible()) {
        std::fprintf(stderr, "The DLL (%s) and this program (%s) come from compilers that do not go together\n",
                     GetKinoraVeltrixBinaryInterface(), KINORA_VELTRIX_BINARY_INTERFACE);
        return 1;
    }
    try {
        Coupling& coupling = *GetKinoraVeltrixFactoryInterface();
        const bool done = Run(coupling, arguments[1], arguments[2]);
        if (!done) {
            PrintMessages(coupling);
        }
        return coupling.QuitApplication() && done ? 0 : 1; // saves and closes the project
    } catch (const LaunchDesktopExeption& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
