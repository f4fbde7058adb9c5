#include "tests/endtoend/Programs.h"

#include "tests/support/ThisProgram.h"

#include <windows.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace endtoend {
namespace {

/// A handle that is closed once.
class Handle {
public:
    Handle() = default;
    explicit Handle(HANDLE handle) : m_handle(handle) {}
    ~Handle() { Close(); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    HANDLE Get() const { return m_handle; }
    HANDLE* Receive() { return &m_handle; }
    void Close() {
        if (m_handle) {
            CloseHandle(m_handle);
        }
        m_handle = nullptr;
    }

private:
    HANDLE m_handle = nullptr;
};

std::wstring CommandLineOf(const std::filesystem::path& program, const std::vector<std::wstring>& arguments) {
    std::wstring line = L"\"" + program.wstring() + L"\"";
    for (const std::wstring& argument : arguments) {
        line += L" \"" + argument + L"\"";
    }
    return line;
}

/// A child process whose two streams go to a file. (A pipe would stay open as long as a desktop that the child started:
/// under Wine it gets the child's streams.)
class Child {
public:
    Child(const std::filesystem::path& program, const std::vector<std::wstring>& arguments)
        : m_outputFile(m_folder / "output.txt") {
        SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
        const Handle output(CreateFileW(m_outputFile.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                        &inherited, CREATE_ALWAYS, 0, nullptr));
        STARTUPINFOW startup = {};
        startup.cb = sizeof(startup);
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = output.Get();
        startup.hStdError = output.Get();
        PROCESS_INFORMATION process = {};
        std::wstring line = CommandLineOf(program, arguments);
        if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process)) {
            throw std::runtime_error("the program does not start");
        }
        CloseHandle(process.hThread);
        *m_process.Receive() = process.hProcess;
    }

    /// Waits four minutes at most (a busy machine is slow); a program that hangs is ended and answers with the code
    /// 999.
    Outcome Finish() {
        constexpr DWORD longestRunMs = 240000;
        constexpr UINT hangs = 999;
        if (WaitForSingleObject(m_process.Get(), longestRunMs) == WAIT_TIMEOUT) {
            TerminateProcess(m_process.Get(), hangs);
            WaitForSingleObject(m_process.Get(), INFINITE);
        }
        DWORD code = 0;
        GetExitCodeProcess(m_process.Get(), &code);
        Outcome outcome{static_cast<int>(code), Content(m_outputFile)};
        // The program's text streams end lines the Windows way.
        outcome.output.erase(std::remove(outcome.output.begin(), outcome.output.end(), '\r'), outcome.output.end());
        return outcome;
    }

private:
    ScratchFolder m_folder;
    std::filesystem::path m_outputFile;
    Handle m_process;
};

std::string UniqueName() {
    static int count = 0;
    return "kinora-endtoend-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++count);
}

} // namespace

ScratchFolder::ScratchFolder() : m_path(std::filesystem::temp_directory_path() / UniqueName()) {
    std::filesystem::create_directories(m_path);
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

Outcome RunProgram(const std::filesystem::path& program, const std::vector<std::wstring>& arguments) {
    return Child(program, arguments).Finish();
}

Outcome RunHost(const std::vector<std::wstring>& arguments) {
    return RunProgram(fake::BesideThisProgram(L"kinora-run.exe"), arguments);
}

std::filesystem::path Examples() {
    return std::filesystem::u8path(KINORA_SOURCE_DIR) / "examples";
}

std::string Content(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    EXPECT_TRUE(stream.is_open()) << file.u8string();
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::vector<std::string> Lines(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        lines.push_back(line);
    }
    return lines;
}

std::vector<double> Column(const std::filesystem::path& file, const std::string& header) {
    std::vector<double> values;
    std::size_t wanted = std::string::npos;
    for (const std::string& line : Lines(Content(file))) {
        std::istringstream cells(line);
        std::size_t index = 0;
        for (std::string cell; std::getline(cells, cell, ','); ++index) {
            if (wanted == std::string::npos && cell == header) {
                wanted = index;
                break;
            }
            if (index == wanted) {
                values.push_back(std::strtod(cell.c_str(), nullptr));
            }
        }
        if (wanted == std::string::npos) {
            ADD_FAILURE() << file.u8string() << " has no column \"" << header << "\"";
            return values;
        }
    }
    return values;
}

void ExpectNear(const std::vector<double>& actual, const std::vector<double>& expected, double tolerance) {
    ASSERT_EQ(actual.size(), expected.size());
    double largest = 0.0;
    for (const double value : expected) {
        largest = std::fmax(largest, std::fabs(value));
    }
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(actual[i], expected[i], tolerance * largest) << "step " << i;
    }
}

} // namespace endtoend
