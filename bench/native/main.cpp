// A step natively, on the simulator in the process: two magnets, and a history of a hundred steps. Writes a JSON object
// to standard output.
// Usage: bench_native GEOMETRY; GEOMETRY is examples/cube-magnets/cube-magnets.obj
//
// What a step takes without what its calls take inside of the simulator is the library's.

#include "bench/native/Metered.h"
#include "bench/step/SimulatedRun.h"
#include "bench/step/Timing.h"

#include <cstdio>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>

namespace {

constexpr int recordedSteps = 100;
constexpr int timedSteps = 100;

} // namespace

int main(int argc, char** argv) try {
    if (argc != 2) {
        throw std::runtime_error("usage: bench_native GEOMETRY");
    }
    const MeteredDesktop desktop;
    SimulatedRun plain(argv[1], "Simulator");
    SimulatedRun metered(argv[1], "Metered");
    for (int step = 0; step < recordedSteps; ++step) {
        plain.Step();
        metered.Step();
    }
    std::vector<double> times;
    std::vector<double> libraryTimes;
    for (int step = 0; step < timedSteps; ++step) {
        times.push_back(SecondsOf([&] { plain.Step(); }));
        MeteredDesktop::TakeSeconds();
        const double whole = SecondsOf([&] { metered.Step(); });
        libraryTimes.push_back(whole - MeteredDesktop::TakeSeconds());
    }
    const nlohmann::json report = {{"bodies", 2},
                                   {"recordedSteps", recordedSteps},
                                   {"stepSeconds", Median(times)},
                                   {"libraryShare", Median(libraryTimes) / Median(times)}};
    std::cout << report.dump(2) << std::endl;
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "error: %s\n", error.what());
    return 1;
}
