// How much of a step's time is the library's own when the desktop is another process. Writes a JSON object to standard
// output. Needs the simulator registered.
// Usage: bench_share GEOMETRY; GEOMETRY is examples/cube-magnets/cube-magnets.obj
//
// The whole in-process step against the bench desktop, its answers included, is taken as the library's own time, so
// that the share is an upper bound.

#include "bench/desktop/BenchDesktop.h"
#include "bench/step/Session.h"
#include "bench/step/SimulatedRun.h"
#include "bench/step/Timing.h"

#include <cstdio>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>

namespace {

constexpr std::size_t steps = 100;

double SimulatedStepSeconds(const std::string& geometry) {
    SimulatedRun run(geometry);
    std::vector<double> times;
    for (std::size_t step = 0; step < steps; ++step) {
        times.push_back(SecondsOf([&] { run.Step(); }));
    }
    return Median(times);
}

} // namespace

int main(int argc, char** argv) try {
    if (argc != 2) {
        throw std::runtime_error("usage: bench_share GEOMETRY");
    }
    const double outOfProcess = SimulatedStepSeconds(argv[1]);
    if (!BenchRegister(true)) {
        throw std::runtime_error("the bench desktop could not be registered");
    }
    double inProcess = 0.0;
    {
        Session session(2, steps / 2, "Automatically");
        inProcess = Medians({[&] { session.Step(); }}).front();
    }
    BenchRegister(false);
    const nlohmann::json report = {{"bodies", 2}, {"steps", steps}, {"share", inProcess / outOfProcess}};
    std::cout << report.dump(2) << std::endl;
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "error: %s\n", error.what());
    return 1;
}
