#include "tests/support/Processes.h"

#include "programs/Environment.h"

#include <chrono>
#include <gtest/gtest.h>
#include <ios>
#include <thread>
#include <tlhelp32.h>
#include <utility>
#include <vector>

namespace fake {
namespace {

using namespace std::chrono_literals;

constexpr DWORD noExitCode = ~0UL;

/// A handle that the caller closes; null when the program does not start.
HANDLE Start(std::wstring commandLine) {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr, nullptr,
                       &startup, &process) == FALSE) {
        return nullptr;
    }
    CloseHandle(process.hThread);
    return process.hProcess;
}

/// Ends a service and waits until it has ended, five seconds at most.
void StopService(const wchar_t* name) {
    const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT);
    const SC_HANDLE service = OpenServiceW(manager, name, SERVICE_STOP | SERVICE_QUERY_STATUS);
    SERVICE_STATUS status{};
    ControlService(service, SERVICE_CONTROL_STOP, &status);
    for (int wait = 0; wait < 250 && status.dwCurrentState != SERVICE_STOPPED; ++wait) {
        std::this_thread::sleep_for(20ms);
        QueryServiceStatus(service, &status);
    }
    CloseServiceHandle(service);
    CloseServiceHandle(manager);
}

/// Wine keeps offering a server that was killed until the service that knows it starts anew, as it does when it is
/// wanted.
void ForgetDeadServers() {
    if (kinora::programs::IsWine()) {
        StopService(L"rpcss");
    }
}

/// In the steps of `CoCreateInstance`, which lets go of the class factory as soon as the object is there. Wine's server
/// side then waits for the end of the call that made the object; when that call ends between the look at it and the
/// wait, nobody ends the wait, and the client stands still. So the factory is let go of when the call is long over.
HRESULT CreateSimulator(IDispatch** application) {
    CLSID classId{};
    CLSIDFromProgID(L"Pellux.VantorDesktop.Simulator", &classId);
    IClassFactory* factory = nullptr;
    HRESULT outcome =
        CoGetClassObject(classId, CLSCTX_LOCAL_SERVER, nullptr, IID_IClassFactory, reinterpret_cast<void**>(&factory));
    if (SUCCEEDED(outcome)) {
        outcome = factory->CreateInstance(nullptr, IID_IDispatch, reinterpret_cast<void**>(application));
        std::this_thread::sleep_for(100ms);
        factory->Release();
    }
    return outcome;
}

} // namespace

ChildProcess::ChildProcess(std::wstring commandLine) : m_process(Start(std::move(commandLine))) {
    EXPECT_NE(m_process, nullptr) << "a program does not start";
}

ChildProcess::~ChildProcess() {
    Kill();
    if (m_process) {
        CloseHandle(m_process);
    }
}

bool ChildProcess::EndsWithin(DWORD milliseconds) const {
    return m_process == nullptr || WaitForSingleObject(m_process, milliseconds) == WAIT_OBJECT_0;
}

void ChildProcess::Kill() const {
    if (!EndsWithin(0)) {
        TerminateProcess(m_process, 99);
        WaitForSingleObject(m_process, 5000);
    }
}

DWORD ChildProcess::ExitCode() const {
    DWORD code = noExitCode;
    if (m_process) {
        GetExitCodeProcess(m_process, &code);
    }
    return code;
}

DWORD RunProgram(const std::wstring& commandLine) {
    const ChildProcess child(commandLine);
    return child.EndsWithin(30000) ? child.ExitCode() : noExitCode;
}

SimulatorServer::~SimulatorServer() {
    Kill();
    ForgetDeadServers();
}

std::set<DWORD> SimulatorServer::Running() {
    std::set<DWORD> ids;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32FirstW(snapshot, &entry); more != FALSE; more = Process32NextW(snapshot, &entry)) {
        if (std::wstring(entry.szExeFile) == L"vantor-sim.exe") {
            ids.insert(entry.th32ProcessID);
        }
    }
    CloseHandle(snapshot);
    return ids;
}

void SimulatorServer::Kill() {
    for (const DWORD id : Running()) {
        if (m_others.count(id) == 0) {
            const HANDLE process = OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id);
            TerminateProcess(process, 99);
            WaitForSingleObject(process, 5000);
            CloseHandle(process);
        }
    }
}

IDispatch* SimulatorServer::Connect() {
    HRESULT outcome = S_OK;
    for (int attempt = 0; attempt < 15; ++attempt) {
        if (attempt % 3 == 0) {
            Restart(attempt > 0);
        }
        IDispatch* application = nullptr;
        outcome = CreateSimulator(&application);
        if (SUCCEEDED(outcome)) {
            return application;
        }
        std::this_thread::sleep_for(500ms);
    }
    ADD_FAILURE() << "no simulator answers: " << std::hex << outcome;
    return nullptr;
}

/// Starts a simulator by hand: Wine waits for a whole second when it starts a server itself.
void SimulatorServer::Restart(bool isAfterAFailure) {
    if (isAfterAFailure) {
        Kill();
        ForgetDeadServers();
    }
    const HANDLE simulator = Start(L"\"" + Path() + L"\" -Embedding");
    if (simulator) {
        CloseHandle(simulator);
    }
    std::this_thread::sleep_for(300ms);
}

} // namespace fake
