#pragma once

#include "host/app/Ticker.h"
#include "host/core/CoupledRun.h"

#include <chrono>
#include <optional>
#include <string>

namespace kinora::host {

/// How much the program says.
enum class Talk { Quiet, Normal, Verbose };

/// Shows a run: a bar that redraws itself on a terminal, one line per step otherwise. On a terminal a phase or a solve
/// that takes long shows its seconds. Also keeps the records that the closing tables are made of.
class Console : public RunListener {
public:
    /// @param second what counts as a second of what takes long
    Console(const scenario::Scenario& scenario, Talk talk, std::chrono::milliseconds second = std::chrono::seconds(1));
    ~Console() override;

    void OnPhase(const std::string& text) override;
    void OnWarning(const std::string& text) override;
    void OnSolve() override;
    void OnStep(const StepRecord& record) override;

    const std::vector<StepRecord>& Records() const { return m_records; }
    const std::vector<std::string>& Warnings() const { return m_warnings; }

    /// Takes off the screen what redraws itself, so that other text may follow.
    void EndBar();

private:
    void Begin(const char* work);
    void ShowTime(int seconds);
    void Redraw(const std::string& line);
    void EndLine();

    const scenario::Scenario& m_scenario;
    Talk m_talk;
    /// Width of the terminal; 0 when the output is none.
    int m_width = 0;
    bool m_isLineShown = false;
    /// What the step before has left on the line; empty for none.
    std::string m_bar;
    /// What is under way.
    std::string m_work;
    int m_firstStep = -1;
    std::chrono::steady_clock::time_point m_start;
    std::vector<StepRecord> m_records;
    std::vector<std::string> m_warnings;
    /// Only where there is something to show. Last: its thread uses the others.
    std::optional<Ticker> m_ticker;
};

/// Writes to the standard output, or error stream, at once.
void Print(const std::string& text);
void PrintError(const std::string& text);

} // namespace kinora::host
