// The instruments of the contract tests, tested themselves: what breaks the rules has to be seen.

#include "tests/support/FakeDesktop.h"

#include "tests/support/MemoryGuard.h"
#include "tests/support/Number.h"

#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace fake;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A caller that keeps all rules, with a knob for each of them.
struct Caller {
    IID iid = IID_NULL;
    LCID locale = 0x0800;
    WORD flags = DISPATCH_METHOD;
    EXCEPINFO* exception = nullptr;
    UINT* argumentError = nullptr;
    DISPID namedArgument = 0;
    UINT namedArguments = 0;
    VARIANT result{};

    HRESULT Call(Object& object, const wchar_t* name, std::vector<VARIANT> arguments = {}) {
        DISPID id = 0;
        std::wstring copy = name;
        LPOLESTR names = copy.data();
        const HRESULT found = object.GetIDsOfNames(iid, &names, 1, locale, &id);
        if (FAILED(found)) {
            return found;
        }
        DISPPARAMS parameters{arguments.data(), &namedArgument, static_cast<UINT>(arguments.size()), namedArguments};
        return object.Invoke(id, iid, locale, flags, &parameters, &result, exception, argumentError);
    }
};

VARIANT OfType(VARTYPE type, LONG bits) {
    VARIANT variant{};
    variant.lVal = bits;
    variant.vt = type;
    return variant;
}

VARIANT Filled(const Answer& answer) {
    VARIANT variant{};
    answer.fill(variant);
    return variant;
}

std::string PrintAndClear(VARIANT variant) {
    const std::string text = Print(Read(variant));
    VariantClear(&variant);
    return text;
}

TEST(ValueNotation, TellsTypesApart) {
    EXPECT_EQ(PrintAndClear(OfType(VT_BOOL, 0xFFFF)), "true");
    EXPECT_EQ(PrintAndClear(OfType(VT_BOOL, 0)), "false");
    EXPECT_EQ(PrintAndClear(OfType(VT_BOOL, 1)), "bool(1)");
    EXPECT_EQ(PrintAndClear(OfType(VT_INT, -1)), "int(-1)");
    EXPECT_EQ(PrintAndClear(OfType(VT_I4, 7)), "i4(7)");
    EXPECT_EQ(PrintAndClear(OfType(VT_EMPTY, 0)), "empty");
    EXPECT_EQ(PrintAndClear(OfType(VT_I2, 7)), "vt2");
}

TEST(ValueNotation, ShowsRealsToTheLastBit) {
    EXPECT_EQ(PrintAndClear(Number(15.0)), "15.0");
    EXPECT_EQ(PrintAndClear(Number(-0.0)), "-0.0");
    EXPECT_EQ(PrintAndClear(Number(0.1 + 0.2)), "0.30000000000000004");
    EXPECT_EQ(PrintAndClear(Number(1e300)), "1e+300");
    EXPECT_EQ(PrintAndClear(Number(std::numeric_limits<double>::infinity())).substr(0, 3), "inf");
}

TEST(ValueNotation, EscapesWhatCannotBeSeen) {
    EXPECT_EQ(PrintAndClear(Filled(Text(std::wstring(L"a\0b\"c\\d\n", 8)))), R"("a\0b\"c\\d\n")");
    EXPECT_EQ(PrintAndClear(Filled(Text(L"\x00E9"))), "\"\xC3\xA9\"");
    EXPECT_EQ(PrintAndClear(OfType(VT_BSTR, 0)), "null text");
}

TEST(ValueNotation, ShowsArraysAsTrees) {
    EXPECT_EQ(PrintAndClear(Filled(Items({Text(L"NAME:A"), Real(1.0), Items({Texts({L"b"}), Flag(-1)}), Items({})}))),
              R"(["NAME:A", 1.0, [["b"], true], []])");
    EXPECT_EQ(PrintAndClear(Filled(Items({Long(1)}, 1))), "[from 1: i4(1)]");
    EXPECT_EQ(PrintAndClear(Filled(TextArray({L"a", L"b"}))), R"(array of vt8["a", "b"])");
}

struct BrokenRule {
    const char* name;
    void (*breakRule)(Caller&);
    const char* complaint;
};

class RuleOfAutomation : public testing::TestWithParam<BrokenRule> {};

TEST_P(RuleOfAutomation, IsSeenWhenBroken) {
    World world;
    Object& object = world.MakeHeld("object");
    object.On("Run", Nothing());
    Caller caller;
    GetParam().breakRule(caller);
    caller.Call(object, L"Run");
    EXPECT_THAT(world.TakeProblems(), testing::Contains(HasSubstr(GetParam().complaint)));
}

INSTANTIATE_TEST_SUITE_P(
    All, RuleOfAutomation,
    testing::Values(BrokenRule{"InterfaceId", [](Caller& caller) { caller.iid = IID_IDispatch; },
                               "other than IID_NULL"},
                    BrokenRule{"Locale", [](Caller& caller) { caller.locale = 0x0400; }, "locale other than 0x0800"},
                    BrokenRule{"Flags", [](Caller& caller) { caller.flags = DISPATCH_PROPERTYGET; }, "DISPATCH_METHOD"},
                    BrokenRule{"NamedArguments", [](Caller& caller) { caller.namedArguments = 1; }, "named arguments"},
                    BrokenRule{"UsedResult", [](Caller& caller) { caller.result.lVal = 1; }, "VARIANT of zeros"},
                    BrokenRule{"ErrorPointer",
                               [](Caller& caller) {
                                   static UINT index;
                                   caller.argumentError = &index;
                               },
                               "error out-parameters"}),
    [](const auto& rule) { return std::string(rule.param.name); });

TEST(Object, SeesARememberedId) {
    World world;
    Object& object = world.MakeHeld("object");
    object.On("Run", Nothing());
    std::wstring name = L"Run";
    LPOLESTR names = name.data();
    DISPID id = 0;
    object.GetIDsOfNames(IID_NULL, &names, 1, 0x0800, &id);
    DISPPARAMS none{};
    VARIANT result{};
    EXPECT_EQ(object.Invoke(id, IID_NULL, 0x0800, DISPATCH_METHOD, &none, &result, nullptr, nullptr), S_OK);
    EXPECT_EQ(object.Invoke(id, IID_NULL, 0x0800, DISPATCH_METHOD, &none, &result, nullptr, nullptr),
              DISP_E_MEMBERNOTFOUND);
    EXPECT_THAT(world.TakeProblems(), ElementsAre(HasSubstr("not looked up for this call")));
}

TEST(Object, SeesLeaksAndReleasesTooMany) {
    World world;
    Object& object = world.Make("object");
    object.On("Run", Nothing());
    object.AddRef();
    EXPECT_THAT(world.TakeProblems(), ElementsAre("object has 1 leaked references"));
    object.Release();
    EXPECT_THAT(world.TakeProblems(), IsEmpty());
    object.Release();
    EXPECT_THAT(world.TakeProblems(), ElementsAre("object was released once too often"));
    Caller().Call(object, L"Run");
    EXPECT_THAT(world.TakeProblems(), testing::Contains(HasSubstr("after the last release")));
}

TEST(Object, AnswersTheNthCallDifferently) {
    World world;
    Object& object = world.MakeHeld("object");
    object.On("Run", Long(0)).OnCall("Run", 2, Long(5));
    std::vector<LONG> answers;
    for (int call = 0; call < 3; ++call) {
        Caller caller;
        caller.Call(object, L"Run");
        answers.push_back(caller.result.lVal);
    }
    EXPECT_THAT(answers, ElementsAre(0, 5, 0));
}

TEST(World, InjectsAFaultIntoTheNthCallOfAll) {
    World world;
    Object& first = world.MakeHeld("first");
    Object& second = world.MakeHeld("second");
    first.On("Run", Nothing());
    second.On("Run", Nothing());
    world.Inject(2, {DISP_E_UNKNOWNNAME, {}});
    world.Inject(3, {S_OK, Fails(E_FAIL)});
    EXPECT_EQ(Caller().Call(first, L"Run"), S_OK);
    EXPECT_FALSE(world.FaultHit());
    EXPECT_EQ(Caller().Call(second, L"Run"), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(Caller().Call(first, L"Run"), E_FAIL);
    EXPECT_TRUE(world.FaultHit());
}

TEST(MemoryGuard, CountsTextsAndLetsThemFail) {
    const std::size_t before = MemoryGuard::LiveBlocks();
    const BSTR text = SysAllocString(L"text");
    EXPECT_EQ(MemoryGuard::LiveBlocks(), before + 1);
    SysFreeString(text);
    EXPECT_EQ(MemoryGuard::LiveBlocks(), before);
    MemoryGuard::FailAllocation(2);
    const BSTR first = SysAllocString(L"first");
    const BSTR second = SysAllocString(L"second");
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(second, nullptr);
    EXPECT_TRUE(MemoryGuard::FailureHit());
    SysFreeString(first);
}

TEST(FakeDesktop, RemembersVariablesThatWereCreated) {
    FakeDesktop fake;
    fake.design.AddRef();
    const VARIANT argument = Filled(
        Items({Text(L"NAME:AllTabs"), Items({Text(L"NAME:LocalVariableTab"), Texts({L"NAME:PropServers"}),
                                             Items({Text(L"NAME:NewProps"), Items({Text(L"NAME:SimTime")})})})}));
    Caller().Call(fake.design, L"ChangeProperty", {argument});
    VARIANT copy = argument;
    VariantClear(&copy);
    EXPECT_THAT(fake.variables, ElementsAre(L"SimTime"));
    fake.design.Release();
}

} // namespace
