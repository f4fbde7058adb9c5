// The coupling step against peers that make the same calls: plain C++ with the platform's value classes, and a script.
// Writes a JSON object to standard output. Usage: bench_peers STEP.VBS

#include "bench/desktop/BenchDesktop.h"
#include "bench/peers/CopyingStep.h"
#include "bench/step/Session.h"
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

IDispatch* Desktop() {
    CLSID desktopClass;
    IDispatch* desktop = nullptr;
    if (FAILED(CLSIDFromProgID(L"Pellux.VantorDesktop.Bench", &desktopClass)) ||
        FAILED(CoCreateInstance(desktopClass, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                reinterpret_cast<void**>(&desktop))))
        throw std::runtime_error("the bench desktop could not be created");
    return desktop;
}

double ScriptSeconds(const std::string& script, int bodies, std::size_t recordedSteps, double expectedSeconds) {
    const int repetitions = std::max(3, static_cast<int>(1.0 / (10.0 * expectedSeconds)));
    const std::string command = "cscript //nologo \"" + script + "\" " + std::to_string(bodies) + " " +
                                std::to_string(recordedSteps) + " " + std::to_string(repetitions) + " bench-script.log";
    FILE* output = _popen(command.c_str(), "r");
    double milliseconds = 0.0;
    const int read = output ? std::fscanf(output, "%lf", &milliseconds) : 0;
    if (!output || _pclose(output) != 0 || read != 1)
        throw std::runtime_error("the script did not run: " + command);
    return milliseconds / 1000.0;
}

json Compare(const std::string& script, int bodies, std::size_t recordedSteps) {
    Session session(bodies, recordedSteps, "Never");
    CopyingStep copying(Desktop(), bodies, recordedSteps, "bench-copying.log");
    const auto medians = Medians({[&] { session.Step(); }, [&] { copying.Step(); }});
    const double scripted = ScriptSeconds(script, bodies, recordedSteps, medians[1]);
    return {{"bodies", bodies},
            {"recordedSteps", recordedSteps},
            {"copyingRatio", medians[1] / medians[0]},
            {"scriptRatio", scripted / medians[0]}};
}

} // namespace

int main(int argc, char** argv) try {
    if (argc != 2)
        throw std::runtime_error("usage: bench_peers STEP.VBS");
    if (!BenchRegister(true))
        throw std::runtime_error("the bench desktop could not be registered");
    json report;
    for (const std::size_t recordedSteps : {1u, 100u, 1000u})
        report["peers"].push_back(Compare(argv[1], 10, recordedSteps));
    BenchRegister(false);
    std::cout << report.dump(2) << std::endl;
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "error: %s\n", error.what());
    return 1;
}
