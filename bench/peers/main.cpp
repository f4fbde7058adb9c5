// The coupling step against peers that make the same calls: plain C++ with the platform's value classes, and a script.
// Writes a JSON object to standard output. Usage: bench_peers STEP.VBS GEOMETRY, with the simulator registered;
// GEOMETRY is examples/cube-magnets/cube-magnets.obj.

#include "bench/desktop/BenchDesktop.h"
#include "bench/peers/CopyingStep.h"
#include "bench/step/Session.h"
#include "bench/step/SimulatedRun.h"
#include "bench/step/Timing.h"

#include <windows.h>

#include <objbase.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

_variant_t Create(const wchar_t* progId) {
    CLSID desktopClass;
    IDispatch* object = nullptr;
    if (FAILED(CLSIDFromProgID(progId, &desktopClass)) ||
        FAILED(CoCreateInstance(desktopClass, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER, IID_IDispatch,
                                reinterpret_cast<void**>(&object)))) {
        throw std::runtime_error("the desktop could not be created");
    }
    return _variant_t(object, false);
}

std::vector<std::wstring> BenchBodies(int count) {
    std::vector<std::wstring> names;
    names.reserve(static_cast<std::size_t>(count));
    for (int body = 0; body < count; ++body) {
        names.push_back(L"B" + std::to_wstring(body));
    }
    return names;
}

/// @param target  for the script: the number of bodies of the bench desktop, or the path of a project of the simulator
double ScriptSeconds(const std::string& script, const std::string& target, std::size_t recordedSteps,
                     double expectedSeconds) {
    const int repetitions = std::max(3, static_cast<int>(1.0 / (10.0 * expectedSeconds)));
    const std::string command = "cscript //nologo \"" + script + "\" \"" + target + "\" " +
                                std::to_string(recordedSteps) + " " + std::to_string(repetitions) + " bench-script.log";
    FILE* output = _popen(command.c_str(), "r");
    double milliseconds = 0.0;
    const int read = output ? std::fscanf(output, "%lf", &milliseconds) : 0;
    if (!output || _pclose(output) != 0 || read != 1) {
        throw std::runtime_error("the script did not run: " + command);
    }
    return milliseconds / 1000.0;
}

json Ratios(std::size_t bodies, std::size_t recordedSteps, double library, double copying, double scripted) {
    return {{"bodies", bodies},
            {"recordedSteps", recordedSteps},
            {"copyingRatio", copying / library},
            {"scriptRatio", scripted / library}};
}

json Compare(const std::string& script, int bodies, std::size_t recordedSteps) {
    Session session(bodies, recordedSteps, "Never");
    const _variant_t desktop = Create(L"Pellux.VantorDesktop.Bench");
    CopyingStep copying({desktop, desktop, desktop}, BenchBodies(bodies), recordedSteps, "bench-copying.log");
    const auto medians = Medians({[&] { session.Step(); }, [&] { copying.Step(); }});
    const double scripted = ScriptSeconds(script, std::to_string(bodies), recordedSteps, medians[1]);
    return Ratios(static_cast<std::size_t>(bodies), recordedSteps, medians[0], medians[1], scripted);
}

/// The simulator's desktop, without reports at each step.
_variant_t SimulatedDesktop() {
    const _variant_t desktop = CallMethod(Create(L"Pellux.VantorDesktop.Simulator"), L"GetAppDesktop");
    CallMethod(desktop, L"SetRegistryString",
               {L"Desktop\\Settings\\ProjectOptions\\Veltrix 3D\\UpdateReportsOnSolve", L"Never"});
    return desktop;
}

double CopyingSeconds(const std::filesystem::path& path, std::size_t recordedSteps) {
    const _variant_t desktop = SimulatedDesktop();
    const _variant_t project = CallMethod(desktop, L"OpenProject", {path.c_str()});
    const _variant_t design = CallMethod(project, L"GetDesign", {L"Veltrix3DDesign1"});
    CopyingStep copying({desktop, project, design}, {L"lower", L"upper"}, recordedSteps, "bench-copying.log");
    const double seconds = Medians({[&] { copying.Step(); }}).front();
    CallMethod(project, L"Save");
    return seconds;
}

/// The same on the simulator, in another process, one after the other: one client at a time may change a project.
json CompareOutOfProcess(const std::string& script, const std::string& geometry, std::size_t recordedSteps) {
    SimulatedRun run(geometry);
    const _variant_t desktop = SimulatedDesktop();
    for (std::size_t step = 0; step < recordedSteps; ++step) {
        run.Step();
    }
    const double library = Medians({[&] { run.Step(); }}).front();
    run.Save();
    const double copying = CopyingSeconds(run.Project(), recordedSteps);
    const double scripted = ScriptSeconds(script, run.Project().string(), recordedSteps, copying);
    return Ratios(2, recordedSteps, library, copying, scripted);
}

} // namespace

int main(int argc, char** argv) try {
    if (argc != 3) {
        throw std::runtime_error("usage: bench_peers STEP.VBS GEOMETRY");
    }
    if (!BenchRegister(true)) {
        throw std::runtime_error("the bench desktop could not be registered");
    }
    json report;
    for (const std::size_t recordedSteps : {1u, 100u, 1000u}) {
        report["peers"].push_back(Compare(argv[1], 10, recordedSteps));
    }
    BenchRegister(false);
    report["outOfProcess"].push_back(CompareOutOfProcess(argv[1], argv[2], 100));
    std::cout << report.dump(2) << std::endl;
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "error: %s\n", error.what());
    return 1;
}
