// A step on the simulator in this process against one on the simulator in its own: two magnets, and a history of a
// hundred steps. Writes a JSON object to standard output. Needs the simulator registered.
// Usage: bench_inprocess GEOMETRY; GEOMETRY is examples/cube-magnets/cube-magnets.obj

#include "bench/step/SimulatedRun.h"
#include "bench/step/Timing.h"

#include <cstdio>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>

namespace {

constexpr int recordedSteps = 100;
constexpr int timedSteps = 40;

} // namespace

int main(int argc, char** argv) try {
    if (argc != 2) {
        throw std::runtime_error("usage: bench_inprocess GEOMETRY");
    }
    SimulatedRun outside(argv[1], "Simulator");
    SimulatedRun inside(argv[1], "SimulatorInProcess");
    for (int step = 0; step < recordedSteps; ++step) {
        outside.Step();
        inside.Step();
    }
    std::vector<double> outsideTimes;
    std::vector<double> insideTimes;
    // In turns, so that what disturbs the machine disturbs both, and both have the same history.
    for (int step = 0; step < timedSteps; ++step) {
        outsideTimes.push_back(SecondsOf([&] { outside.Step(); }));
        insideTimes.push_back(SecondsOf([&] { inside.Step(); }));
    }
    const double outsideSeconds = Median(outsideTimes);
    const double insideSeconds = Median(insideTimes);
    const nlohmann::json report = {{"bodies", 2},
                                   {"recordedSteps", recordedSteps},
                                   {"inProcessSeconds", insideSeconds},
                                   {"outOfProcessSeconds", outsideSeconds},
                                   {"ratio", outsideSeconds / insideSeconds}};
    std::cout << report.dump(2) << std::endl;
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "error: %s\n", error.what());
    return 1;
}
