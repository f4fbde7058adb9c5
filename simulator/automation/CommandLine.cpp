#include "simulator/automation/CommandLine.h"

#include <algorithm>
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

/// Takes the arguments one after the other.
class Parser {
public:
    explicit Parser(const std::vector<std::wstring>& arguments) : m_arguments(arguments) {}

    CommandLine Run() {
        while (m_line.task != CommandLine::Task::Bad && m_next < m_arguments.size()) {
            Take(m_arguments[m_next++]);
        }
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
            TakeValue(L"the value of /UpdateReports", m_line.updateReports);
        } else if (name == L"list") {
            m_line.task = CommandLine::Task::List;
            TakeValue(L"the project file of --list", m_line.project);
        } else if (name == L"export-fields") {
            m_line.task = CommandLine::Task::ExportFields;
            if (TakeValue(L"the project file of --export-fields", m_line.project)) {
                TakeValue(L"the output file of --export-fields", m_line.output);
            }
        } else if (name != L"help" && name != L"h" && name != L"?") {
            Fail(L"unknown argument " + argument);
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
           L"  vantor-sim /UnregServer                 take the registration back\n"
           L"  vantor-sim -Embedding [/Idle SECONDS] [/UpdateReports VALUE]\n"
           L"                                          serve clients (the system starts it so)\n"
           L"  vantor-sim --list PROJECT               print a project\n"
           L"  vantor-sim --export-fields PROJECT FILE.vtu\n"
           L"                                          write the H field of the last solved state for a VTK viewer\n";
}

} // namespace vantor::automation
