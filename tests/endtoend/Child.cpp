#include "tests/endtoend/Child.h"

#include <windows.h>

#include <stdexcept>

namespace endtoend {
namespace {

/// A handle that is closed once.
class Handle {
public:
    explicit Handle(HANDLE handle) : m_handle(handle) {}
    ~Handle() { CloseHandle(m_handle); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    HANDLE Get() const { return m_handle; }

private:
    HANDLE m_handle;
};

std::wstring CommandLineOf(const std::filesystem::path& program, const std::vector<std::string>& arguments) {
    std::wstring line = L"\"" + program.wstring() + L"\"";
    for (const std::string& argument : arguments) {
        line += L" \"" + std::filesystem::u8path(argument).wstring() + L"\"";
    }
    return line;
}

/// @return the process
HANDLE Start(std::wstring line, const std::filesystem::path& output) {
    SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
    const Handle stream(CreateFileW(output.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                                    CREATE_ALWAYS, 0, nullptr));
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = stream.Get();
    startup.hStdError = stream.Get();
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process)) {
        throw std::runtime_error("the program does not start");
    }
    CloseHandle(process.hThread);
    return process.hProcess;
}

} // namespace

int RunChild(const std::filesystem::path& program, const std::vector<std::string>& arguments,
             const std::filesystem::path& output) {
    constexpr DWORD longestRunMs = 240000;
    constexpr UINT hangs = 999;
    const Handle process(Start(CommandLineOf(program, arguments), output));
    if (WaitForSingleObject(process.Get(), longestRunMs) == WAIT_TIMEOUT) {
        TerminateProcess(process.Get(), hangs);
        WaitForSingleObject(process.Get(), INFINITE);
    }
    DWORD code = 0;
    GetExitCodeProcess(process.Get(), &code);
    return static_cast<int>(code);
}

} // namespace endtoend
