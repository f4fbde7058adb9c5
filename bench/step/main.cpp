// The cost of a coupling step against its floor. Writes a JSON object to standard output. Built twice: with the
// library, and with its files left out; then there are none for the floor to append to either.

#include "bench/desktop/BenchDesktop.h"
#include "bench/step/Floor.h"
#include "bench/step/Session.h"
#include "bench/step/Timing.h"

#include <cstdio>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

json StepAgainstFloor(int bodies, std::size_t recordedSteps, const std::string& reports) {
    Session session(bodies, recordedSteps, reports);
    Floor::Recording recording;
    session.Step();
    BenchObserve(nullptr);
    const auto medians =
        Medians({[&] { session.Step(); }, [&] { Floor::Replay(recording.calls); }, [&] { session.AppendToFiles(); }});
    const double step = medians[0], calls = medians[1], appends = medians[2];
    return {{"bodies", bodies},
            {"recordedSteps", recordedSteps},
            {"reports", reports},
            {"calls", recording.calls.size()},
            {"argumentBytes", Floor::ArgumentBytes(recording.calls)},
            {"stepSeconds", step},
            {"ratio", step / (calls + appends)}};
}

json HistoryAgainstFloor(int bodies, std::size_t recordedSteps) {
    Session session(bodies, recordedSteps, "Never");
    Floor::Recording recording;
    session.WriteHistory();
    BenchObserve(nullptr);
    const auto medians = Medians({[&] { session.WriteHistory(); }, [&] { Floor::Replay(recording.calls); }});
    return {{"bodies", bodies}, {"recordedSteps", recordedSteps}, {"ratio", medians[0] / medians[1]}};
}

} // namespace

int main() try {
    if (!BenchRegister(true)) {
        throw std::runtime_error("the bench desktop could not be registered");
    }
    json report;
    for (const int bodies : {1, 10, 100}) {
        for (const std::size_t recordedSteps : {1u, 100u, 1000u, 10000u}) {
            for (const char* reports : {"Never", "Automatically"}) {
                std::fprintf(stderr, "%d bodies, %u recorded steps, %s\n", bodies, static_cast<unsigned>(recordedSteps),
                             reports);
                report["step"].push_back(StepAgainstFloor(bodies, recordedSteps, reports));
            }
        }
    }
    report["history"] = HistoryAgainstFloor(10, 10000);
    BenchRegister(false);
    std::cout << report.dump(2) << std::endl;
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "error: %s\n", error.what());
    return 1;
}
