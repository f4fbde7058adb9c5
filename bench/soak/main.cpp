// A long run, watched: what the process holds and how long a step takes, against what the recorded history predicts.
// Prints a table in Markdown and ends with status 1 when something grows that should not.
// Usage: bench_soak STEPS            against the bench desktop, in this process
//        bench_soak STEPS GEOMETRY   against the simulator, in its own; GEOMETRY is bench/soak/five-cubes.obj

#include "bench/desktop/BenchDesktop.h"
#include "bench/memory/LiveBytes.h"
#include "bench/soak/Counters.h"
#include "bench/step/Timing.h"
#include "coupling/KinoraVeltrixCoupling.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace {

using Transform = IKinoraVeltrixInterface::Transform;
using Group = IKinoraVeltrixInterface::Group;

constexpr int bodies = 5;
constexpr int windows = 10;

/// A recorded row holds the time and six values a body. The texts are short enough to lie in their strings.
constexpr std::size_t rowBytes = sizeof(std::vector<std::string>) + (1 + 6 * bodies) * sizeof(std::string);

void Require(bool done, const char* what) {
    if (!done) {
        throw std::runtime_error(std::string(what) + " failed");
    }
}

class Run {
public:
    explicit Run(const char* geometry) : m_folder(std::filesystem::current_path() / "soak") {
        std::filesystem::remove_all(m_folder);
        std::filesystem::create_directory(m_folder);
        for (int body = 0; body < bodies; ++body) {
            m_transforms.emplace_back();
            m_transforms.back().name = "B" + std::to_string(body);
        }
        geometry ? Simulate(geometry) : UseBenchDesktop();
    }
    ~Run() {
        m_coupling.QuitApplication();
        // What cannot be removed is left for the next run.
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    void Step(int index) {
        m_transforms.back().translation[2] = 0.0001 * std::sin(0.01 * index);
        std::vector<IKinoraVeltrixInterface::Result> loads;
        int status = 0;
        Require(m_coupling.Analyze(0.01 * index, m_transforms, loads, status) && loads.size() == bodies, "a step");
    }

    /// Files in the reports folder.
    long Files() const {
        const std::filesystem::directory_iterator entries(m_folder / "Bench.reports");
        return static_cast<long>(std::distance(begin(entries), end(entries)));
    }

private:
    void UseBenchDesktop() {
        const std::filesystem::path project = m_folder / "Bench.project";
        std::ofstream(project) << "bench";
        BenchConfigure((m_folder.wstring() + L"\\").c_str(), bodies, L"Automatically");
        Require(_putenv("KINORA_VELTRIX_VTDK_VERSION=Bench") == 0, "setting the desktop version");
        Require(m_coupling.OpenProject(project.string(), "Design"), "OpenProject");
    }

    void Simulate(const std::string& geometry) {
        Require(_putenv("KINORA_VELTRIX_VTDK_VERSION=Simulator") == 0, "setting the desktop version");
        Require(m_coupling.CreateProject((m_folder / "Bench.vantor").string(), geometry, "mm"), "CreateProject");
        std::vector<Group> groups;
        std::map<std::string, IKinoraVeltrixInterface::Material> materials;
        for (const Transform& transform : m_transforms) {
            const std::string object = "cube_" + transform.name.substr(1);
            groups.push_back({transform, {object}});
            materials[object] = {"magnet_1T", {0, 0, 1}};
        }
        Require(m_coupling.InitMagneticObjects(groups, materials), "InitMagneticObjects");
    }

    std::filesystem::path m_folder;
    CKinoraVeltrixCoupling m_coupling;
    std::vector<Transform> m_transforms;
};

/// What is seen at the end of a window of steps.
struct Sight {
    int steps;
    /// Median over the window.
    double stepSeconds;
    std::size_t liveBytes;
    Counters own, desktop;
    long files;
};

Sight RunWindow(Run& run, int first, int last) {
    std::vector<double> times;
    for (int step = first; step < last; ++step) {
        times.push_back(SecondsOf([&] { run.Step(step); }));
    }
    return {last, Median(times), LiveBytes(), OfThisProcess(), OfProgram(L"vantor-sim.exe"), run.Files()};
}

/// The straight line through the times of the windows, at their middles, with the least relative deviations.
class Line {
public:
    explicit Line(const std::vector<Sight>& sights) : m_half(sights.front().steps / 2.0) {
        double n = 0, x = 0, y = 0, xx = 0, xy = 0;
        for (const Sight& sight : sights) {
            const double middle = sight.steps - m_half, weight = 1.0 / (sight.stepSeconds * sight.stepSeconds);
            n += weight, x += weight * middle, y += weight * sight.stepSeconds;
            xx += weight * middle * middle, xy += weight * middle * sight.stepSeconds;
        }
        m_slope = (n * xy - x * y) / (n * xx - x * x);
        m_start = (y - m_slope * x) / n;
    }
    double At(const Sight& sight) const { return m_start + m_slope * (sight.steps - m_half); }

private:
    double m_half, m_start = 0, m_slope = 0;
};

double Mega(std::size_t bytes) {
    return static_cast<double>(bytes) / 1e6;
}

double Growth(const Sight& from, const Sight& to) {
    return Mega(to.liveBytes) - Mega(from.liveBytes);
}

double Predicted(const Sight& from, const Sight& to) {
    return Mega(rowBytes * static_cast<std::size_t>(to.steps - from.steps));
}

void Print(const std::vector<Sight>& sights) {
    std::printf(
        "| steps | history predicted, MB | live, MB | handles | files | step / first tenth's | step / straight line | "
        "desktop: private MB, handles |\n| --- | --- | --- | --- | --- | --- | --- | --- |\n");
    const Line line(sights);
    for (const Sight& sight : sights) {
        std::printf("| %d | %.2f | %.2f | %zu | %ld | %.1f | %.2f | ", sight.steps, Predicted(sights.front(), sight),
                    Growth(sights.front(), sight), sight.own.handles, sight.files,
                    sight.stepSeconds / sights.front().stepSeconds, sight.stepSeconds / line.At(sight));
        if (sight.desktop.handles == 0) {
            std::printf("in the same process |\n");
        } else {
            std::printf("%.1f, %zu |\n", Mega(sight.desktop.privateBytes), sight.desktop.handles);
        }
    }
}

/// The list of rows doubles its places of one vector each when it is full; whatever else grows is a leak.
bool Holds(const std::vector<Sight>& sights) {
    const Sight &first = sights.front(), &last = sights.back();
    const double predicted = Predicted(first, last);
    const double slack = Mega(static_cast<std::size_t>(last.steps) * sizeof(std::vector<std::string>)) + 0.05;
    return std::abs(Growth(first, last) - predicted) <= slack && last.own.handles <= first.own.handles &&
           last.files == first.files && last.desktop.handles <= first.desktop.handles + 8;
}

} // namespace

int main(int argc, char** argv) try {
    const int steps = argc > 1 ? std::atoi(argv[1]) : 0;
    if (steps < 10 * windows || argc > 3) {
        throw std::runtime_error("usage: bench_soak STEPS [GEOMETRY], with at least 100 steps");
    }
    Require(BenchRegister(true), "registering the bench desktop");
    std::vector<Sight> sights;
    {
        Run run(argc == 3 ? argv[2] : nullptr);
        for (int window = 0; window < windows; ++window) {
            sights.push_back(RunWindow(run, steps / windows * window, steps / windows * (window + 1)));
        }
    }
    BenchRegister(false);
    Print(sights);
    if (!Holds(sights)) {
        throw std::runtime_error("something grows that the history does not explain; see the table");
    }
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "error: %s\n", error.what());
    return 1;
}
