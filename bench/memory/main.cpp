// The memory that a step takes while it runs, against the size of its history argument.
// Writes a JSON object to standard output.

#include "bench/desktop/BenchDesktop.h"
#include "bench/memory/LiveBytes.h"
#include "bench/step/Floor.h"
#include "bench/step/Session.h"

#include <cstdio>
#include <cwchar>
#include <exception>
#include <iostream>
#include <nlohmann/json.hpp>

namespace {

/// They make 61 values a row.
constexpr int bodies = 10;
constexpr std::size_t recordedSteps = 10000;

std::size_t liveInHistoryCall = 0;

void LookAtHistoryCall(IDispatch*, const wchar_t* method, const DISPPARAMS&) {
    if (std::wcscmp(method, L"EditSetup") == 0) {
        liveInHistoryCall = LiveBytes();
    }
}

/// A step is at its largest when the history, all of it built, is on its way.
std::size_t PeakOfStep(Session& session) {
    const std::size_t before = LiveBytes();
    BenchObserve(LookAtHistoryCall);
    session.Step();
    BenchObserve(nullptr);
    return liveInHistoryCall - before;
}

std::size_t HistoryArgumentBytes(Session& session) {
    Floor::Recording recording;
    session.WriteHistory();
    return Floor::ArgumentBytes(recording.calls);
}

} // namespace

int main() try {
    if (!BenchRegister(true)) {
        throw std::runtime_error("the bench desktop could not be registered");
    }
    {
        Session session(bodies, recordedSteps, "Automatically");
        const std::size_t peak = PeakOfStep(session), argument = HistoryArgumentBytes(session);
        const nlohmann::json report = {{"bodies", bodies},
                                       {"recordedSteps", recordedSteps},
                                       {"argumentBytes", argument},
                                       {"peakBytes", peak},
                                       {"ratio", static_cast<double>(peak) / static_cast<double>(argument)}};
        std::cout << report.dump(2) << std::endl;
    }
    BenchRegister(false);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "error: %s\n", error.what());
    return 1;
}
