// How the library calls a method by name, and how it makes and reads the values that go through.

#include "comutils/ComUtils.h"
#include "tests/support/MemoryGuard.h"
#include "tests/support/Object.h"
#include "tests/support/Transcript.h"

#include <comdef.h>

#include <algorithm>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <set>

namespace {

using namespace fake;
using testing::ElementsAre;
using testing::IsEmpty;

class Dispatch : public testing::Test {
protected:
    World world;
    Object& object = world.MakeHeld("object");
    Object& child = world.Make("child");
};

/// Owns a VARIANT made by the library or by an answer.
struct OwnedVariant {
    explicit OwnedVariant(const VARIANT& made) : value(made) {}
    explicit OwnedVariant(const Answer& answer) : value() { answer.fill(value); }
    ~OwnedVariant() { VariantClear(&value); }
    OwnedVariant(const OwnedVariant&) = delete;
    OwnedVariant& operator=(const OwnedVariant&) = delete;
    VARIANT value;
};

TEST_F(Dispatch, SupportStopsAfterTheLookup) {
    object.On("FitAll", Nothing());
    EXPECT_TRUE(CComUtils::SupportComFunction(&object, L"FitAll"));
    EXPECT_FALSE(CComUtils::SupportComFunction(&object, L"FitNone"));
    EXPECT_FALSE(CComUtils::SupportComFunction(nullptr, L"FitAll"));
    EXPECT_TRANSCRIPT(world, R"(
        object.FitAll -> known
        object.FitNone -> unknown
    )");
}

TEST_F(Dispatch, ThreeArgumentFormCallsWithoutArguments) {
    object.On("GetName", Text(L"Magnets"));
    OwnedVariant result(VARIANT{});
    EXPECT_TRUE(CComUtils::CallComFunction(&object, L"GetName", result.value));
    EXPECT_TREE(result.value, R"("Magnets")");
    EXPECT_TRANSCRIPT(world, "object.GetName()");
}

TEST_F(Dispatch, FiveArgumentFormPassesTheCallersBlock) {
    object.On("Add", Long(5));
    VARIANT block[2] = {};
    block[0].vt = VT_R8;
    block[0].dblVal = 2.0;
    block[1].vt = VT_INT;
    block[1].intVal = 1;
    DISPPARAMS arguments{block, nullptr, 2, 0};
    VARIANT result{};
    EXPECT_TRUE(CComUtils::CallComFunction(&object, L"Add", DISPATCH_METHOD, arguments, result));
    EXPECT_TREE(result, "i4(5)");
    EXPECT_TRANSCRIPT(world, "object.Add(int(1), 2.0)    # the block's last element is the first argument");
}

TEST_F(Dispatch, FiveArgumentFormPassesTheCallersFlags) {
    object.On("Name", Nothing());
    DISPPARAMS none{};
    VARIANT result{};
    CComUtils::CallComFunction(&object, L"Name", DISPATCH_PROPERTYGET, none, result);
    EXPECT_THAT(world.TakeProblems(), ElementsAre("object.Name: invoked with flags other than DISPATCH_METHOD"));
}

TEST_F(Dispatch, FailsForNullObjectUnknownNameAndFailedCall) {
    object.On("Run", Fails(E_ACCESSDENIED));
    DISPPARAMS none{};
    VARIANT result{};
    EXPECT_FALSE(CComUtils::CallComFunction(nullptr, L"Run", result));
    EXPECT_FALSE(CComUtils::CallComFunction(nullptr, L"Run", DISPATCH_METHOD, none, result));
    EXPECT_FALSE(CComUtils::CallComFunction(&object, L"Walk", result));
    EXPECT_FALSE(CComUtils::CallComFunction(&object, L"Run", DISPATCH_METHOD, none, result));
    EXPECT_TRANSCRIPT(world, R"(
        object.Walk -> unknown
        object.Run() -> fails
    )");
}

TEST_F(Dispatch, CallNeitherClearsNorInitialisesTheResult) {
    object.On("Run", Nothing());
    VARIANT result{};
    result.vt = VT_I4;
    result.lVal = 77;
    EXPECT_TRUE(CComUtils::CallComFunction(&object, L"Run", result));
    EXPECT_TREE(result, "i4(77)");
    EXPECT_THAT(world.TakeProblems(), ElementsAre("object.Run: invoked without a result VARIANT of zeros"));
}

TEST_F(Dispatch, AnySuccessCodeCounts) {
    object.On("Run", Answer{S_FALSE, nullptr});
    VARIANT result{};
    EXPECT_TRUE(CComUtils::CallComFunction(&object, L"Run", result));
}

TEST_F(Dispatch, EveryCallLooksTheNameUpAnew) {
    object.On("GetModule", Reference(child));
    for (int call = 0; call < 2; ++call) {
        IDispatch* const module = CComUtils::CallGetModule(&object, "ReportSetup");
        ASSERT_EQ(module, &child);
        module->Release();
    }
    EXPECT_EQ(world.CallNumber(), 2U); // the fake gives a fresh id each time and rejects a remembered one
}

TEST(CreateVariant, ConvertsFromTheAnsiCodePage) {
    OwnedVariant text(CComUtils::CreateVariant(ToAnsi(L"caf\x00E9 \x20AC")));
    EXPECT_STREQ(text.value.bstrVal, L"caf\x00E9 \x20AC");
}

TEST(CreateVariant, KeepsEmbeddedZeros) {
    OwnedVariant text(CComUtils::CreateVariant(std::string("a\0b", 3)));
    EXPECT_TREE(text.value, R"("a\0b")");
}

TEST(CreateVariant, MakesAnEmptyTextFromAnEmptyString) {
    OwnedVariant text(CComUtils::CreateVariant(""));
    EXPECT_EQ(text.value.vt, VT_BSTR);
    EXPECT_EQ(SysStringLen(text.value.bstrVal), 0U);
}

TEST(CreateStringArray, HoldsTextsInTheirOrder) {
    OwnedVariant array(CComUtils::CreateStringArray({"NAME:PropServers", "LocalVariables", ""}));
    EXPECT_TREE(array.value, R"(["NAME:PropServers", "LocalVariables", ""])");
}

TEST(CreateStringArray, OfNothingIsAnArrayWithoutElements) {
    OwnedVariant array(CComUtils::CreateStringArray({}));
    EXPECT_EQ(array.value.vt, VT_ARRAY | VT_VARIANT);
    EXPECT_TREE(array.value, "[]");
}

TEST(CreateVariantArray, HoldsCopies) {
    OwnedVariant text(CComUtils::CreateVariant("text"));
    OwnedVariant nested(CComUtils::CreateStringArray({"NAME:Inner"}));
    VARIANT number{};
    number.vt = VT_R8;
    number.dblVal = 0.5;
    OwnedVariant array(CComUtils::CreateVariantArray({text.value, nested.value, number}));
    text.value.bstrVal[0] = L'n'; // the caller's own, not the array's
    EXPECT_TREE(array.value, R"(["text", ["NAME:Inner"], 0.5])");
    EXPECT_TREE(text.value, R"("next")");
}

TEST(CreateVariantArray, OfNothingIsAnArrayWithoutElements) {
    OwnedVariant array(CComUtils::CreateVariantArray({}));
    EXPECT_EQ(array.value.vt, VT_ARRAY | VT_VARIANT);
    EXPECT_TREE(array.value, "[]");
}

TEST(ReadStringArray, ConvertsToTheAnsiCodePage) {
    OwnedVariant array(Texts({L"caf\x00E9", std::wstring(L"a\0b", 3)}));
    EXPECT_THAT(CComUtils::ReadStringArray(array.value), ElementsAre(ToAnsi(L"caf\x00E9"), std::string("a\0b", 3)));
}

TEST(ReadStringArray, TakesOnlyTextsFromAMixedArray) {
    OwnedVariant array(Items({Text(L"a"), Real(1.0), Text(L"b"), Flag(VARIANT_TRUE), Texts({L"c"}), Nothing()}));
    EXPECT_THAT(CComUtils::ReadStringArray(array.value), ElementsAre("a", "b"));
}

TEST(ReadStringArray, RefusesAnArrayOfPlainTexts) {
    OwnedVariant array(TextArray({L"a", L"b"}));
    ASSERT_EQ(array.value.vt, VT_ARRAY | VT_BSTR);
    EXPECT_THAT(CComUtils::ReadStringArray(array.value), IsEmpty());
}

TEST(ReadStringArray, RefusesEverythingThatIsNoArray) {
    for (const Answer& answer : {Text(L"a"), Long(1), Raw(VT_EMPTY, 0), NoObject()}) {
        OwnedVariant value(answer);
        EXPECT_THAT(CComUtils::ReadStringArray(value.value), IsEmpty());
    }
}

TEST(ReadStringArray, RefusesAnArrayThatIsNullOrATable) {
    VARIANT value = {};
    value.vt = VT_ARRAY | VT_VARIANT;
    EXPECT_THAT(CComUtils::ReadStringArray(value), IsEmpty());
    SAFEARRAYBOUND bounds[] = {{1, 0}, {1, 0}};
    value.parray = SafeArrayCreate(VT_VARIANT, 2, bounds);
    OwnedVariant table(value);
    VARIANT& element = *static_cast<VARIANT*>(value.parray->pvData);
    Text(L"a").fill(element);
    EXPECT_THAT(CComUtils::ReadStringArray(table.value), IsEmpty());
}

TEST(ReadStringArray, ReadsEmptyAndNullTexts) {
    OwnedVariant array(Items({Text(L""), Raw(VT_BSTR, 0)}));
    EXPECT_THAT(CComUtils::ReadStringArray(array.value), ElementsAre("", ""));
}

TEST_F(Dispatch, ChildAndPropertyNamesKeepTheirOrder) {
    object.On("GetChildNames", Texts({L"b", L"a"})).On("GetPropNames", Texts({L"Name", L"Material"}));
    EXPECT_THAT(CComUtils::CallGetChildNames(&object), ElementsAre("b", "a"));
    EXPECT_THAT(CComUtils::CallGetPropNames(&object), ElementsAre("Name", "Material"));
    EXPECT_TRANSCRIPT(world, R"(
        object.GetChildNames()
        object.GetPropNames()
    )");
}

TEST_F(Dispatch, FailedNameListsAreEmptyLists) {
    object.On("GetPropNames", Fails());
    EXPECT_THAT(CComUtils::CallGetChildNames(&object), IsEmpty());
    EXPECT_THAT(CComUtils::CallGetPropNames(&object), IsEmpty());
    EXPECT_THAT(CComUtils::CallGetPropNames(nullptr), IsEmpty());
}

TEST_F(Dispatch, ObjectResultsBelongToTheCaller) {
    object.On("GetChildObject", Reference(child)).On("GetModule", Reference(child));
    object.On("SetActiveEditor", Reference(child));
    IDispatch* const results[] = {CComUtils::CallGetChildObject(&object, "Materials"),
                                  CComUtils::CallGetModule(&object, "ReportSetup"),
                                  CComUtils::CallSetActive(&object, L"SetActiveEditor", "3D Modeler")};
    EXPECT_EQ(child.References(), 3);
    for (IDispatch* const result : results) {
        ASSERT_EQ(result, &child);
        result->Release();
    }
    EXPECT_TRANSCRIPT(world, R"(
        object.GetChildObject("Materials")
        object.GetModule("ReportSetup")
        object.SetActiveEditor("3D Modeler")
    )");
}

TEST_F(Dispatch, ResultThatIsNoObjectGivesNull) {
    for (const Answer& answer : {Text(L"child"), Long(1), Nothing(), NoObject(), Texts({L"a"}), Fails()}) {
        object.On("GetChildObject", answer).On("GetModule", answer).On("SetActiveDesign", answer);
        EXPECT_EQ(CComUtils::CallGetChildObject(&object, "x"), nullptr);
        EXPECT_EQ(CComUtils::CallGetModule(&object, "x"), nullptr);
        EXPECT_EQ(CComUtils::CallSetActive(&object, L"SetActiveDesign", "x"), nullptr);
    }
}

TEST_F(Dispatch, ObjectWrittenByAFailingCallIsReleased) {
    object.On("GetModule", FailsWith(Reference(child)));
    EXPECT_EQ(CComUtils::CallGetModule(&object, "x"), nullptr);
    EXPECT_EQ(child.References(), 0);
}

TEST_F(Dispatch, UnknownInterfaceResultIsReleasedAndNoObject) {
    object.On("GetModule", Answer{S_OK, [this](VARIANT& result) {
                                      child.AddRef();
                                      result.punkVal = &child;
                                      result.vt = VT_UNKNOWN;
                                  }});
    EXPECT_EQ(CComUtils::CallGetModule(&object, "x"), nullptr);
}

TEST_F(Dispatch, PropertyValueComesAsTheDesktopGaveIt) {
    object.On("GetPropValue", Items({Text(L"a"), Long(2)}));
    OwnedVariant value(CComUtils::CallGetPropValue(&object, "Material"));
    EXPECT_TREE(value.value, R"(["a", i4(2)])");
    object.On("GetPropValue", Fails());
    EXPECT_EQ(CComUtils::CallGetPropValue(&object, "Material").vt, VT_EMPTY);
    EXPECT_EQ(CComUtils::CallGetPropValue(nullptr, "Material").vt, VT_EMPTY);
}

TEST_F(Dispatch, PropertyValueOfAFailingCallIsEmptyAndCleared) {
    object.On("GetPropValue", FailsWith(Text(L"left behind")));
    EXPECT_EQ(CComUtils::CallGetPropValue(&object, "Material").vt, VT_EMPTY);
}

TEST_F(Dispatch, SetPropertySendsNameThenValueAndKeepsTheCallersValue) {
    object.On("SetPropValue", Nothing());
    OwnedVariant value(CComUtils::CreateVariant("Obj_CS_Rotor"));
    EXPECT_TRUE(CComUtils::CallSetPropValue(&object, "Coordinate System", value.value));
    EXPECT_TREE(value.value, R"("Obj_CS_Rotor")");
    EXPECT_FALSE(CComUtils::CallSetPropValue(nullptr, "Coordinate System", value.value));
    EXPECT_TRANSCRIPT(world, R"(object.SetPropValue("Coordinate System", "Obj_CS_Rotor"))");
}

TEST_F(Dispatch, StringSetIsSortedAndHoldsEveryTextOnce) {
    object.On("GetRelativeCoordinateSystems", Items({Text(L"b"), Real(1.0), Text(L"a"), Text(L"b"), Long(2)}));
    EXPECT_THAT(CComUtils::CallAndGetStringSet(&object, L"GetRelativeCoordinateSystems"), ElementsAre("a", "b"));
    EXPECT_TRANSCRIPT(world, "object.GetRelativeCoordinateSystems()");
}

TEST_F(Dispatch, StringSetOfAnythingElseIsEmpty) {
    for (const Answer& answer : {Text(L"a"), TextArray({L"a"}), Fails(), Nothing()}) {
        object.On("Names", answer);
        EXPECT_THAT(CComUtils::CallAndGetStringSet(&object, L"Names"), IsEmpty());
    }
    EXPECT_THAT(CComUtils::CallAndGetStringSet(&object, L"Unknown"), IsEmpty());
    EXPECT_THAT(CComUtils::CallAndGetStringSet(nullptr, L"Names"), IsEmpty());
}

// Running out of memory.

TEST_F(Dispatch, TextThatCannotBeAllocatedThrowsTheComError) {
    MemoryGuard::FailAllocation(1);
    try {
        CComUtils::CreateVariant("text");
        FAIL() << "must throw";
    } catch (const _com_error& error) { // caught here, in the host, by its own type
        EXPECT_EQ(error.Error(), E_OUTOFMEMORY);
    }
}

TEST_F(Dispatch, ArrayThatCannotBeCreatedIsEmpty) {
    MemoryGuard::FailAllocation(1);
    EXPECT_EQ(CComUtils::CreateStringArray({"a"}).vt, VT_EMPTY);
    MemoryGuard::FailAllocation(1);
    EXPECT_EQ(CComUtils::CreateVariantArray({VARIANT{}}).vt, VT_EMPTY);
}

TEST_F(Dispatch, ArrayThatCannotBeFilledIsEmptyOrThrowsAndLeaksNothing) {
    unsigned failures = 0;
    for (std::size_t number = 1; failures + 1 == number; ++number) {
        MemoryGuard::FailAllocation(number);
        try {
            VARIANT array = CComUtils::CreateStringArray({"a", "b"});
            failures += array.vt == VT_EMPTY ? 1U : 0U;
            VariantClear(&array);
        } catch (const _com_error&) {
            ++failures;
        }
    }
    EXPECT_GE(failures, 3U) << "the array and its two texts";
}

TEST_F(Dispatch, ArrayWhoseCopyFailsIsEmpty) {
    OwnedVariant text(CComUtils::CreateVariant("text"));
    for (std::size_t number = 1;; ++number) {
        MemoryGuard::FailAllocation(number);
        OwnedVariant array(CComUtils::CreateVariantArray({text.value}));
        if (!MemoryGuard::FailureHit()) {
            EXPECT_GE(number, 3U) << "the array and the copy of the text";
            break;
        }
        EXPECT_EQ(array.value.vt, VT_EMPTY);
    }
}

TEST_F(Dispatch, PropertyValueThatCannotBeCopiedThrowsAndCallsNothing) {
    object.On("SetPropValue", Nothing());
    OwnedVariant value(CComUtils::CreateVariant("text"));
    for (const std::size_t number : {1U, 2U}) { // the name and the copy, in whichever order
        MemoryGuard::FailAllocation(number);
        EXPECT_THROW(CComUtils::CallSetPropValue(&object, "Orientation", value.value), _com_error);
    }
    EXPECT_TRANSCRIPT(world, "");
}

// Named argument arrays: what holds for all of them.

TEST_F(Dispatch, BlockWithOnlyItsNameIsAnArrayOfOneElement) {
    object.On("SetDesignSettings", Nothing());
    EXPECT_TRUE(CComUtils::CallSetDesignSetttings(&object));
    ASSERT_EQ(world.Entries()[0].arguments.size(), 2U);
    EXPECT_EQ(Print(world.Entries()[0].arguments[1]), R"(["NAME:Model Validation Settings"])");
}

TEST_F(Dispatch, EmptyNameGivesTheBareHeader) {
    object.On("InsertSetup", Nothing());
    EXPECT_TRUE(CComUtils::CallInsertSetup(&object, ""));
    EXPECT_EQ(Print(world.Entries()[0].arguments[1].items[0]), R"("NAME:")");
}

TEST_F(Dispatch, FlagsAreMinusOneNeverOne) {
    object.On("InsertSetup", Nothing());
    EXPECT_TRUE(CComUtils::CallInsertSetup(&object, "Setup1"));
    const Value& enabled = world.Entries()[0].arguments[1].items[2];
    EXPECT_EQ(enabled.type, VT_BOOL);
    EXPECT_EQ(enabled.integer, -1);
}

TEST_F(Dispatch, NamesTravelThroughTheCodePageWithTheirZeros) {
    object.On("SetWCS", Nothing());
    EXPECT_TRUE(CComUtils::CallSetWorkingCS(&object, ToAnsi(std::wstring(L"caf\x00E9\0\x20AC", 6))));
    const Value& name = world.Entries()[0].arguments[0].items[2];
    EXPECT_EQ(name.text, std::wstring(L"caf\x00E9\0\x20AC", 6));
}

// Every wrapper that makes one call fails in the same three ways and cleans up after each.

struct Wrapper {
    const char* method;
    std::function<bool(IDispatch*)> call;
};

const IKinoraVeltrixInterface::Transform moved{
    "Rotor", {1.0, 2.0, 3.0}, {0.0, -1.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.0, 1.0}};

bool SetsProperty(IDispatch* object) {
    VARIANT value{};
    value.vt = VT_BOOL;
    value.boolVal = VARIANT_TRUE;
    return CComUtils::CallSetPropValue(object, "Solve Inside", value);
}

bool Solves(IDispatch* object) {
    int status = 0;
    return CComUtils::CallAnalyze(object, "Setup1", status);
}

bool ReadsOutput(IDispatch* object) {
    double value = 0.0;
    return CComUtils::CallGetOutputVariableValue(object, "Force_Rotor_X", "Setup1", value);
}

const Wrapper wrappers[] = {
    {"InsertDesign", [](IDispatch* object) { return CComUtils::CallInsertDesign(object, "Veltrix3DDesign1"); }},
    {"SetDesignSettings", [](IDispatch* object) { return CComUtils::CallSetDesignSetttings(object); }},
    {"SaveAs", [](IDispatch* object) { return CComUtils::CallSaveAs(object, "a", true); }},
    {"SetPropValue", SetsProperty},
    {"SetWCS", [](IDispatch* object) { return CComUtils::CallSetWorkingCS(object, "Global"); }},
    {"CreateRelativeCS", [](IDispatch* object) { return CComUtils::CallCreateRelativeCS(object, "Rotor"); }},
    {"Move", [](IDispatch* object) { return CComUtils::CallMove(object, moved, "Magnet"); }},
    {"Rotate", [](IDispatch* object) { return CComUtils::CallRotate(object, moved, "Magnet"); }},
    {"AssignMaterial", [](IDispatch* object) { return CComUtils::CallAssignMaterial(object, "Magnet", "N45"); }},
    {"CloneMaterial", [](IDispatch* object) { return CComUtils::CallCloneMaterial(object, "N45", "N45_1"); }},
    {"AssignForce", [](IDispatch* object) { return CComUtils::CallAssignForce(object, "Rotor", {"Magnet"}); }},
    {"AssignTorque", [](IDispatch* object) { return CComUtils::CallAssignTorque(object, "Rotor", {"Magnet"}); }},
    {"SetModelUnits", [](IDispatch* object) { return CComUtils::CallSetModelUnits(object, "mm"); }},
    {"Import", [](IDispatch* object) { return CComUtils::CallImport(object, "a.obj"); }},
    {"CreateRegion", [](IDispatch* object) { return CComUtils::CallAssignRegion(object); }},
    {"InsertSetup", [](IDispatch* object) { return CComUtils::CallInsertSetup(object, "Setup1"); }},
    {"Analyze", Solves},
    {"GetOutputVariableValue", ReadsOutput},
    {"ChangeProperty",
     [](IDispatch* object) {
         return CComUtils::UpdateVariables(object, {{"a", "1"}});
     }},
    {"CreateReport",
     [](IDispatch* object) { return CComUtils::CreateEmptyReport(object, "Force_R", "S", {"SimTime"}); }},
    {"CreateReport", [](IDispatch* object) { return CComUtils::CreateDataTable(object, "R", "S", {"SimTime"}); }},
    {"GetReportTraceNames", [](IDispatch* object) { return CComUtils::ClearAndImportReport(object, "Force_R", "f"); }},
    {"CreateFieldPlot",
     [](IDispatch* object) { return CComUtils::CreateFieldPlot(object, "P", "H", "S", "H_Vector", {"Magnet"}); }},
};

class WrapperContract : public testing::TestWithParam<Wrapper> {
protected:
    World world;
    Object& object = world.MakeHeld("object");
};

TEST_P(WrapperContract, FailsForANullObject) {
    EXPECT_FALSE(GetParam().call(nullptr));
}

TEST_P(WrapperContract, FailsWhenTheNameIsUnknown) {
    EXPECT_FALSE(GetParam().call(&object));
    EXPECT_EQ(world.Entries().back().kind, Entry::Kind::NameUnknown);
    EXPECT_EQ(world.Entries().back().method, GetParam().method);
}

TEST_P(WrapperContract, FailsWhenTheCallFailsAndClearsWhatItWrote) {
    object.On(GetParam().method, FailsWith(Texts({L"left", L"behind"})));
    EXPECT_FALSE(GetParam().call(&object));
    EXPECT_EQ(world.Count(GetParam().method), 1U) << world.Journal();
}

INSTANTIATE_TEST_SUITE_P(All, WrapperContract, testing::ValuesIn(wrappers), [](const auto& wrapper) {
    return std::string(wrapper.param.method) + std::to_string(wrapper.index);
});

// Wrappers that do not look at the result: the desktop may answer anything, and it is cleared.
class ResultIgnoringWrapper : public WrapperContract {};

TEST_P(ResultIgnoringWrapper, ClearsWhateverComesBack) {
    object.On(GetParam().method, Text(L"whatever"));
    EXPECT_TRUE(GetParam().call(&object));
}

std::vector<Wrapper> ResultIgnoringWrappers() {
    std::vector<Wrapper> chosen(std::begin(wrappers), std::end(wrappers));
    const std::set<std::string> others{"CloneMaterial", "Analyze", "GetReportTraceNames"};
    chosen.erase(std::remove_if(chosen.begin(), chosen.end(),
                                [&](const Wrapper& wrapper) { return others.count(wrapper.method) != 0; }),
                 chosen.end());
    return chosen;
}

INSTANTIATE_TEST_SUITE_P(All, ResultIgnoringWrapper, testing::ValuesIn(ResultIgnoringWrappers()),
                         [](const auto& wrapper) {
                             return std::string(wrapper.param.method) + std::to_string(wrapper.index);
                         });

} // namespace
