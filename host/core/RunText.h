#pragma once

#include "host/core/CoupledRun.h"
#include "host/core/RunResults.h"

#include <string>
#include <vector>

namespace kinora::host {

/// What the program prints, as text; nothing here knows a terminal.

/// One step in one line: number, time, force of every body, coordinate of every free joint.
std::string StepLine(const scenario::Scenario& scenario, const StepRecord& record);

/// The beginning of a text that fits into so many columns of whatever terminal. What some of them draw over two columns
/// counts two, what some draw over the character before it one.
std::string CutToColumns(const std::string& text, int columns);

/// What is shown while something takes long: "solving, 3 s", behind the end of the bar where there is one.
/// @param bar  a ProgressLine, or empty
std::string WorkingLine(const std::string& bar, const std::string& work, int seconds, int width);

/// A progress bar with percentage, time left and the present forces, cut to a width.
/// @param elapsedSeconds  since the first of this run's steps began
/// @param firstStep       the first step of this run (not 0 when resumed)
std::string ProgressLine(const scenario::Scenario& scenario, const StepRecord& record, int firstStep,
                         double elapsedSeconds, int width);

/// Forces and torques over time, a row per step; of a long run at most `maxRows` evenly spread ones.
std::string LoadTable(const scenario::Scenario& scenario, const std::vector<StepRecord>& records, std::size_t maxRows);

/// The energy books of every free joint; empty when there is none.
std::string EnergyTable(const scenario::Scenario& scenario, const StepRecord& last);

/// The results by name, with their units; empty when none are wanted.
std::string ResultTable(const std::vector<RunResult>& results);

/// Where the files are; only those that exist.
std::string FileList(const scenario::Scenario& scenario);

/// The model that the scenario describes, for --dry-run.
std::string ModelText(const scenario::Scenario& scenario);

/// A failed operation with the desktop's messages by severity and what to try.
std::string FailureText(const OperationFailed& failure);

} // namespace kinora::host
