// The cost of a coupling step against its floor. Writes a JSON object to standard output.

#include "bench/desktop/BenchDesktop.h"
#include "bench/step/Floor.h"
#include "bench/step/Session.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <functional>
#include <iostream>
#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;

double SecondsOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Repetitions that take about a second in all, between 5 and 200, the contenders taking turns.
std::vector<double> Medians(const std::vector<std::function<void()>>& contenders) {
    double once = 0;
    for (const auto& contender : contenders)
        once += SecondsOf(contender);
    const int repetitions = std::clamp(static_cast<int>(1.0 / once), 5, 200);
    std::vector<std::vector<double>> times(contenders.size());
    for (int repetition = 0; repetition < repetitions; ++repetition)
        for (std::size_t index = 0; index < contenders.size(); ++index)
            times[index].push_back(SecondsOf(contenders[index]));
    std::vector<double> medians;
    std::transform(times.begin(), times.end(), std::back_inserter(medians), Median);
    return medians;
}

json StepAgainstFloor(int bodies, std::size_t recordedSteps, const std::string& reports) {
    Session session(bodies, recordedSteps, reports);
    Floor::Recording recording;
    session.Step();
    BenchObserve(nullptr);
    const auto medians = Medians({[&] { session.Step(); }, [&] { Floor::Replay(recording.calls); },
                                  [&] { session.AppendToFiles(); }, [&] { session.HandleFiles(); }});
    const double step = medians[0], calls = medians[1], appends = medians[2], files = medians[3];
    return {{"bodies", bodies},
            {"recordedSteps", recordedSteps},
            {"reports", reports},
            {"calls", recording.calls.size()},
            {"argumentBytes", Floor::ArgumentBytes(recording.calls)},
            {"stepSeconds", step},
            {"ratioWithoutFiles", (step - files) / calls},
            {"ratioWithFiles", step / (calls + appends)}};
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
    if (!BenchRegister(true))
        throw std::runtime_error("the bench desktop could not be registered");
    json report;
    for (const int bodies : {1, 10, 100})
        for (const std::size_t recordedSteps : {1u, 100u, 1000u, 10000u})
            for (const char* reports : {"Never", "Automatically"}) {
                std::fprintf(stderr, "%d bodies, %u recorded steps, %s\n", bodies, static_cast<unsigned>(recordedSteps),
                             reports);
                report["step"].push_back(StepAgainstFloor(bodies, recordedSteps, reports));
            }
    report["history"] = HistoryAgainstFloor(10, 10000);
    BenchRegister(false);
    std::cout << report.dump(2) << std::endl;
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "error: %s\n", error.what());
    return 1;
}
