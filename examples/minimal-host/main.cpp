#include "interface/IKinoraVeltrixInterface.h"

#include <cstdio>
#include <exception>

int main(int argc, char** argv) try {
    if (argc != 3)
        return std::puts("usage: minimal-host PROJECT GEOMETRY"), 2;
    IKinoraVeltrixInterface& coupling = *GetKinoraVeltrixFactoryInterface();
    std::vector<IKinoraVeltrixInterface::Group> bodies(2);
    bodies[0].transform.name = "Stator", bodies[0].objects = {"Stator"};
    bodies[1].transform.name = "Mover", bodies[1].objects = {"Mover"};
    bodies[1].transform.translation[0] = 0.012; // metres; the other body rests at the origin
    bool ok = coupling.CreateProject(argv[1], argv[2], "mm") &&
              coupling.InitMagneticObjects(bodies, {{"Stator", {"magnet_1T", {1, 0, 0}}}, {"Mover", {"magnet_1T", {1, 0, 0}}}});
    for (int step = 0; ok && step < 5; ++step) {
        std::vector<IKinoraVeltrixInterface::Result> loads; // newtons and millinewton-metres
        int status = 0;
        ok = coupling.Analyze(step * 0.01, {bodies[0].transform, bodies[1].transform}, loads, status) && loads.size() == 2;
        if (ok)
            std::printf("x = %4.1f mm: %9.4f N\n", 1e3 * bodies[1].transform.translation[0], loads[1].force[0]);
        bodies[1].transform.translation[0] += 0.001;
    }
    ok = coupling.QuitApplication() && ok; // saves and closes the project
    return std::puts(ok ? "done" : "the coupling failed"), ok ? 0 : 1;
} catch (const std::exception& error) {
    return std::printf("error: %s\n", error.what()), 1;
}
