// Geometry, materials, force and torque: the commands of the modeler.

#include "comutils/ComUtils.h"
#include "tests/support/FakeDesktop.h"
#include "tests/support/Transcript.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace fake;
using testing::ElementsAre;
using testing::IsEmpty;

class Modeler : public testing::Test {
protected:
    Modeler() {
        fake.editor.AddRef();
        fake.definitions.AddRef();
        fake.parameterModule.AddRef();
    }
    ~Modeler() override {
        fake.editor.Release();
        fake.definitions.Release();
        fake.parameterModule.Release();
    }
    FakeDesktop fake;
};

TEST_F(Modeler, MaterialIsAssignedByItsNameInQuotes) {
    EXPECT_TRUE(CComUtils::CallAssignMaterial(&fake.editor, "Magnet", "N45"));
    EXPECT_TRANSCRIPT(fake.world, R"~(
        editor.AssignMaterial(
            ["NAME:Selections",
                "Selections:=", "Magnet",
                "AllowRegionDependentPartSelectionForPMLCreation:=", true,
                "AllowRegionSelectionForPMLCreation:=", true],
            ["NAME:Attributes",
                "MaterialValue:=", "\"N45\"",
                "SolveInside:=", true,
                "ShellElement:=", false,
                "ShellElementThickness:=", "nan ",
                "IsMaterialEditable:=", true,
                "UseMaterialAppearance:=", false,
                "IsLightweight:=", false])
    )~");
}

TEST_F(Modeler, CloneIsMadeUnderItsNewName) {
    EXPECT_TRUE(CComUtils::CallCloneMaterial(&fake.definitions, "N45", "N45_1"));
    EXPECT_TRANSCRIPT(fake.world, R"(definitions.CloneMaterial("N45", "N45_1"))");
}

TEST_F(Modeler, CloneNeedsABooleanTrue) {
    const auto clones = [&](const Answer& answer) {
        fake.definitions.On("CloneMaterial", answer);
        return CComUtils::CallCloneMaterial(&fake.definitions, "N45", "N45_1");
    };
    EXPECT_TRUE(clones(Flag(VARIANT_TRUE)));
    EXPECT_TRUE(clones(Flag(1))) << "any boolean other than 0";
    EXPECT_FALSE(clones(Flag(VARIANT_FALSE)));
    EXPECT_FALSE(clones(Nothing()));
    EXPECT_FALSE(clones(Long(-1)));
    EXPECT_FALSE(clones(Text(L"true")));
}

TEST_F(Modeler, SolvesInsideWhateverHasTheProperty) {
    fake.AddSolid(L"Magnet", L"\"N45\"");
    fake.AddSolid(L"Sheet", L"\"copper\"", {L"Name", L"solve inside"});
    fake.AddSolid(L"Core", L"\"iron\"");
    EXPECT_TRUE(CComUtils::SetSolveInside(&fake.editor));
    EXPECT_TRANSCRIPT(fake.world, R"~(
        editor.GetChildNames()
        editor.GetChildObject("Magnet")
        Magnet.GetPropNames()
        Magnet.SetPropValue("Solve Inside", true)
        editor.GetChildObject("Sheet")
        Sheet.GetPropNames()
        editor.GetChildObject("Core")
        Core.GetPropNames()
        Core.SetPropValue("Solve Inside", true)
    )~");
}

TEST_F(Modeler, SolveInsideStopsAtAMissingObjectOrAFailedWrite) {
    Object& magnet = fake.AddSolid(L"Magnet", L"\"N45\"");
    fake.AddSolid(L"Core", L"\"iron\"");
    magnet.On("SetPropValue", Fails());
    EXPECT_FALSE(CComUtils::SetSolveInside(&fake.editor));
    EXPECT_EQ(fake.world.Count("GetChildObject"), 1U);
    fake.editor.OnCall("GetChildObject", 1, NoObject());
    EXPECT_FALSE(CComUtils::SetSolveInside(&fake.editor));
    EXPECT_EQ(fake.world.Count("GetChildObject"), 2U);
}

TEST_F(Modeler, SolveInsideOfAnEmptyModelSucceeds) {
    EXPECT_TRUE(CComUtils::SetSolveInside(&fake.editor));
    fake.editor.On("GetChildNames", Fails());
    EXPECT_TRUE(CComUtils::SetSolveInside(&fake.editor)) << "a failed list looks like an empty one";
}

TEST_F(Modeler, VacuumIsLeftOut) {
    fake.AddSolid(L"Magnet", L"\"N45\"");
    fake.AddSolid(L"Air", L"\"vacuum\"");
    fake.AddSolid(L"Other", L"\"Vacuum\"");
    fake.AddSolid(L"Bare", L"vacuum");
    fake.AddSolid(L"Number", L"").On("GetPropValue", Long(1));
    fake.AddSolid(L"Broken", L"").On("GetPropValue", Fails());
    EXPECT_THAT(
        CComUtils::GetNonVacuumObjects(&fake.editor, {"Other", "Air", "Missing", "Bare", "Number", "Broken", "Magnet"}),
        ElementsAre("Other", "Bare", "Magnet"));
    EXPECT_EQ(fake.world.Count("GetPropValue"), 6U);
    EXPECT_EQ(Print(fake.world.Entries()[1].arguments[0]), R"("Material")");
    EXPECT_THAT(CComUtils::GetNonVacuumObjects(nullptr, {"Magnet"}), IsEmpty());
}

TEST_F(Modeler, ForceNamesItsFrameAsReference) {
    EXPECT_TRUE(CComUtils::CallAssignForce(&fake.parameterModule, "Rotor", {"Magnet", "Core"}));
    EXPECT_TRANSCRIPT(fake.world, R"~(
        VeltrixParameterSetup.AssignForce(
            ["NAME:Force_Rotor",
                "Reference CS:=", "Obj_CS_Rotor",
                "Is Virtual:=", true,
                "Objects:=", ["Magnet", "Core"]])
    )~");
}

TEST_F(Modeler, TorqueIsAssignedPerAxis) {
    EXPECT_TRUE(CComUtils::CallAssignTorque(&fake.parameterModule, "Rotor", {"Magnet"}));
    EXPECT_TRANSCRIPT(fake.world, R"~(
        VeltrixParameterSetup.AssignTorque(
            ["NAME:Torque_Rotor_X",
                "Coordinate System:=", "Obj_CS_Rotor",       # where force says "Reference CS:="
                "Is Virtual:=", true, "Is Positive:=", true,
                "Axis:=", "X",
                "Objects:=", ["Magnet"]])
        VeltrixParameterSetup.AssignTorque(
            ["NAME:Torque_Rotor_Y", "Coordinate System:=", "Obj_CS_Rotor",
                "Is Virtual:=", true, "Is Positive:=", true, "Axis:=", "Y", "Objects:=", ["Magnet"]])
        VeltrixParameterSetup.AssignTorque(
            ["NAME:Torque_Rotor_Z", "Coordinate System:=", "Obj_CS_Rotor",
                "Is Virtual:=", true, "Is Positive:=", true, "Axis:=", "Z", "Objects:=", ["Magnet"]])
    )~");
}

TEST_F(Modeler, FailedTorqueAboutYLeavesTheOneAboutX) {
    fake.parameterModule.OnCall("AssignTorque", 2, Fails());
    EXPECT_FALSE(CComUtils::CallAssignTorque(&fake.parameterModule, "Rotor", {"Magnet"}));
    EXPECT_EQ(fake.world.Count("AssignTorque"), 2U);
    EXPECT_EQ(fake.world.Entries()[0].kind, Entry::Kind::Called);
}

TEST_F(Modeler, LoadsOfNoObjectsHoldAnEmptyList) {
    EXPECT_TRUE(CComUtils::CallAssignForce(&fake.parameterModule, "Rotor", {}));
    EXPECT_EQ(Print(fake.world.Entries()[0].arguments[0].items.back()), "[]");
}

TEST_F(Modeler, UnitsAreSetWithoutRescaling) {
    EXPECT_TRUE(CComUtils::CallSetModelUnits(&fake.editor, "mm"));
    EXPECT_TRUE(CComUtils::CallSetModelUnits(&fake.editor, ""));
    EXPECT_TRUE(CComUtils::CallSetModelUnits(&fake.editor, "furlong"));
    EXPECT_TRANSCRIPT(fake.world, R"~(
        editor.SetModelUnits(["NAME:Units Parameter", "Units:=", "mm", "Rescale:=", false])
        editor.SetModelUnits(["NAME:Units Parameter", "Units:=", "", "Rescale:=", false])
        editor.SetModelUnits(["NAME:Units Parameter", "Units:=", "furlong", "Rescale:=", false])
    )~");
}

TEST_F(Modeler, ImportTakesTheMaterialsOfTheFile) {
    EXPECT_TRUE(CComUtils::CallImport(&fake.editor, ToAnsi(L"C:\\geometry\\\x00E9t\x00E9.obj")));
    EXPECT_EQ(fake.world.Entries()[0].arguments[0].items[4].text, L"C:\\geometry\\\x00E9t\x00E9.obj");
    fake.world.ClearJournal();
    EXPECT_TRUE(CComUtils::CallImport(&fake.editor, "a.obj"));
    EXPECT_TRANSCRIPT(fake.world, R"~(
        editor.Import(["NAME:NativeBodyParameters", "ImportMaterialNames:=", true, "SourceFile:=", "a.obj"])
    )~");
}

TEST_F(Modeler, RegionIsPaddedByVariables) {
    EXPECT_TRUE(CComUtils::CallAssignRegion(&fake.editor));
    EXPECT_TRANSCRIPT(fake.world, R"~(
        editor.CreateRegion(
            ["NAME:RegionParameters",
                "+XPaddingType:=", "Percentage Offset", "+XPadding:=", "RegionPaddingX",
                "-XPaddingType:=", "Percentage Offset", "-XPadding:=", "RegionPaddingX",
                "+YPaddingType:=", "Percentage Offset", "+YPadding:=", "RegionPaddingY",
                "-YPaddingType:=", "Percentage Offset", "-YPadding:=", "RegionPaddingY",
                "+ZPaddingType:=", "Percentage Offset", "+ZPadding:=", "RegionPaddingZ",
                "-ZPaddingType:=", "Percentage Offset", "-ZPadding:=", "RegionPaddingZ"],
            ["NAME:Attributes",
                "Name:=", "OuterRegion",
                "Flags:=", "Wireframe#",
                "Color:=", "(143 175 143)",
                "Transparency:=", 0.0,
                "PartCoordinateSystem:=", "Global",
                "UDMId:=", "",
                "MaterialValue:=", "\"vacuum\"",
                "SurfaceMaterialValue:=", "\"\"",
                "SolveInside:=", true,
                "ShellElement:=", false,
                "ShellElementThickness:=", "nan ",
                "IsMaterialEditable:=", true,
                "UseMaterialAppearance:=", false,
                "IsLightweight:=", false])
    )~");
    EXPECT_EQ(fake.world.Entries()[0].arguments[0].items.size(), 25U);
    EXPECT_EQ(fake.world.Entries()[0].arguments[1].items.size(), 29U);
}

TEST_F(Modeler, RegionIsMadeAgainWhereThereIsOne) {
    fake.AddSolid(L"OuterRegion", L"\"vacuum\"");
    EXPECT_TRUE(CComUtils::CallAssignRegion(&fake.editor));
    fake.editor.On("CreateRegion", Fails());
    EXPECT_FALSE(CComUtils::CallAssignRegion(&fake.editor)) << "the outcome is the desktop's";
    EXPECT_EQ(fake.world.Entries().size(), 2U);
}

TEST_F(Modeler, RegionIsWhatCountsAsVacuum) {
    EXPECT_TRUE(CComUtils::CallAssignRegion(&fake.editor));
    const Value* const material = FindKey(fake.world.Entries()[0].arguments[1], L"MaterialValue:=");
    ASSERT_NE(material, nullptr);
    fake.AddSolid(L"OuterRegion", material->text);
    EXPECT_THAT(CComUtils::GetNonVacuumObjects(&fake.editor, {"OuterRegion"}), IsEmpty());
}

} // namespace
