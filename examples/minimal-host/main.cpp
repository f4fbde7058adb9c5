#include "interface/IKinoraVeltrixInterface.h"

#include <cstdio>

int main(int, char** paths) try { // minimal-host PROJECT GEOMETRY
    IKinoraVeltrixInterface& coupling = *GetKinoraVeltrixFactoryInterface();
    std::vector<IKinoraVeltrixInterface::Group> bodies(2);
    bodies[0].transform.name = "lower", bodies[0].objects = {"lower_magnet"};
    bodies[1].transform.name = "upper", bodies[1].objects = {"upper_magnet"};
    bodies[1].transform.translation[2] = 0.012;                                // metres
    const IKinoraVeltrixInterface::Material magnet = {"magnet_1T", {0, 0, 1}}; // magnetised along z
    bool ok = coupling.CreateProject(paths[1], paths[2], "mm") &&
              coupling.InitMagneticObjects(bodies, {{"lower_magnet", magnet}, {"upper_magnet", magnet}});
    for (int step = 0; ok && step < 5; ++step, bodies[1].transform.translation[2] += 0.001) {
        int status = 0;
        std::vector<IKinoraVeltrixInterface::Result> loads; // newtons and millinewton-metres, in the bodies' axes
        ok = coupling.Analyze(0.01 * step, {bodies[0].transform, bodies[1].transform}, loads, status);
        if (ok && loads.size() == 2)
            std::printf("z = %2.0f mm: %8.4f N\n", 1e3 * bodies[1].transform.translation[2], loads[1].force[2]);
    }
    return coupling.QuitApplication() && ok ? 0 : 1; // saves and closes the project
} catch (const LaunchDesktopExeption& error) {
    return std::fprintf(stderr, "%s\n", error.what()), 1;
}
