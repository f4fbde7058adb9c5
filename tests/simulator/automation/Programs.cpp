#include "tests/simulator/automation/Programs.h"

#include <objbase.h>

#include <gtest/gtest.h>

namespace calls {

using namespace std::chrono_literals;

OutputPipe::OutputPipe() {
    EXPECT_TRUE(CreatePipe(&m_read, &m_write, nullptr, 0));
    SetHandleInformation(m_write, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
}

OutputPipe::~OutputPipe() {
    CloseHandle(m_read);
    CloseWriteEnd();
}

std::string OutputPipe::ReadToTheEnd() {
    CloseWriteEnd();
    std::string text;
    char buffer[4096];
    DWORD count = 0;
    while (ReadFile(m_read, buffer, sizeof(buffer), &count, nullptr) && count > 0) {
        text.append(buffer, count);
    }
    return text;
}

void OutputPipe::CloseWriteEnd() {
    if (m_write) {
        CloseHandle(m_write);
    }
    m_write = nullptr;
}

Process::Process(std::wstring commandLine, HANDLE output) {
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    if (output) {
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = output;
        startup.hStdError = output;
    }
    const BOOL inherits = output != nullptr ? TRUE : FALSE;
    EXPECT_TRUE(CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, inherits, 0, nullptr, nullptr, &startup,
                               &m_information));
}

Process::~Process() {
    // A server that is killed leaves its registration behind in some systems and blocks the next one: it may leave by
    // itself.
    if (!EndsWithin(15s)) {
        Kill();
    }
    CloseHandle(m_information.hThread);
    CloseHandle(m_information.hProcess);
}

bool Process::EndsWithin(std::chrono::milliseconds time) const {
    return WaitForSingleObject(m_information.hProcess, static_cast<DWORD>(time.count())) == WAIT_OBJECT_0;
}

DWORD Process::ExitCode() const {
    DWORD code = 0;
    GetExitCodeProcess(m_information.hProcess, &code);
    return code;
}

void Process::Kill() const {
    TerminateProcess(m_information.hProcess, 99);
}

std::wstring SimulatorPath() {
    return fake::BesideThisProgram(L"vantor-sim.exe");
}

DWORD RunSimulator(const std::wstring& arguments) {
    const Process process(L"\"" + SimulatorPath() + L"\" " + arguments);
    EXPECT_TRUE(process.EndsWithin(20s));
    return process.ExitCode();
}

bool IsClassRegistered(const wchar_t* progId) {
    CLSID classId = {};
    return SUCCEEDED(CLSIDFromProgID(progId, &classId));
}

Object NewDesktop(const wchar_t* progId) {
    CLSID classId = {};
    EXPECT_EQ(CLSIDFromProgID(progId, &classId), S_OK);
    IDispatch* application = nullptr;
    const HRESULT status =
        CoCreateInstance(classId, nullptr, CLSCTX_SERVER, IID_IDispatch, reinterpret_cast<void**>(&application));
    EXPECT_EQ(status, S_OK);
    const Object owner(application);
    return application != nullptr ? CallObject(application, L"GetAppDesktop", {}) : Object();
}

int ProjectCount(const Object& desktop) {
    const Object projects = CallObject(desktop.Get(), L"GetProjects", {});
    return Call(projects.Get(), L"Count", {}).lVal;
}

std::vector<std::wstring> Messages(const Object& desktop) {
    const Variant list = Call(desktop.Get(), L"GetMessages", {Text(L""), Text(L""), Int(0)});
    std::vector<std::wstring> texts;
    LONG last = -1;
    if (list.vt != (VT_ARRAY | VT_VARIANT) || FAILED(SafeArrayGetUBound(list.parray, 1, &last))) {
        return texts;
    }
    for (LONG i = 0; i <= last; ++i) {
        Variant element;
        SafeArrayGetElement(list.parray, &i, &element);
        texts.emplace_back(element.bstrVal, SysStringLen(element.bstrVal));
    }
    return texts;
}

} // namespace calls
