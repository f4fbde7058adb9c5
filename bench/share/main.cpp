// How much of a step's time is the library's own when the desktop is another process. Writes a JSON object to standard
// output. Usage: bench_share GEOMETRY, with the simulator registered; GEOMETRY is
// examples/cube-magnets/cube-magnets.obj.
//
// The whole in-process step against the bench desktop, its answers included, is taken as the library's own time, so
// that the share is an upper bound.

#include "bench/desktop/BenchDesktop.h"
#include "bench/step/Session.h"
#include "bench/step/Timing.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>

namespace {

constexpr std::size_t steps = 100;

void Require(bool done, const char* what) {
    if (!done)
        throw std::runtime_error(std::string(what) + " failed");
}

/// Two cube magnets in the simulator, one moving.
class SimulatedRun {
public:
    explicit SimulatedRun(const std::string& geometry) : m_folder(std::filesystem::current_path() / "bench-simulated") {
        std::filesystem::remove_all(m_folder);
        std::filesystem::create_directory(m_folder);
        Require(_putenv("KINORA_VELTRIX_VTDK_VERSION=Simulator") == 0, "setting the desktop version");
        m_bodies[0].transform.name = "lower";
        m_bodies[0].objects = {"lower_magnet"};
        m_bodies[1].transform.name = "upper";
        m_bodies[1].objects = {"upper_magnet"};
        m_bodies[1].transform.translation[2] = 0.012;
        const IKinoraVeltrixInterface::Material magnet = {"magnet_1T", {0, 0, 1}};
        Require(m_coupling.CreateProject((m_folder / "Bench.vantor").string(), geometry, "mm"), "CreateProject");
        Require(m_coupling.InitMagneticObjects(m_bodies, {{"lower_magnet", magnet}, {"upper_magnet", magnet}}),
                "InitMagneticObjects");
    }

    ~SimulatedRun() {
        m_coupling.QuitApplication();
        std::error_code ignored; // left for the next run to remove
        std::filesystem::remove_all(m_folder, ignored);
    }
    SimulatedRun(const SimulatedRun&) = delete;
    SimulatedRun& operator=(const SimulatedRun&) = delete;

    void Step() {
        std::vector<IKinoraVeltrixInterface::Result> loads;
        int status = 0;
        m_bodies[1].transform.translation[2] += 0.0001;
        Require(m_coupling.Analyze(0.01 * m_step++, {m_bodies[0].transform, m_bodies[1].transform}, loads, status) &&
                    loads.size() == 2,
                "a step");
    }

private:
    std::filesystem::path m_folder;
    CKinoraVeltrixCoupling m_coupling;
    std::vector<IKinoraVeltrixInterface::Group> m_bodies{2};
    int m_step = 0;
};

double SimulatedStepSeconds(const std::string& geometry) {
    SimulatedRun run(geometry);
    std::vector<double> times;
    for (std::size_t step = 0; step < steps; ++step)
        times.push_back(SecondsOf([&] { run.Step(); }));
    return Median(times);
}

} // namespace

int main(int argc, char** argv) try {
    if (argc != 2)
        throw std::runtime_error("usage: bench_share GEOMETRY");
    const double outOfProcess = SimulatedStepSeconds(argv[1]);
    Require(BenchRegister(true), "registering the bench desktop");
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
