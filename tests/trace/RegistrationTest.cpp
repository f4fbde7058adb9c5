// What "vantor-trace register" and "unregister" do to the registry, and what a client gets from the registered server.
//
// Changes the machine's classes: under Wine it runs in a prefix of its own. What was registered before is put back.
#include "trace/app/Registration.h"

#include "tests/support/Processes.h"
#include "tests/support/TestFolder.h"
#include "trace/server/ClassId.h"

#include <windows.h>

#include <objbase.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vector>
#include <winternl.h>

namespace {

using namespace kinora::trace;
using testing::EndsWith;

constexpr const wchar_t* sandbox = L"Software\\KinoraTraceRegistrationTest";
const std::wstring classes = L"Software\\Classes\\";

std::wstring ClassIdText() {
    wchar_t text[40] = {};
    StringFromGUID2(traceClassId, text, 40);
    return text;
}

/// A text in the registry; "none" when it is not there.
std::wstring Read(HKEY root, const std::wstring& key, const wchar_t* name = nullptr) {
    std::vector<wchar_t> text(1024);
    auto bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    const LSTATUS status = RegGetValueW(root, key.c_str(), name, RRF_RT_REG_SZ, nullptr, text.data(), &bytes);
    return status == ERROR_SUCCESS ? text.data() : L"none";
}

bool HasKey(HKEY root, const std::wstring& key) {
    HKEY opened = nullptr;
    const bool isThere = RegOpenKeyExW(root, key.c_str(), 0, KEY_READ, &opened) == ERROR_SUCCESS;
    if (isThere) {
        RegCloseKey(opened);
    }
    return isThere;
}

bool HasServerKeys(HKEY root, const std::wstring& under) {
    return HasKey(root, under + traceProgId) || HasKey(root, under + L"CLSID\\" + ClassIdText());
}

HRESULT Look() {
    CLSID found = {};
    return CLSIDFromProgID(traceProgId, &found);
}

/// The machine's root as a key like others, which stands for another root then; null without the right to write it.
HKEY OpenMachine() {
    using Open = LONG(NTAPI*)(HANDLE*, ACCESS_MASK, OBJECT_ATTRIBUTES*);
    wchar_t name[] = L"\\Registry\\Machine";
    UNICODE_STRING path = {sizeof name - sizeof(wchar_t), sizeof name, name};
    OBJECT_ATTRIBUTES attributes = {};
    attributes.Length = sizeof attributes;
    attributes.ObjectName = &path;
    HANDLE key = nullptr;
    const auto open =
        reinterpret_cast<Open>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtOpenKey")));
    return open(&key, KEY_ALL_ACCESS, &attributes) < 0 ? nullptr : static_cast<HKEY>(key);
}

/// While it lives, one of the registry's roots is another key.
class Redirection {
public:
    Redirection(HKEY root, HKEY target) : m_root(root) { EXPECT_EQ(RegOverridePredefKey(root, target), ERROR_SUCCESS); }
    ~Redirection() { RegOverridePredefKey(m_root, nullptr); }
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;

private:
    HKEY m_root;
};

class TraceRegistration : public testing::Test {
protected:
    TraceRegistration() : m_wasRegistered(SUCCEEDED(Look())) {
        CoInitialize(nullptr);
        UnregisterServer();
        RegCreateKeyExW(HKEY_CURRENT_USER, sandbox, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &m_sandbox, nullptr);
    }
    ~TraceRegistration() override {
        RegCloseKey(m_sandbox);
        RegDeleteTreeW(HKEY_CURRENT_USER, sandbox);
        UnregisterServer();
        if (m_wasRegistered) {
            RegisterServer();
        }
        CoUninitialize();
    }

    HKEY Sandbox() const { return m_sandbox; }

private:
    bool m_wasRegistered;
    HKEY m_sandbox = nullptr;
};

TEST_F(TraceRegistration, LeadsToTheServerBesideTheProgram) {
    const RegistrationResult result = RegisterServer();
    ASSERT_TRUE(result.succeeded);
    const std::wstring server = L"CLSID\\" + ClassIdText() + L"\\InprocServer32";
    EXPECT_EQ(Read(HKEY_CLASSES_ROOT, server), fake::BesideThisProgram(L"vantor-trace-server.dll"));
    EXPECT_EQ(Read(HKEY_CLASSES_ROOT, server, L"ThreadingModel"), L"Both");
    EXPECT_EQ(Read(HKEY_CLASSES_ROOT, traceProgId + std::wstring(L"\\CLSID")), ClassIdText());
    EXPECT_EQ(Look(), S_OK);
    // Once more changes nothing.
    EXPECT_TRUE(RegisterServer().succeeded);
    EXPECT_EQ(Look(), S_OK);
}

TEST_F(TraceRegistration, IsTakenBackWholeAndAlone) {
    const std::wstring neighbour = L"Pellux.VantorDesktop.TraceNeighbour";
    ASSERT_TRUE(RegisterServer().succeeded);
    const HKEY root = HasServerKeys(HKEY_LOCAL_MACHINE, classes) ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
    RegSetKeyValueW(root, (classes + neighbour).c_str(), nullptr, REG_SZ, L"x", 4);
    const RegistrationResult result = UnregisterServer();
    EXPECT_TRUE(result.succeeded);
    EXPECT_THAT(result.text, EndsWith(L"Unregistered Pellux.VantorDesktop.Trace.\n"));
    EXPECT_EQ(Look(), CO_E_CLASSSTRING);
    EXPECT_FALSE(HasServerKeys(HKEY_CLASSES_ROOT, L""));
    EXPECT_EQ(Read(root, classes + neighbour), L"x");
    RegDeleteTreeW(root, (classes + neighbour).c_str());
    EXPECT_TRUE(UnregisterServer().succeeded) << "there is nothing to take back";
}

TEST_F(TraceRegistration, IsTheUsersOwnWhereTheMachinesDoesNotCount) {
    const HKEY machine = OpenMachine();
    if (!machine) {
        GTEST_SKIP() << "needs the right to write the machine's classes";
    }
    {
        // The user's part of the registry counts for clients, and what is written for the machine is lost.
        const Redirection user(HKEY_CURRENT_USER, machine);
        const Redirection lost(HKEY_LOCAL_MACHINE, Sandbox());
        const RegistrationResult result = RegisterServer();
        EXPECT_TRUE(result.succeeded);
        EXPECT_EQ(result.text, L"Registered Pellux.VantorDesktop.Trace for this user.\n"
                               L"Next: set KINORA_VELTRIX_VTDK_VERSION=Trace\n"
                               L"and, to trace the simulator: set VANTOR_TRACE_TARGET=Simulator\n");
        EXPECT_EQ(Look(), S_OK);
        EXPECT_FALSE(HasServerKeys(Sandbox(), classes));
        EXPECT_TRUE(UnregisterServer().succeeded);
        EXPECT_EQ(Look(), CO_E_CLASSSTRING);
    }
    RegCloseKey(machine);
}

TEST_F(TraceRegistration, SaysWhenItCannotBeMade) {
    const Redirection user(HKEY_CURRENT_USER, Sandbox());
    const Redirection machine(HKEY_LOCAL_MACHINE, Sandbox());
    const RegistrationResult result = RegisterServer();
    EXPECT_FALSE(result.succeeded);
    EXPECT_EQ(result.text, L"The registry cannot be written: run this as a user who may.\n");
    EXPECT_FALSE(HasServerKeys(Sandbox(), classes)) << "half a registration is left";
}

/// A client of the registered server, in this process.
class TraceServer : public TraceRegistration {
protected:
    TraceServer() {
        SetEnvironmentVariableW(L"VANTOR_TRACE_DIR", m_folder.Path().c_str());
        EXPECT_TRUE(RegisterServer().succeeded);
    }
    ~TraceServer() override {
        SetEnvironmentVariableW(L"VANTOR_TRACE_DIR", nullptr);
        SetEnvironmentVariableW(L"VANTOR_TRACE_TARGET", nullptr);
    }

    static HRESULT CreateDesktop(const wchar_t* target) {
        SetEnvironmentVariableW(L"VANTOR_TRACE_TARGET", target);
        IDispatch* application = reinterpret_cast<IDispatch*>(1);
        const HRESULT code = CoCreateInstance(traceClassId, nullptr, CLSCTX_SERVER, IID_IDispatch,
                                              reinterpret_cast<void**>(&application));
        EXPECT_EQ(application, nullptr);
        return code;
    }

private:
    fake::TestFolder m_folder;
};

TEST_F(TraceServer, PassesOnThatThereIsNoDesktop) {
    EXPECT_EQ(CreateDesktop(nullptr), CO_E_CLASSSTRING);
    EXPECT_EQ(CreateDesktop(L"NoSuchVersion"), CO_E_CLASSSTRING);
}

TEST_F(TraceServer, DoesNotTraceItself) {
    EXPECT_EQ(CreateDesktop(L"Trace"), E_INVALIDARG);
}

TEST_F(TraceServer, CannotBePartOfAnotherObject) {
    IClassFactory* factory = nullptr;
    ASSERT_EQ(CoGetClassObject(traceClassId, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                               reinterpret_cast<void**>(&factory)),
              S_OK);
    void* object = factory;
    EXPECT_EQ(factory->CreateInstance(factory, IID_IUnknown, &object), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IDispatch, nullptr), E_POINTER);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    factory->Release();
}

} // namespace
