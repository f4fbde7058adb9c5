#include "simulator/automation/Server.h"
#include "simulator/automation/VariantConversion.h"
#include "simulator/model/DesktopError.h"
#include "tests/simulator/automation/Automation.h"

#include <chrono>
#include <cwchar>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace vantor;
using namespace calls;

namespace {

/// A server in this process and the desktop object of its one client.
class Dispatch : public testing::Test {
protected:
    Dispatch() {
        world->library = model::BuiltInMaterials();
        world->options[model::updateReportsKey] = "Never";
        const Object application(server->NewClient());
        desktop = CallObject(application.Get(), L"GetAppDesktop", {});
    }

    std::shared_ptr<model::Desktop> world = std::make_shared<model::Desktop>();
    std::shared_ptr<automation::Server> server = std::make_shared<automation::Server>(world, std::chrono::seconds(2));
    Object desktop;
};

} // namespace

TEST_F(Dispatch, LooksNamesUpByTheirExactSpelling) {
    DISPID id = 0;
    EXPECT_EQ(Lookup(desktop.Get(), L"NewProject", id), S_OK);
    EXPECT_EQ(Lookup(desktop.Get(), L"newproject", id), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(Lookup(desktop.Get(), L"", id), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(id, DISPID_UNKNOWN);
}

TEST_F(Dispatch, ReturnsTheTypesOfTheScriptingInterface) {
    const Variant text = Call(desktop.Get(), L"GetRegistryString",
                              {Text(L"Desktop\\Settings\\ProjectOptions\\Veltrix 3D\\UpdateReportsOnSolve")});
    EXPECT_EQ(text.vt, VT_BSTR);
    EXPECT_STREQ(text.bstrVal, L"Never");
    const Object project = CallObject(desktop.Get(), L"NewProject", {});
    const Variant names = Call(project.Get(), L"GetChildNames", {});
    EXPECT_EQ(names.vt, VT_ARRAY | VT_VARIANT);
    const Object projects = CallObject(desktop.Get(), L"GetProjects", {});
    EXPECT_EQ(Call(projects.Get(), L"Count", {}).vt, VT_I4);
    EXPECT_EQ(CallObject(projects.Get(), L"Item", {Int(0)}).Get() != nullptr, true);
}

TEST_F(Dispatch, TellsWhatWentWrongInTheExceptionRecord) {
    Outcome outcome = Try(desktop.Get(), L"OpenProject", {Int(3)});
    EXPECT_EQ(outcome.status, DISP_E_EXCEPTION);
    EXPECT_EQ(outcome.scode, static_cast<SCODE>(0x80040006));
    EXPECT_EQ(outcome.source, L"Pellux.VantorDesktop.Simulator");
    EXPECT_EQ(outcome.description, L"OpenProject: 0x0006: Unsupported argument type: argument 1: a text (VT_BSTR) is "
                                   L"needed, not a whole number (VT_INT)");
    EXPECT_EQ(outcome.result.vt, VT_EMPTY);
    const auto messages = world->messages.Find("", "", 2);
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_THAT(messages[0].text, testing::StartsWith("OpenProject: 0x0006"));
}

TEST_F(Dispatch, RefusesCallsThatAreNoMethodCalls) {
    DISPID id = 0;
    ASSERT_EQ(Lookup(desktop.Get(), L"NewProject", id), S_OK);
    DISPPARAMS none = {};
    IDispatch* object = desktop.Get();
    const auto invoke = [&](DISPID which, REFIID iid, WORD flags) {
        return object->Invoke(which, iid, LOCALE_SYSTEM_DEFAULT, flags, &none, nullptr, nullptr, nullptr);
    };
    EXPECT_EQ(invoke(id, IID_NULL, DISPATCH_PROPERTYGET), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(invoke(0, IID_NULL, DISPATCH_METHOD), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(invoke(1000, IID_NULL, DISPATCH_METHOD), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(invoke(id, IID_IUnknown, DISPATCH_METHOD), DISP_E_UNKNOWNINTERFACE);
    EXPECT_EQ(invoke(id, IID_NULL, DISPATCH_METHOD | DISPATCH_PROPERTYGET), S_OK);
    none.cNamedArgs = 1;
    EXPECT_EQ(invoke(id, IID_NULL, DISPATCH_METHOD), DISP_E_NONAMEDARGS);
}

TEST_F(Dispatch, GivesOneIdentityForUnknownAndDispatch) {
    IUnknown* unknown = nullptr;
    ASSERT_EQ(desktop.Get()->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&unknown)), S_OK);
    EXPECT_EQ(unknown, static_cast<IUnknown*>(desktop.Get()));
    unknown->Release();
    EXPECT_EQ(desktop.Get()->QueryInterface(IID_IClassFactory, reinterpret_cast<void**>(&unknown)), E_NOINTERFACE);
    EXPECT_EQ(unknown, nullptr);
}

TEST_F(Dispatch, CountsItsObjects) {
    using Clock = automation::Lifetime::Clock;
    const auto later = [] { return Clock::now() + std::chrono::minutes(5); };
    EXPECT_FALSE(server->ItsLifetime().MayLeave(later()));
    desktop = Object();
    EXPECT_TRUE(server->ItsLifetime().MayLeave(later()));
    EXPECT_FALSE(server->ItsLifetime().MayLeave(Clock::now() + std::chrono::seconds(1)));
}

TEST_F(Dispatch, StaysWhenAClientQuitsWhileOthersUseIt) {
    using Clock = automation::Lifetime::Clock;
    int timesLeft = 0;
    server->OnQuit([&] { ++timesLeft; });
    const Object first(server->NewClient());
    Object second(server->NewClient());
    Call(desktop.Get(), L"QuitApplication", {});
    EXPECT_FALSE(server->ItsLifetime().MayLeave(Clock::now() + std::chrono::hours(1)));
    second = Object();
    Call(desktop.Get(), L"QuitApplication", {});
    EXPECT_EQ(timesLeft, 0);
    const auto messages = world->messages.Find("", "", 0);
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(messages[0].text, "QuitApplication: the desktop stays open, 2 other clients use it.");
    EXPECT_EQ(messages[1].text, "QuitApplication: the desktop stays open, 1 other client uses it.");
    EXPECT_EQ(messages[1].severity, model::Severity::Info);
    EXPECT_NE(Object(server->NewClient()).Get(), nullptr) << "the door is open";
}

TEST_F(Dispatch, LeavesAtTheQuitOfItsLastClientWhateverItHolds) {
    int timesLeft = 0;
    server->OnQuit([&] { ++timesLeft; });
    {
        const Object other(server->NewClient());
        Call(desktop.Get(), L"QuitApplication", {});
    }
    const Object project = CallObject(desktop.Get(), L"NewProject", {});
    Call(desktop.Get(), L"QuitApplication", {});
    EXPECT_EQ(timesLeft, 1);
    EXPECT_TRUE(server->ItsLifetime().IsQuitting());
    EXPECT_EQ(server->NewClient(), nullptr) << "the door is closed";
}

TEST(Lifetime, LingersTwoSecondsAtLeastAndLeavesAfterAQuitRequest) {
    using namespace std::chrono_literals;
    using Clock = automation::Lifetime::Clock;
    automation::Lifetime lifetime(0s);
    EXPECT_FALSE(lifetime.MayLeave(Clock::now() + 1900ms));
    EXPECT_TRUE(lifetime.MayLeave(Clock::now() + 2100ms));
    automation::Lifetime patient(300s);
    patient.AddObject();
    EXPECT_FALSE(patient.MayLeave(Clock::now() + 1000s));
    patient.RequestQuit();
    EXPECT_FALSE(patient.MayLeave(Clock::now() + 5s));
    EXPECT_TRUE(patient.MayLeave(Clock::now() + 11s));
    patient.RemoveObject();
    EXPECT_TRUE(patient.MayLeave(Clock::now() + 2100ms));
    EXPECT_FALSE(patient.MayLeave(Clock::now() + 1900ms));
    automation::Lifetime endless(std::nullopt);
    EXPECT_FALSE(endless.MayLeave(Clock::now() + 1000h));
    endless.RequestQuit();
    EXPECT_TRUE(endless.MayLeave(Clock::now() + 2100ms));
}

TEST(VariantConversion, FollowsReferences) {
    Variant inner = Text(L"inner");
    Variant outer;
    outer.vt = VT_BYREF | VT_VARIANT;
    outer.pvarVal = &inner;
    EXPECT_EQ(*automation::ValueFromVariant(outer).AsText(), "inner");
    Variant list = Array({Text(L"a"), Int(3)});
    Variant reference;
    reference.vt = VT_BYREF | VT_ARRAY | VT_VARIANT;
    reference.pparray = &list.parray;
    const auto value = automation::ValueFromVariant(reference);
    ASSERT_EQ(value.AsList()->size(), 2U);
    EXPECT_EQ(value.AsList()->at(1).AsInteger()->type, commands::Value::Integer::Type::Int);
    reference.vt = VT_EMPTY;
    outer.vt = VT_EMPTY;
}

TEST(VariantConversion, ReadsArraysFromTheirOwnLowerBound) {
    for (const LONG lower : {LONG{0}, LONG{1}, LONG{-3}}) {
        SAFEARRAYBOUND bound = {2, lower};
        Variant array;
        array.vt = VT_ARRAY | VT_VARIANT;
        array.parray = SafeArrayCreate(VT_VARIANT, 1, &bound);
        Variant element = Text(L"first");
        LONG index = lower;
        SafeArrayPutElement(array.parray, &index, &element);
        const auto value = automation::ValueFromVariant(array);
        ASSERT_EQ(value.AsList()->size(), 2U);
        EXPECT_EQ(*value.AsList()->at(0).AsText(), "first");
        EXPECT_TRUE(value.AsList()->at(1).IsEmpty());
    }
}

TEST(VariantConversion, RefusesOtherRanksAndTellsOtherTypesApart) {
    SAFEARRAYBOUND bounds[2] = {{1, 0}, {1, 0}};
    Variant matrix;
    matrix.vt = VT_ARRAY | VT_VARIANT;
    matrix.parray = SafeArrayCreate(VT_VARIANT, 2, bounds);
    EXPECT_THROW(automation::ValueFromVariant(matrix), model::DesktopError);
    Variant texts;
    texts.vt = VT_ARRAY | VT_BSTR;
    texts.parray = SafeArrayCreateVector(VT_BSTR, 0, 1);
    EXPECT_EQ(automation::ValueFromVariant(texts).AsForeign()->type, VT_ARRAY | VT_BSTR);
    Variant date;
    date.vt = VT_DATE;
    EXPECT_EQ(automation::ValueFromVariant(date).AsForeign()->type, VT_DATE);
}

TEST(VariantConversion, KeepsEveryCharacter) {
    const std::wstring characters(L"a\0\u00fc\u20ac\U0001f600", 4 + std::wcslen(L"\U0001f600"));
    Variant text;
    text.vt = VT_BSTR;
    text.bstrVal = SysAllocStringLen(characters.data(), static_cast<UINT>(characters.size()));
    const auto value = automation::ValueFromVariant(text);
    EXPECT_EQ(*value.AsText(), std::string("a\0\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80", 11));
    Variant back;
    automation::VariantFromValue(value, nullptr, back);
    EXPECT_EQ(std::wstring(back.bstrVal, SysStringLen(back.bstrVal)), characters);
}

TEST(VariantConversion, IsLinearInTheNumberOfTexts) {
    std::vector<Variant> texts;
    const auto measure = [](LONG count) {
        Variant array;
        array.vt = VT_ARRAY | VT_VARIANT;
        array.parray = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(count));
        const Variant element = Text(L"-0.123456Meter");
        for (LONG i = 0; i < count; ++i) {
            SafeArrayPutElement(array.parray, &i, const_cast<Variant*>(&element));
        }
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(automation::ValueFromVariant(array).AsList()->size(), static_cast<std::size_t>(count));
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    measure(1000);
    const double small = measure(20000);
    EXPECT_LT(measure(200000), 60.0 * small + 0.05);
}
