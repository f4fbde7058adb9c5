// Coordinate systems and placement: what makes the bodies move with six design variables.

#include "comutils/ComUtils.h"
#include "tests/support/FakeDesktop.h"
#include "tests/support/Transcript.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace fake;
using Transform = IKinoraVeltrixInterface::Transform;

class Placement : public testing::Test {
protected:
    Placement() { fake.editor.AddRef(); }
    ~Placement() override { fake.editor.Release(); }

    bool Move(const Transform& pose) { return CComUtils::CallMove(&fake.editor, pose, "Magnet"); }
    bool Rotate(const Transform& pose) { return CComUtils::CallRotate(&fake.editor, pose, "Magnet"); }

    FakeDesktop fake;
};

constexpr double infinity = std::numeric_limits<double>::infinity();

TEST_F(Placement, BodyGetsAFrameDrivenByItsVariablesAndAnOrientationInIt) {
    EXPECT_TRUE(CComUtils::CallCreateRelativeCS(&fake.editor, "Rotor"));
    EXPECT_TRANSCRIPT(fake.world, R"~(
        editor.GetRelativeCoordinateSystems()
        editor.CreateRelativeCS(
            ["NAME:RelativeCSParameters",
                "Mode:=", "Axis/Position",
                "OriginX:=", "Rotor_X",
                "OriginY:=", "Rotor_Y",
                "OriginZ:=", "Rotor_Z",
                # first and second row of Rz(Theta) * Ry(Phi) * Rx(Psi)
                "XAxisXvec:=", "cos(Rotor_Phi)*cos(Rotor_Theta)",
                "XAxisYvec:=", "sin(Rotor_Psi)*sin(Rotor_Phi)*cos(Rotor_Theta)-cos(Rotor_Psi)*sin(Rotor_Theta)",
                "XAxisZvec:=", "cos(Rotor_Psi)*sin(Rotor_Phi)*cos(Rotor_Theta)+sin(Rotor_Psi)*sin(Rotor_Theta)",
                "YAxisXvec:=", "cos(Rotor_Phi)*sin(Rotor_Theta)",
                "YAxisYvec:=", "sin(Rotor_Psi)*sin(Rotor_Phi)*sin(Rotor_Theta)+cos(Rotor_Psi)*cos(Rotor_Theta)",
                "YAxisZvec:=", "cos(Rotor_Psi)*sin(Rotor_Phi)*sin(Rotor_Theta)-sin(Rotor_Psi)*cos(Rotor_Theta)"],
            ["NAME:Attributes", "Name:=", "Obj_CS_Rotor"])
        editor.CreateRelativeCS(
            ["NAME:RelativeCSParameters",
                "Mode:=", "Axis/Position",
                "Reference CS:=", "Obj_CS_Rotor",
                "OriginX:=", "0.000000Meter", "OriginY:=", "0.000000Meter", "OriginZ:=", "0.000000Meter",
                "XAxisXvec:=", "1mm", "XAxisYvec:=", "0mm", "XAxisZvec:=", "0mm",
                "YAxisXvec:=", "0mm", "YAxisYvec:=", "1mm", "YAxisZvec:=", "0mm"],
            ["NAME:Attributes", "Name:=", "Mag_CS_Rotor"])
    )~");
}

TEST_F(Placement, BodyWithItsFrameIsTakenAsSetUp) {
    fake.coordinateSystems = {L"Obj_CS_Rotor"};
    EXPECT_TRUE(CComUtils::CallCreateRelativeCS(&fake.editor, "Rotor")) << "also without its Mag_CS";
    EXPECT_TRANSCRIPT(fake.world, "editor.GetRelativeCoordinateSystems()");
}

TEST_F(Placement, OrientationAloneDoesNotCountAsSetUp) {
    fake.coordinateSystems = {L"Mag_CS_Rotor", L"obj_cs_rotor", L"Obj_CS_Rotor2"};
    EXPECT_TRUE(CComUtils::CallCreateRelativeCS(&fake.editor, "Rotor"));
    EXPECT_EQ(fake.world.Count("CreateRelativeCS"), 2U);
}

TEST_F(Placement, ListOfFramesThatFailsCountsAsEmpty) {
    fake.editor.On("GetRelativeCoordinateSystems", Fails());
    EXPECT_TRUE(CComUtils::CallCreateRelativeCS(&fake.editor, "Rotor"));
    EXPECT_EQ(fake.world.Count("CreateRelativeCS"), 2U);
}

TEST_F(Placement, FailedFrameEndsIt) {
    fake.editor.OnCall("CreateRelativeCS", 1, Fails());
    EXPECT_FALSE(CComUtils::CallCreateRelativeCS(&fake.editor, "Rotor"));
    EXPECT_EQ(fake.world.Count("CreateRelativeCS"), 1U);
}

TEST_F(Placement, FailedOrientationIsTheResult) {
    fake.editor.OnCall("CreateRelativeCS", 2, Fails());
    EXPECT_FALSE(CComUtils::CallCreateRelativeCS(&fake.editor, "Rotor"));
    EXPECT_EQ(fake.world.Count("CreateRelativeCS"), 2U);
}

TEST_F(Placement, WorkingFrameIsSetByName) {
    EXPECT_TRUE(CComUtils::CallSetWorkingCS(&fake.editor, "Global"));
    EXPECT_TRANSCRIPT(fake.world, R"~(editor.SetWCS(
        ["NAME:SetWCS Parameter", "Working Coordinate System:=", "Global", "RegionDepCSOk:=", true])
    )~");
}

TEST_F(Placement, ObjectAndItsDescendantsAreAttached) {
    Object& magnet = fake.AddSolid(L"Magnet", L"\"N45\"");
    Object& face = fake.AddChild(magnet, L"Face", {L"Name"});
    fake.AddChild(face, L"Edge", {L"Orientation"});
    fake.AddChild(magnet, L"Core", {L"Coordinate System"});
    magnet.AddRef();
    EXPECT_TRUE(CComUtils::RecurseSetCoordinateSystem(&magnet, "Rotor"));
    EXPECT_TRANSCRIPT(fake.world, R"~(
        Magnet.GetPropNames()
        Magnet.SetPropValue("Coordinate System", "Obj_CS_Rotor")
        Magnet.SetPropValue("Orientation", "Mag_CS_Rotor")
        Magnet.GetChildNames()
        Magnet.GetChildObject("Face")
        Magnet/Face.GetPropNames()          # has neither: not written, but its children are visited
        Magnet/Face.GetChildNames()
        Magnet/Face.GetChildObject("Edge")
        Magnet/Face/Edge.GetPropNames()
        Magnet/Face/Edge.SetPropValue("Orientation", "Mag_CS_Rotor")
        Magnet/Face/Edge.GetChildNames()
        Magnet.GetChildObject("Core")
        Magnet/Core.GetPropNames()
        Magnet/Core.SetPropValue("Coordinate System", "Obj_CS_Rotor")
        Magnet/Core.GetChildNames()
    )~");
    magnet.Release();
}

TEST_F(Placement, AttachingNothingSucceeds) {
    EXPECT_TRUE(CComUtils::RecurseSetCoordinateSystem(nullptr, "Rotor"));
}

TEST_F(Placement, AttachingEndsAtTheFirstFailedWriteOrMissingChild) {
    Object& magnet = fake.AddSolid(L"Magnet", L"\"N45\"");
    Object& face = fake.AddChild(magnet, L"Face", {L"Orientation"});
    magnet.AddRef();
    magnet.OnCall("SetPropValue", 1, Fails());
    EXPECT_FALSE(CComUtils::RecurseSetCoordinateSystem(&magnet, "Rotor"));
    EXPECT_EQ(fake.world.Count("SetPropValue"), 1U);
    magnet.OnCall("SetPropValue", 2, Fails());
    EXPECT_FALSE(CComUtils::RecurseSetCoordinateSystem(&magnet, "Rotor"));
    EXPECT_EQ(fake.world.Count("GetChildNames"), 0U);
    face.On("SetPropValue", Fails());
    EXPECT_FALSE(CComUtils::RecurseSetCoordinateSystem(&magnet, "Rotor"));
    magnet.On("GetChildObject", NoObject());
    EXPECT_FALSE(CComUtils::RecurseSetCoordinateSystem(&magnet, "Rotor"));
    magnet.Release();
}

TEST_F(Placement, AttachingAnObjectThatIsItsOwnChildFails) {
    Object& magnet = fake.AddSolid(L"Magnet", L"\"N45\"");
    magnet.On("GetChildNames", Texts({L"Magnet"})).On("GetChildObject", Reference(magnet));
    magnet.AddRef();
    EXPECT_FALSE(CComUtils::RecurseSetCoordinateSystem(&magnet, "Rotor"));
    EXPECT_EQ(magnet.References(), 1);
    magnet.Release();
}

TEST_F(Placement, FailedNameListsCountAsEmpty) {
    Object& magnet = fake.AddSolid(L"Magnet", L"\"N45\"");
    fake.AddChild(magnet, L"Face", {L"Orientation"});
    magnet.On("GetPropNames", Fails()).On("GetChildNames", Fails());
    magnet.AddRef();
    EXPECT_TRUE(CComUtils::RecurseSetCoordinateSystem(&magnet, "Rotor"));
    EXPECT_EQ(fake.world.Count("SetPropValue"), 0U);
    magnet.Release();
}

TEST_F(Placement, BodyAtTheOriginWithoutARotationMakesNoCall) {
    EXPECT_TRUE(Move({"Rotor", {0.0, -0.0, 0.0}, {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0}}));
    EXPECT_TRUE(Rotate({"Rotor", {0.0, 0.0, 0.0}, {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0}}));
    EXPECT_TRANSCRIPT(fake.world, "");
}

TEST_F(Placement, MoveTakesTheObjectBackByTheTranslation) {
    EXPECT_TRUE(Move({"Rotor", {0.0, -2.5, 0.0000004}, {}}));
    EXPECT_TRANSCRIPT(fake.world, R"~(
        editor.Move(
            ["NAME:Selections", "Selections:=", "Magnet", "NewPartsModelFlag:=", "Model"],
            ["NAME:TranslateParameters",
                "TranslateVectorX:=", "-0.000000Meter",      # the negated zero
                "TranslateVectorY:=", "2.500000Meter",
                "TranslateVectorZ:=", "-0.000000Meter"])
    )~");
}

TEST_F(Placement, MoveOfASingleCoordinateIsMade) {
    EXPECT_TRUE(Move({"Rotor", {0.0, 0.0, 1e-300}, {}})) << "exactly (0, 0, 0) only makes no call";
    EXPECT_EQ(fake.world.Count("Move"), 1U);
}

TEST_F(Placement, RotateTurnsAboutXThenYThenZByBareRadians) {
    // Rz(0.3) * Ry(0.2) * Rx(0.1)
    const double cz = std::cos(0.3), sz = std::sin(0.3), cy = std::cos(0.2), sy = std::sin(0.2), cx = std::cos(0.1),
                 sx = std::sin(0.1);
    EXPECT_TRUE(Rotate({"Rotor",
                        {},
                        {cz * cy, cz * sy * sx - sz * cx, cz * sy * cx + sz * sx, sz * cy, sz * sy * sx + cz * cx,
                         sz * sy * cx - cz * sx, -sy, cy * sx, cy * cx}}));
    EXPECT_TRANSCRIPT(fake.world, R"~(
        editor.Rotate(
            ["NAME:Selections", "Selections:=", "Magnet", "NewPartsModelFlag:=", "Model"],
            ["NAME:RotateParameters", "RotateAxis:=", "X", "RotateAngle:=", "0.100000"])
        editor.Rotate(
            ["NAME:Selections", "Selections:=", "Magnet", "NewPartsModelFlag:=", "Model"],
            ["NAME:RotateParameters", "RotateAxis:=", "Y", "RotateAngle:=", "0.200000"])
        editor.Rotate(
            ["NAME:Selections", "Selections:=", "Magnet", "NewPartsModelFlag:=", "Model"],
            ["NAME:RotateParameters", "RotateAxis:=", "Z", "RotateAngle:=", "0.300000"])
    )~");
}

TEST_F(Placement, RotationAboutXAloneMakesOneCall) {
    EXPECT_TRUE(Rotate({"Rotor", {}, {1.0, 0.0, 0.0, 0.0, 0.0, -1.0, 0.0, 1.0, 0.0}}));
    EXPECT_TRANSCRIPT(fake.world, R"~(
        editor.Rotate(
            ["NAME:Selections", "Selections:=", "Magnet", "NewPartsModelFlag:=", "Model"],
            ["NAME:RotateParameters", "RotateAxis:=", "X", "RotateAngle:=", "1.570796"])
    )~");
}

TEST_F(Placement, DegenerateRotationIsPlusHalfPiWhateverItsSign) {
    // m0 = m3 = 0; psi = atan2(m1, m4)
    for (const double m6 : {1.0, -1.0}) {
        fake.world.ClearJournal();
        EXPECT_TRUE(Rotate({"Rotor", {}, {0.0, 0.5, 0.0, -0.0, 0.5, 0.0, m6, 0.0, 0.0}}));
        EXPECT_TRANSCRIPT(fake.world, R"~(
            editor.Rotate(
                ["NAME:Selections", "Selections:=", "Magnet", "NewPartsModelFlag:=", "Model"],
                ["NAME:RotateParameters", "RotateAxis:=", "X", "RotateAngle:=", "0.785398"])
            editor.Rotate(
                ["NAME:Selections", "Selections:=", "Magnet", "NewPartsModelFlag:=", "Model"],
                ["NAME:RotateParameters", "RotateAxis:=", "Y", "RotateAngle:=", "1.570796"])
        )~");
    }
}

TEST_F(Placement, NearlyDegenerateRotationIsNot) {
    EXPECT_TRUE(Rotate({"Rotor", {}, {1e-300, 0.0, 0.0, 0.0, 1.0, 0.0, 1.0, 0.0, 0.0}}));
    ASSERT_EQ(fake.world.Entries().size(), 1U);
    EXPECT_EQ(fake.world.Entries()[0].arguments[1].items[4].text, L"-1.570796") << "theta is asin(-m6) here";
}

TEST_F(Placement, FailedRotationEndsItAndKeepsTheEarlierOne) {
    fake.editor.OnCall("Rotate", 2, Fails());
    EXPECT_FALSE(Rotate({"Rotor", {}, {0.5, 0.0, 0.0, 0.5, 0.5, 0.0, 0.5, 0.5, 0.5}}));
    EXPECT_EQ(fake.world.Count("Rotate"), 2U);
}

TEST_F(Placement, NullEditorFailsOnlyWhereACallIsDue) {
    EXPECT_FALSE(CComUtils::CallMove(nullptr, {"Rotor", {1.0, 0.0, 0.0}, {}}, "Magnet"));
    EXPECT_TRUE(CComUtils::CallMove(nullptr, {"Rotor", {}, {}}, "Magnet"));
    EXPECT_TRUE(CComUtils::CallRotate(nullptr, Transform{}, "Magnet"));
}

TEST_F(Placement, NumbersThatAreNoneTravelAsTheCLibraryWritesThem) {
    EXPECT_TRUE(Move({"Rotor", {-infinity, 1e15, 1.0}, {}}));
    const std::vector<Value>& parameters = fake.world.Entries()[0].arguments[1].items;
    EXPECT_THAT(ToUtf8(parameters[2].text), testing::AnyOf("infMeter", "1.#INF00Meter"));
    EXPECT_EQ(parameters[4].text, L"-1000000000000000.000000Meter");
}

TEST_F(Placement, LargestNumbersKeepAllTheirDigits) {
    EXPECT_TRUE(Move({"Rotor", {-1e300, 0.0, 0.0}, {}}));
    const std::wstring number = fake.world.Entries()[0].arguments[1].items[2].text;
    EXPECT_EQ(number.size(), 301 + 7 + 5U); // digits, ".000000", "Meter"
    EXPECT_EQ(number.substr(0, 17), L"10000000000000000");
}

TEST_F(Placement, NotANumberIsNotTheOrigin) {
    EXPECT_TRUE(Move({"Rotor", {std::numeric_limits<double>::quiet_NaN(), 0.0, 0.0}, {}}));
    EXPECT_EQ(fake.world.Count("Move"), 1U);
}

} // namespace
