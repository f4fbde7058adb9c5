#include "host/app/Console.h"

#include "host/app/Terminal.h"
#include "host/core/RunText.h"

#include <cstdio>
#include <fmt/format.h>

namespace kinora::host {

void Print(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

void PrintError(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr);
}

Console::Console(const scenario::Scenario& scenario, Talk talk)
    : m_scenario(scenario), m_talk(talk), m_width(TerminalWidth()) {}

Console::~Console() {
    EndBar();
}

void Console::EndBar() {
    if (m_isBarShown) {
        Print("\n");
    }
    m_isBarShown = false;
}

void Console::OnPhase(const std::string& text) {
    EndBar();
    if (m_talk != Talk::Quiet) {
        Print(text + "\n");
    }
    // The first step's share of the time begins when the last phase before it ends.
    m_start = std::chrono::steady_clock::now();
}

void Console::OnWarning(const std::string& text) {
    EndBar();
    PrintError("warning: " + text + "\n");
    m_warnings.push_back(text);
}

void Console::OnStep(const StepRecord& record) {
    if (m_firstStep < 0) {
        m_firstStep = record.step;
    }
    m_records.push_back(record);
    if (m_talk == Talk::Quiet) {
        return;
    }
    if (m_width == 0 || m_talk == Talk::Verbose) {
        Print(StepLine(m_scenario, record) + "\n");
        return;
    }
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - m_start;
    const std::string line = ProgressLine(m_scenario, record, m_firstStep, elapsed.count(), m_width - 1);
    Print(fmt::format("\r{:<{}}", line, m_width - 1));
    m_isBarShown = true;
}

} // namespace kinora::host
