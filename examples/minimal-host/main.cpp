#include "interface/IKinoraVeltrixInterface.h"

#include <cstdio>
#include <set>

using Coupling = IKinoraVeltrixInterface;

/// Pulls the upper one of two magnets away, a millimetre per step. Gives what failed, or null.
static const char* Run(Coupling& coupling, const char* project, const char* geometry) {
    std::vector<Coupling::Group> bodies(2);
    bodies[0].transform.name = "lower";
    bodies[0].objects = {"lower_magnet"};
    bodies[1].transform.name = "upper";
    bodies[1].objects = {"upper_magnet"};
    double& height = bodies[1].transform.translation[2];
    height = 0.012; // metres

    if (!coupling.CreateProject(project, geometry, "mm")) {
        return "CreateProject failed; is PROJECT there already, or GEOMETRY not readable?";
    }
    const Coupling::Material magnet = {"magnet_1T", {0, 0, 1}}; // magnetised along z
    if (!coupling.InitMagneticObjects(bodies, {{"lower_magnet", magnet}, {"upper_magnet", magnet}})) {
        return "InitMagneticObjects failed; has GEOMETRY the objects lower_magnet and upper_magnet?";
    }
    for (int step = 0; step < 5; ++step) {
        std::vector<Coupling::Result> loads; // newtons and millinewton-metres, in the bodies' axes
        int status = 0;
        if (!coupling.Analyze(0.01 * step, {bodies[0].transform, bodies[1].transform}, loads, status)) {
            return status == 0 ? "Analyze failed" : "Analyze failed: the step cannot be solved";
        }
        if (loads.size() != bodies.size()) {
            return "Analyze gave no result for a body";
        }
        std::printf("z = %2.0f mm: %8.4f N\n", 1e3 * height, loads[1].force[2]);
        height += 0.001;
    }
    return nullptr;
}

/// The desktop's own words, the gravest first; there are none before there is a project with a design.
static void PrintMessages(Coupling& coupling) {
    const char* const names[] = {"info", "warning", "error", "fatal"};
    std::set<std::string> printed; // what is asked for comes with all that is graver
    for (int severity = 3; severity >= 0; --severity) {
        std::vector<std::string> messages;
        coupling.GetMessages(messages, static_cast<Coupling::MessageSeverity>(severity));
        for (const std::string& message : messages) {
            if (printed.insert(message).second) {
                std::fprintf(stderr, "  desktop, %s: %s\n", names[severity], message.c_str());
            }
        }
    }
}

int main(int count, char** arguments) {
    if (count != 3) {
        std::fprintf(stderr, "usage: minimal-host PROJECT GEOMETRY\n"
                             "  PROJECT   the project file to make\n"
                             "  GEOMETRY  a file with the objects lower_magnet and upper_magnet\n");
        return 2;
    }
    if (!IsKinoraVeltrixCompatible()) {
        std::fprintf(stderr, "The DLL (%s) and this program (%s) come from compilers that do not go together\n",
                     GetKinoraVeltrixBinaryInterface(), KINORA_VELTRIX_BINARY_INTERFACE);
        return 1;
    }
    try {
        Coupling& coupling = *GetKinoraVeltrixFactoryInterface();
        const char* failure = Run(coupling, arguments[1], arguments[2]);
        if (failure) {
            std::fprintf(stderr, "%s\n", failure);
            PrintMessages(coupling);
        }
        if (!coupling.QuitApplication()) { // saves and closes the project
            failure = "QuitApplication failed: PROJECT is not saved, and the desktop stays open";
            std::fprintf(stderr, "%s\n", failure);
            coupling.ReleaseApplication(); // in any case
        }
        return failure ? 1 : 0;
    } catch (const LaunchDesktopExeption& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
