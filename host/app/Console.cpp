#include "host/app/Console.h"

#include "host/app/Terminal.h"
#include "host/core/RunText.h"
#include "programs/Print.h"

#include <algorithm>
#include <fmt/format.h>

namespace kinora::host {

void Print(const std::string& text) {
    programs::Print(stdout, text);
}

void PrintError(const std::string& text) {
    programs::Print(stderr, text);
}

Console::Console(const scenario::Scenario& scenario, Talk talk, std::chrono::milliseconds second)
    : m_scenario(scenario), m_talk(talk), m_width(TerminalWidth()) {
    if (m_width > 0 && m_talk != Talk::Quiet) {
        m_ticker.emplace(second, [this](int seconds) { ShowTime(seconds); });
    }
}

Console::~Console() {
    EndBar();
}

void Console::EndBar() {
    if (m_ticker) {
        m_ticker->End();
    }
    EndLine();
}

void Console::EndLine() {
    if (!m_isLineShown) {
        return;
    }
    Redraw(m_bar);
    Print(m_bar.empty() ? "\r" : "\n");
    m_bar.clear();
    m_isLineShown = false;
}

void Console::Redraw(const std::string& line) {
    m_width = std::max(1, TerminalWidth()); // windows change their size
    // Blanks are as wide everywhere, other characters are not.
    Print(fmt::format("\r{:{}}\r{}", "", m_width - 1, CutToColumns(line, m_width - 1)));
    m_isLineShown = true;
}

void Console::ShowTime(int seconds) {
    Redraw(WorkingLine(m_bar, m_work, seconds, m_width - 1));
}

void Console::Begin(const char* work) {
    if (m_ticker) {
        m_ticker->End();
        m_work = work;
        m_ticker->Begin();
    }
}

void Console::OnPhase(const std::string& text) {
    EndBar();
    if (m_talk != Talk::Quiet) {
        Print(text + "\n");
    }
    // The first step's share of the time begins when the last phase before it ends.
    m_start = std::chrono::steady_clock::now();
    Begin("working");
}

void Console::OnWarning(const std::string& text) {
    const auto show = [&] {
        EndLine();
        PrintError("warning: " + text + "\n");
    };
    if (m_ticker) {
        m_ticker->Between(show);
    } else {
        show();
    }
    m_warnings.push_back(text);
}

void Console::OnSolve() {
    Begin("solving");
}

void Console::OnStep(const StepRecord& record) {
    if (m_firstStep < 0) {
        m_firstStep = record.step;
    }
    m_records.push_back(record);
    if (m_talk == Talk::Quiet) {
        return;
    }
    if (m_ticker) {
        m_ticker->End();
    }
    if (m_width == 0 || m_talk == Talk::Verbose) {
        EndLine();
        Print(StepLine(m_scenario, record) + "\n");
        return;
    }
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - m_start;
    m_bar = ProgressLine(m_scenario, record, m_firstStep, elapsed.count(), m_width - 1);
    Redraw(m_bar);
}

} // namespace kinora::host
