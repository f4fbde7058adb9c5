#pragma once

#include "host/core/CoupledRun.h"

#include <chrono>
#include <string>

namespace kinora::host {

/// How much the program says.
enum class Talk { Quiet, Normal, Verbose };

/// Shows a run: a bar that redraws itself on a terminal, one line per step otherwise. Also keeps the records that the
/// closing tables are made of.
class Console : public RunListener {
public:
    Console(const scenario::Scenario& scenario, Talk talk);
    ~Console() override;

    void OnPhase(const std::string& text) override;
    void OnWarning(const std::string& text) override;
    void OnStep(const StepRecord& record) override;

    const std::vector<StepRecord>& Records() const { return m_records; }
    const std::vector<std::string>& Warnings() const { return m_warnings; }

    /// Takes the bar off the screen, so that other text may follow.
    void EndBar();

private:
    const scenario::Scenario& m_scenario;
    Talk m_talk;
    /// Width of the terminal; 0 when the output is none.
    int m_width = 0;
    bool m_isBarShown = false;
    int m_firstStep = -1;
    std::chrono::steady_clock::time_point m_start;
    std::vector<StepRecord> m_records;
    std::vector<std::string> m_warnings;
};

/// Writes to the standard output, or error stream, at once.
void Print(const std::string& text);
void PrintError(const std::string& text);

} // namespace kinora::host
