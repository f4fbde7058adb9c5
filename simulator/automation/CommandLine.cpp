#include "simulator/automation/CommandLine.h"

#include "programs/Utf.h"
#include "simulator/model/Text.h"

#include <algorithm>
#include <cmath>
#include <cwctype>

namespace vantor::automation {
namespace {

/// A switch without its mark, in lower case; empty for anything else.
std::wstring SwitchName(const std::wstring& argument) {
    std::size_t mark = 0;
    if (argument.rfind(L"--", 0) == 0) {
        mark = 2;
    } else if (!argument.empty() && (argument[0] == L'/' || argument[0] == L'-')) {
        mark = 1;
    }
    if (mark == 0) {
        return {};
    }
    std::wstring name = argument.substr(mark);
    std::transform(name.begin(), name.end(), name.begin(),
                   [](wchar_t c) { return static_cast<wchar_t>(std::towlower(c)); });
    return name;
}

/// Finite numbers between commas; none when there is anything else.
std::vector<double> Numbers(const std::wstring& text) {
    std::vector<double> numbers;
    for (const std::string& part : model::Split(kinora::programs::Utf8FromWide(text), ',')) {
        if (!model::ParseNumber(part, numbers.emplace_back())) {
            return {};
        }
    }
    return numbers;
}

/// Takes the arguments one after the other.
class Parser {
public:
    explicit Parser(const std::vector<std::wstring>& arguments) : m_arguments(arguments) {}

    CommandLine Run() {
        while (m_line.task != CommandLine::Task::Bad && m_next < m_arguments.size()) {
            Take(m_arguments[m_next++]);
        }
        CheckTask();
        return m_line;
    }

private:
    void Fail(const std::wstring& problem) {
        m_line.task = CommandLine::Task::Bad;
        m_line.problem = problem;
    }

    bool TakeValue(const wchar_t* what, std::wstring& value) {
        if (m_next >= m_arguments.size()) {
            Fail(std::wstring(what) + L" is missing");
            return false;
        }
        value = m_arguments[m_next++];
        return true;
    }

    void Take(const std::wstring& argument) {
        const std::wstring name = SwitchName(argument);
        if (name == L"regserver") {
            m_line.task = CommandLine::Task::Register;
        } else if (name == L"unregserver") {
            m_line.task = CommandLine::Task::Unregister;
        } else if (name == L"default") {
            m_line.alsoDefault = true;
        } else if (name == L"embedding") {
            m_line.task = CommandLine::Task::Serve;
            m_line.isEmbedded = true;
        } else if (name == L"idle") {
            TakeIdleTime();
        } else if (name == L"updatereports") {
            TakeUpdateReports();
        } else if (name == L"list") {
            m_line.task = CommandLine::Task::List;
            TakeValue(L"the project file of --list", m_line.project);
        } else if (name == L"export-fields") {
            m_line.task = CommandLine::Task::ExportFields;
            if (TakeValue(L"the project file of --export-fields", m_line.project)) {
                TakeValue(L"the output file of --export-fields", m_line.output);
            }
        } else if (name == L"full") {
            m_line.isFull = true;
        } else if (name == L"grid") {
            TakeGrid();
        } else if (name == L"box") {
            TakeBox();
        } else if (name != L"help" && name != L"h" && name != L"?") {
            Fail(L"unknown argument " + argument);
        }
    }

    void TakeUpdateReports() {
        std::wstring text;
        if (TakeValue(L"the value of /UpdateReports", text)) {
            m_line.updateReports = kinora::programs::Utf8FromWide(text);
        }
    }

    void TakeIdleTime() {
        std::wstring text;
        if (!TakeValue(L"the number of seconds of /Idle", text)) {
            return;
        }
        const bool digits = !text.empty() && text.size() <= 6 &&
                            std::all_of(text.begin(), text.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; });
        if (!digits) {
            Fail(L"/Idle needs a whole number of seconds, not " + text);
            return;
        }
        m_line.idleTime = std::chrono::seconds(std::stoi(text));
        if (m_line.task == CommandLine::Task::Help) {
            m_line.task = CommandLine::Task::Serve;
        }
    }

    void TakeGrid() {
        std::wstring text;
        if (!TakeValue(L"the value of --grid", text)) {
            return;
        }
        const std::vector<double> numbers = Numbers(text);
        const auto isCount = [](double n) { return n >= 2 && n <= analysis::mostFieldPoints && n == std::floor(n); };
        if (numbers.size() != 3 || !std::all_of(numbers.begin(), numbers.end(), isCount) ||
            numbers[0] * numbers[1] * numbers[2] > analysis::mostFieldPoints) {
            Fail(L"--grid needs the numbers of points along x, y and z as nx,ny,nz, 2 or more each and " +
                 std::to_wstring(analysis::mostFieldPoints) + L" in all at most, not " + text);
            return;
        }
        std::array<int, 3>& points = m_line.grid.points.emplace();
        std::transform(numbers.begin(), numbers.end(), points.begin(), [](double n) { return static_cast<int>(n); });
    }

    void TakeBox() {
        std::wstring text;
        if (!TakeValue(L"the value of --box", text)) {
            return;
        }
        const std::vector<double> numbers = Numbers(text);
        if (numbers.size() != 6 || numbers[0] >= numbers[3] || numbers[1] >= numbers[4] || numbers[2] >= numbers[5]) {
            Fail(L"--box needs two corners in metres, the lower one first, as x0,y0,z0,x1,y1,z1, not " + text);
            return;
        }
        m_line.grid.box = model::Box{{numbers[0], numbers[1], numbers[2]}, {numbers[3], numbers[4], numbers[5]}};
    }

    /// Options that another task, or none, has.
    void CheckTask() {
        if (m_line.task == CommandLine::Task::Bad) {
            return;
        }
        if (m_line.isFull && m_line.task != CommandLine::Task::List) {
            Fail(L"--full belongs to --list");
        } else if ((m_line.grid.points || m_line.grid.box) && m_line.task != CommandLine::Task::ExportFields) {
            Fail(L"--grid and --box belong to --export-fields");
        }
    }

    const std::vector<std::wstring>& m_arguments;
    std::size_t m_next = 0;
    CommandLine m_line;
};

} // namespace

CommandLine ParseCommandLine(const std::vector<std::wstring>& arguments) {
    return Parser(arguments).Run();
}

const wchar_t* UsageText() {
    return L"vantor-sim: simulator of the QUORIX Vantor Desktop\n"
           L"  vantor-sim /RegServer [/Default]        register; /Default takes the desktop's own ProgID if it is "
           L"free\n"
           L"                                          also registers vantor-sim-inprocess.dll beside it, which lives "
           L"in\n"
           L"                                          its client's process\n"
           L"  vantor-sim /UnregServer                 take the registration back\n"
           L"  vantor-sim -Embedding [/Idle SECONDS] [/UpdateReports VALUE]\n"
           L"                                          serve clients (the system starts it so)\n"
           L"  vantor-sim --list PROJECT [--full]      print a project; --full: every row of its history\n"
           L"  vantor-sim --export-fields PROJECT FILE.vtu [--grid NX,NY,NZ] [--box X0,Y0,Z0,X1,Y1,Z1]\n"
           L"                                          write the fields H and B of the last solved state for a VTK "
           L"viewer,\n"
           L"                                          at so many points of a box (metres)\n";
}

} // namespace vantor::automation
