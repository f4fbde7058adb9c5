// The thread's initialisation, and the way from a class's name to an object.

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>

#include <functional>
#include <gtest/gtest.h>
#include <thread>

namespace {

constexpr CLSID unknownClass = {0x3F2B1C00, 0x7A41, 0x4D5E, {0x8C, 0x12, 0x5B, 0x90, 0x77, 0x61, 0x0E, 0xD4}};

/// Every thread begins without initialisation.
void OnThreadOfItsOwn(const std::function<void()>& work) {
    std::thread(work).join();
}

/// @return what one more initialisation answers, which is taken back
HRESULT ProbeInitialisation(DWORD kind) {
    const HRESULT answer = CoInitializeEx(nullptr, kind);
    if (SUCCEEDED(answer)) {
        CoUninitialize();
    }
    return answer;
}

HRESULT Create(const CLSID& objectClass, DWORD context) {
    int marker = 0;
    void* object = &marker;
    const HRESULT answer = CoCreateInstance(objectClass, nullptr, context, IID_IDispatch, &object);
    EXPECT_EQ(object, nullptr);
    return answer;
}

TEST(Apartment, IsInitialisedOnceAndCountedAfterwards) {
    OnThreadOfItsOwn([] {
        EXPECT_EQ(CoInitialize(nullptr), S_OK);
        EXPECT_EQ(CoInitialize(nullptr), S_FALSE);
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_FALSE);
        CoUninitialize();
        CoUninitialize();
        EXPECT_EQ(ProbeInitialisation(COINIT_APARTMENTTHREADED), S_FALSE) << "one is left";
        CoUninitialize();
        EXPECT_EQ(ProbeInitialisation(COINIT_APARTMENTTHREADED), S_OK);
    });
}

TEST(Apartment, StaysOfItsKindUntilTheLastEnd) {
    OnThreadOfItsOwn([] {
        EXPECT_EQ(CoInitialize(nullptr), S_OK);
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
        CoUninitialize();
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK) << "the refused one was not counted";
        EXPECT_EQ(CoInitialize(nullptr), RPC_E_CHANGED_MODE);
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_FALSE);
        CoUninitialize();
        CoUninitialize();
        EXPECT_EQ(ProbeInitialisation(COINIT_APARTMENTTHREADED), S_OK);
    });
}

TEST(Apartment, TellsItsKind) {
    OnThreadOfItsOwn([] {
        APTTYPE type = APTTYPE_CURRENT;
        APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
        EXPECT_EQ(CoGetApartmentType(&type, &qualifier), CO_E_NOTINITIALIZED);
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
        EXPECT_EQ(CoGetApartmentType(&type, &qualifier), S_OK);
        EXPECT_EQ(type, APTTYPE_MTA);
        EXPECT_EQ(qualifier, APTTYPEQUALIFIER_NONE);
        EXPECT_EQ(CoGetApartmentType(nullptr, &qualifier), E_INVALIDARG);
        EXPECT_EQ(CoGetApartmentType(&type, nullptr), E_INVALIDARG);
        CoUninitialize();
        EXPECT_EQ(CoInitialize(nullptr), S_OK);
        EXPECT_EQ(CoGetApartmentType(&type, &qualifier), S_OK);
        EXPECT_NE(type, APTTYPE_MTA);
        CoUninitialize();
    });
}

TEST(Apartment, IsTheThreadsOwn) {
    OnThreadOfItsOwn([] {
        EXPECT_EQ(CoInitialize(nullptr), S_OK);
        OnThreadOfItsOwn([] { EXPECT_EQ(ProbeInitialisation(COINIT_MULTITHREADED), S_OK); });
        CoUninitialize();
    });
}

TEST(Apartment, EndedOnceTooOftenIsAsItWas) {
    OnThreadOfItsOwn([] {
        CoUninitialize();
        EXPECT_EQ(CoInitialize(nullptr), S_OK);
        EXPECT_EQ(CoInitialize(nullptr), S_FALSE);
        CoUninitialize();
        CoUninitialize();
    });
}

TEST(ClassName, ThatNobodyRegisteredIsNoClass) {
    const auto expectNone = [] {
        CLSID found{};
        EXPECT_EQ(CLSIDFromProgID(L"Kinora.NoSuchClass", &found), CO_E_CLASSSTRING);
    };
    OnThreadOfItsOwn([&] {
        expectNone(); // without initialisation too
        EXPECT_EQ(CoInitialize(nullptr), S_OK);
        expectNone();
        CoUninitialize();
    });
}

TEST(ClassName, AndPlaceForItsClassMustBeThere) {
    CLSID found{};
    EXPECT_EQ(CLSIDFromProgID(nullptr, &found), E_INVALIDARG);
    EXPECT_EQ(CLSIDFromProgID(L"Kinora.NoSuchClass", nullptr), E_INVALIDARG);
}

TEST(Creation, OfAnUnknownClassFailsAndGivesNull) {
    OnThreadOfItsOwn([] {
        EXPECT_EQ(CoInitialize(nullptr), S_OK);
        for (const int context : {int{CLSCTX_SERVER}, int{CLSCTX_INPROC_SERVER}, int{CLSCTX_LOCAL_SERVER}}) {
            EXPECT_EQ(Create(unknownClass, static_cast<DWORD>(context)), REGDB_E_CLASSNOTREG);
        }
        EXPECT_TRUE(FAILED(Create(unknownClass, CLSCTX_REMOTE_SERVER)));
        CoUninitialize();
    });
}

TEST(Creation, NeedsAnInitialisedThread) {
    OnThreadOfItsOwn([] {
        EXPECT_EQ(Create(unknownClass, CLSCTX_SERVER), CO_E_NOTINITIALIZED);
        EXPECT_EQ(CoInitialize(nullptr), S_OK);
        CoUninitialize();
        EXPECT_EQ(Create(unknownClass, CLSCTX_SERVER), CO_E_NOTINITIALIZED);
    });
}

TEST(Creation, NeedsAPlaceForTheObject) {
    OnThreadOfItsOwn([] {
        EXPECT_EQ(CoInitialize(nullptr), S_OK);
        EXPECT_EQ(CoCreateInstance(unknownClass, nullptr, CLSCTX_SERVER, IID_IDispatch, nullptr), E_POINTER);
        CoUninitialize();
    });
}

} // namespace
