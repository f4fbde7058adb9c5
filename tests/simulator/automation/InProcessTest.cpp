// The class object of the desktop that a process has for itself, without a registration.
#include "simulator/automation/InProcess.h"

#include "simulator/automation/ClassIds.h"
#include "tests/simulator/automation/Automation.h"

#include <gtest/gtest.h>
#include <thread>

using namespace calls;
using namespace vantor::automation;

namespace {

constexpr const wchar_t* option = L"Desktop\\Settings\\ProjectOptions\\Veltrix 3D\\UpdateReportsOnSolve";

IClassFactory* Factory() {
    void* factory = nullptr;
    EXPECT_EQ(GetInProcessClassObject(inProcessClassId, IID_IClassFactory, &factory), S_OK);
    return static_cast<IClassFactory*>(factory);
}

Object NewDesktop() {
    IClassFactory* factory = Factory();
    void* application = nullptr;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IDispatch, &application), S_OK);
    factory->Release();
    const Object owner(static_cast<IDispatch*>(application));
    return CallObject(owner.Get(), L"GetAppDesktop", {});
}

std::wstring Option(const Object& desktop) {
    const Variant value = Call(desktop.Get(), L"GetRegistryString", {Text(option)});
    return value.vt == VT_BSTR ? value.bstrVal : L"none";
}

} // namespace

TEST(InProcess, GivesTheClassObjectOfItsOwnClassOnly) {
    void* result = &result;
    EXPECT_EQ(GetInProcessClassObject(simulatorClassId, IID_IClassFactory, &result), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(result, nullptr);
    result = &result;
    EXPECT_EQ(GetInProcessClassObject(inProcessClassId, IID_IDispatch, &result), E_NOINTERFACE);
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(GetInProcessClassObject(inProcessClassId, IID_IClassFactory, nullptr), E_POINTER);
    EXPECT_FALSE(IsInProcessClassInUse()) << "nothing was handed out yet";
    Factory()->Release();
    EXPECT_TRUE(IsInProcessClassInUse());
}

TEST(InProcess, RefusesWhatNoClassObjectDoes) {
    IClassFactory* factory = Factory();
    void* result = &result;
    EXPECT_EQ(factory->CreateInstance(factory, IID_IUnknown, &result), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IClassFactory, &result), E_NOINTERFACE);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IDispatch, nullptr), E_POINTER);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    factory->Release();
}

TEST(InProcess, BeginsAnotherDesktopAfterAQuit) {
    const Object desktop = NewDesktop();
    EXPECT_EQ(Option(desktop), L"Automatically");
    Call(desktop.Get(), L"SetRegistryString", {Text(option), Text(L"Never")});
    EXPECT_EQ(Option(NewDesktop()), L"Never") << "one desktop for all clients";
    Call(desktop.Get(), L"QuitApplication", {});
    const Object next = NewDesktop();
    EXPECT_EQ(Option(next), L"Automatically");
    EXPECT_EQ(Option(desktop), L"Never") << "those who are still there keep their own";
    Call(desktop.Get(), L"QuitApplication", {});
    Call(next.Get(), L"SetRegistryString", {Text(option), Text(L"On Completion")});
    EXPECT_EQ(Option(NewDesktop()), L"On Completion") << "the quit of the old one does not touch the new one";
    Call(next.Get(), L"QuitApplication", {});
}

TEST(InProcess, StandsClientsThatComeAndQuitAtOnce) {
    const auto work = [] {
        for (int i = 0; i < 200; ++i) {
            const Object desktop = NewDesktop();
            const Object project = CallObject(desktop.Get(), L"NewProject", {});
            Call(desktop.Get(), L"QuitApplication", {});
            // Alive, or closed by the other's quit; never anything else.
            const Outcome name = Try(project.Get(), L"GetName", {});
            EXPECT_TRUE(name.status == S_OK || name.scode == static_cast<SCODE>(0x8004000D)) << name.status;
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(Try(NewDesktop().Get(), L"QuitApplication", {}).status, S_OK);
}
