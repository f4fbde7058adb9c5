// Makes steps, or replays their floor, for some seconds, for a profiler to look at; prints the microseconds that one
// took. Usage: bench_profile step|floor BODIES RECORDED_STEPS REPORTS SECONDS

#include "bench/desktop/BenchDesktop.h"
#include "bench/step/Floor.h"
#include "bench/step/Session.h"
#include "bench/step/Timing.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>

namespace {

double SecondsOfOne(const std::function<void()>& work, double leastSeconds) {
    double total = 0.0;
    int count = 0;
    for (; total < leastSeconds; ++count) {
        total += SecondsOf(work);
    }
    return total / count;
}

} // namespace

int main(int argc, char** argv) try {
    if (argc != 6) {
        throw std::runtime_error("usage: bench_profile step|floor BODIES RECORDED_STEPS REPORTS SECONDS");
    }
    if (!BenchRegister(true)) {
        throw std::runtime_error("the bench desktop could not be registered");
    }
    {
        Session session(std::atoi(argv[2]), static_cast<std::size_t>(std::atoi(argv[3])), argv[4]);
        Floor::Recording recording;
        session.Step();
        BenchObserve(nullptr);
        const auto replay = [&] {
            Floor::Replay(recording.calls);
            session.AppendToFiles();
        };
        const bool isFloor = std::string(argv[1]) == "floor";
        const std::function<void()> work = isFloor ? std::function<void()>(replay) : [&] { session.Step(); };
        std::printf("%.3f\n", 1e6 * SecondsOfOne(work, std::atof(argv[5])));
    }
    BenchRegister(false);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "error: %s\n", error.what());
    return 1;
}
