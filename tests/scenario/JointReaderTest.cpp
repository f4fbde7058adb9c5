#include "scenario/JointReader.h"

#include "tests/scenario/ScenarioFixture.h"
#include "tests/support/Pi.h"

#include <cmath>

namespace kinora::scenario {
namespace {

/// The bodies of the smallest scenario: a rotor with a mass and an inertia, and a stator beside it.
class JointReaderCases : public ScenarioFixture {
protected:
    static json Document(const json& joint) {
        json document = With(joint);
        document["bodies"][0]["position"] = {0.1, 0.2, 0.3};
        document["bodies"][0]["inertia"] = {1e-5, 2e-5, 3e-5};
        document["bodies"].push_back({{"name", "stator"}, {"objects", {"yoke"}}});
        document["materials"] = {{"magnet", {{"name", "magnet_1T"}}}, {"yoke", {{"name", "iron"}}}};
        return document;
    }

    static json Joint(const char* type) {
        json joint = {{"name", "j"}, {"type", type}, {"bodies", {"rotor"}}};
        const std::string text = type;
        if (text != "ball" && text != "free") {
            joint["axis"] = {0, 0, 2};
        }
        return joint;
    }

    static json Prescribed(const char* type, const json& motion) {
        json joint = Joint(type);
        joint["prescribed"] = motion;
        return Document(joint);
    }

    static json Free(const char* type, const json& motion = json::object()) {
        json joint = Joint(type);
        joint["free"] = motion;
        return Document(joint);
    }

    /// A cylinder that is free both ways.
    static json Cylinder() { return Free("cylinder", {{"turn", json::object()}, {"slide", json::object()}}); }

    scenario::Joint JointOf(const json& document) const { return Read(document).joints.at(0); }
};

TEST_F(JointReaderCases, ReadsACylinder) {
    json document = Free("cylinder", {{"slide", {{"start", "2*mm"}, {"stops", {{"min", -1}, {"max", 1}}}}}});
    document["joints"][0]["prescribed"] = {{"turn", {{"expression", "300*t"}}}};
    document["joints"][0]["point"] = {1, 2, 3};
    const scenario::Joint joint = JointOf(document);
    EXPECT_EQ(joint.type, JointType::Cylinder);
    EXPECT_TRUE(joint.HasAxis());
    EXPECT_TRUE(joint.IsFree());
    EXPECT_EQ(joint.axis_W, Vector::UnitZ());
    EXPECT_EQ(joint.p_WJ_W, Vector(1.0, 2.0, 3.0));
    ASSERT_EQ(joint.coordinates.size(), 2u);
    EXPECT_EQ(joint.coordinates[0].kind, Coordinate::Kind::Turn);
    EXPECT_EQ(std::get<PrescribedMotion>(joint.coordinates[0].motion).Evaluate(2.0), 600.0);
    EXPECT_EQ(joint.coordinates[1].kind, Coordinate::Kind::Slide);
    EXPECT_EQ(std::get<FreeMotion>(joint.coordinates[1].motion).start, 0.002);
    EXPECT_EQ(std::get<FreeMotion>(joint.coordinates[1].motion).stops.max, 1.0);
}

TEST_F(JointReaderCases, IsNotFreeWhenEveryCoordinateIsPrescribed) {
    const json rest = {{"expression", 0}};
    EXPECT_FALSE(JointOf(Prescribed("hinge", rest)).IsFree());
    EXPECT_FALSE(JointOf(Prescribed("cylinder", {{"turn", rest}, {"slide", rest}})).IsFree());
    EXPECT_FALSE(JointOf(Prescribed("free", {{"x", rest}})).IsFree());
    EXPECT_TRUE(JointOf(Cylinder()).IsFree());
    EXPECT_TRUE(JointOf(Free("free")).IsFree());
}

TEST_F(JointReaderCases, ReadsABall) {
    json document = Free(
        "ball", {{"turn", {{"quaternion", {0, 0, 1, 0}}}}, {"angularVelocity", {1, "2*pi", 3}}, {"angularDamping", 4}});
    document["joints"][0]["point"] = {0, 0, "50*mm"};
    const scenario::Joint joint = JointOf(document);
    EXPECT_EQ(joint.type, JointType::Ball);
    EXPECT_FALSE(joint.HasAxis());
    EXPECT_TRUE(joint.coordinates.empty());
    EXPECT_EQ(joint.p_WJ_W, Vector(0.0, 0.0, 0.05));
    const auto& placement = std::get<FreePlacement>(joint.placement);
    EXPECT_EQ(placement.turn.coeffs(), Quaternion(0.0, 0.0, 1.0, 0.0).coeffs());
    EXPECT_EQ(placement.angularVelocity_W, Vector(1.0, 2.0 * pi, 3.0));
    EXPECT_EQ(placement.angularDamping, 4.0);
}

TEST_F(JointReaderCases, ReadsAPrescribedBall) {
    const scenario::Joint joint =
        JointOf(Prescribed("ball", {{"turn", {{"axis", {0, 0, 3}}, {"expression", "300*t"}}}}));
    EXPECT_EQ(joint.p_WJ_W, Vector::Zero());
    const auto& placement = std::get<PrescribedPlacement>(joint.placement);
    EXPECT_EQ(placement.turn.AngularVelocity(1.0), Vector(0.0, 0.0, 300.0));
    EXPECT_EQ(placement.way[0].Evaluate(1.0), 0.0);
}

TEST_F(JointReaderCases, ReadsAFreeJoint) {
    const scenario::Joint joint = JointOf(Free("free", {{"displacement", {"1*mm", 0, 0}},
                                                        {"turn", {{"axis", {0, 2, 0}}, {"angle", "90*deg"}}},
                                                        {"velocity", {1, 2, 3}},
                                                        {"angularVelocity", {4, 5, 6}},
                                                        {"damping", 7},
                                                        {"angularDamping", 8}}));
    EXPECT_EQ(joint.type, JointType::Free);
    // Where its first body is drawn.
    EXPECT_EQ(joint.p_WJ_W, Vector(0.1, 0.2, 0.3));
    const auto& placement = std::get<FreePlacement>(joint.placement);
    EXPECT_EQ(placement.way_W, Vector(0.001, 0.0, 0.0));
    EXPECT_LT((RotationVector(placement.turn) - Vector(0.0, pi / 2.0, 0.0)).norm(), 1e-15);
    EXPECT_EQ(placement.velocity_W, Vector(1.0, 2.0, 3.0));
    EXPECT_EQ(placement.angularVelocity_W, Vector(4.0, 5.0, 6.0));
    EXPECT_EQ(placement.damping, 7.0);
    EXPECT_EQ(placement.angularDamping, 8.0);
}

TEST_F(JointReaderCases, ReadsAPrescribedFreeJoint) {
    json document =
        Prescribed("free", {{"y", {{"expression", "5*mm*t"}}},
                            {"z", {{"table", {{0, 0}, {1, 1}}}}},
                            {"turn", {{"quaternions", {{0, 1, 0, 0, 0}, {1, "cos(45*deg)", "sin(45*deg)", 0, 0}}}}}});
    document["joints"][0]["point"] = {1, 1, 1};
    const scenario::Joint joint = JointOf(document);
    EXPECT_EQ(joint.p_WJ_W, Vector(1.0, 1.0, 1.0));
    const auto& placement = std::get<PrescribedPlacement>(joint.placement);
    EXPECT_EQ(placement.way[0].Evaluate(2.0), 0.0);
    EXPECT_EQ(placement.way[1].Evaluate(2.0), 0.01);
    EXPECT_EQ(placement.way[2].Evaluate(0.5), 0.5);
    EXPECT_LT((placement.turn.AngularVelocity(0.5) - Vector(pi / 2.0, 0.0, 0.0)).norm(), 1e-15);
}

TEST_F(JointReaderCases, ReadsATableOfAnglesAboutAnAxis) {
    const scenario::Joint joint =
        JointOf(Prescribed("ball", {{"turn", {{"axis", {1, 0, 0}}, {"table", {{0, 0}, {2, "4*pi"}}}}}}));
    EXPECT_EQ(std::get<PrescribedPlacement>(joint.placement).turn.SweptBetween(0.0, 2.0), Vector(4.0 * pi, 0.0, 0.0));
}

TEST_F(JointReaderCases, NormalisesQuaternionsThatAreNearlyOneLong) {
    const scenario::Joint joint = JointOf(Free("ball", {{"turn", {{"quaternion", {0.7071, 0.7071, 0, 0}}}}}));
    const Quaternion turn = std::get<FreePlacement>(joint.placement).turn;
    EXPECT_NEAR(turn.norm(), 1.0, 1e-15);
    EXPECT_NEAR(turn.w(), std::sqrt(0.5), 1e-15);
}

// Keys that a type has not.

TEST_F(JointReaderCases, NamesTheTypeThatHasNoSuchKey) {
    json document = Free("ball");
    document["joints"][0]["axis"] = {0, 0, 1};
    EXPECT_EQ(FindingsOf(document),
              "/joints/0/axis: a ball and a free joint turn about every axis and have none; remove it.");
    EXPECT_EQ(FindingsOf(Free("hinge", {{"slide", json::object()}})),
              "/joints/0/free/slide: a hinge has no \"slide\" here; it may have \"start\", \"speed\", \"inertia\", "
              "\"spring\", \"damping\", \"friction\", \"stops\" or \"load\".");
    EXPECT_EQ(FindingsOf(Prescribed("slider", {{"expression", 0}, {"x", {{"expression", 0}}}})),
              "/joints/0/prescribed/x: a slider has no \"x\" here; it may have \"expression\" or \"table\".");
    EXPECT_EQ(FindingsOf(Free("ball", {{"damping", 1}})),
              "/joints/0/free/damping: a ball has no \"damping\" here; it may have \"turn\", \"angularVelocity\" or "
              "\"angularDamping\".");
    EXPECT_EQ(FindingsOf(Free("free", {{"spring", {{"stiffness", 1}}}})),
              "/joints/0/free/spring: a free joint has no \"spring\" here; it may have \"displacement\", \"turn\", "
              "\"velocity\", \"angularVelocity\", \"damping\" or \"angularDamping\".");
    EXPECT_EQ(FindingsOf(Free("free", {{"turn", {{"axis", {0, 0, 1}}, {"angle", 1}, {"speed", 1}}}})),
              "/joints/0/free/turn/speed: a turn at the start has no \"speed\" here; it may have \"axis\" or "
              "\"angle\".");
    EXPECT_EQ(FindingsOf(Free("ball", {{"turn", {{"axis", {0, 0, 1}}, {"quaternion", {1, 0, 0, 0}}}}})),
              "/joints/0/free/turn/axis: a turn by a quaternion has no \"axis\" here; it may have \"quaternion\".");
    EXPECT_EQ(FindingsOf(Prescribed("free", {{"turn", {{"axis", {0, 0, 1}}, {"quaternions", {{0, 1, 0, 0, 0}}}}}})),
              "/joints/0/prescribed/turn/axis: a turn by quaternions has no \"axis\" here; it may have "
              "\"quaternions\".");
    EXPECT_EQ(FindingsOf(
                  Prescribed("ball", {{"x", {{"expression", 0}}}, {"turn", {{"axis", {0, 0, 1}}, {"expression", 0}}}})),
              "/joints/0/prescribed/x: a ball has no \"x\" here; it may have \"turn\".");
    json turn = Cylinder();
    turn["joints"][0]["free"]["turn"]["angle"] = 1;
    EXPECT_EQ(FindingsOf(turn),
              "/joints/0/free/turn/angle: the turn of a cylinder has no \"angle\" here; it may have \"start\", "
              "\"speed\", \"inertia\", \"spring\", \"damping\", \"friction\", \"stops\" or \"load\".");
}

TEST_F(JointReaderCases, NamesKeysThatAreMissing) {
    for (const char* type : {"slider", "hinge"}) {
        json document = Free(type);
        document["joints"][0].erase("axis");
        EXPECT_EQ(FindingsOf(document), "/joints/0: the key \"axis\" is missing.") << type;
    }
    json cylinder = Cylinder();
    cylinder["joints"][0].erase("axis");
    EXPECT_EQ(FindingsOf(cylinder), "/joints/0: the key \"axis\" is missing.");
    EXPECT_EQ(FindingsOf(Prescribed("ball", json::object())), "/joints/0/prescribed: the key \"turn\" is missing.");
    EXPECT_EQ(FindingsOf(Prescribed("free", json::object())),
              "/joints/0/prescribed: at least one of \"x\", \"y\", \"z\" or \"turn\" is wanted.");
    EXPECT_EQ(FindingsOf(Prescribed("hinge", json::object())),
              "/joints/0/prescribed: exactly one of \"expression\" or \"table\" is wanted.");
    EXPECT_EQ(FindingsOf(Prescribed("cylinder", {{"turn", json::object()}, {"slide", {{"expression", 0}}}})),
              "/joints/0/prescribed/turn: exactly one of \"expression\" or \"table\" is wanted.");
    EXPECT_EQ(FindingsOf(Prescribed("free", {{"turn", {{"expression", "t"}}}})),
              "/joints/0/prescribed/turn: the key \"axis\" is missing.");
    EXPECT_EQ(FindingsOf(Prescribed("free", {{"turn", {{"axis", {0, 0, 1}}}}})),
              "/joints/0/prescribed/turn: exactly one of \"expression\", \"table\" or \"quaternions\" is wanted.");
    EXPECT_EQ(FindingsOf(Free("free", {{"turn", json::object()}})),
              "/joints/0/free/turn: exactly one of \"angle\" or \"quaternion\" is wanted.");
    EXPECT_EQ(FindingsOf(Free("free", {{"turn", {{"angle", 1}}}})),
              "/joints/0/free/turn: the key \"axis\" is missing.");
}

TEST_F(JointReaderCases, WantsOneMotionUnlessItIsACylinder) {
    for (const char* type : {"ball", "free"}) {
        json document = Free(type);
        document["joints"][0]["prescribed"] = {{"turn", {{"axis", {0, 0, 1}}, {"expression", "t"}}}};
        EXPECT_EQ(FindingsOf(document), "/joints/0: exactly one of \"prescribed\" or \"free\" is wanted.") << type;
    }
}

TEST_F(JointReaderCases, WantsEveryCoordinateOfACylinderOnce) {
    json document = Cylinder();
    document["joints"][0]["prescribed"] = {{"turn", {{"expression", "t"}}}};
    EXPECT_EQ(FindingsOf(document),
              "/joints/0/free/turn: the turn of a cylinder stands in \"prescribed\" too; remove one of them.");
    document = Cylinder();
    document["joints"][0]["free"].erase("turn");
    EXPECT_EQ(FindingsOf(document),
              "/joints/0: the turn of a cylinder is missing; give \"turn\" in \"prescribed\" or in \"free\".");
    document = Cylinder();
    document["joints"][0]["free"].erase("slide");
    EXPECT_EQ(FindingsOf(document),
              "/joints/0: the slide of a cylinder is missing; give \"slide\" in \"prescribed\" or in \"free\".");
    document = Cylinder();
    document["joints"][0]["free"]["start"] = 1;
    EXPECT_EQ(FindingsOf(document),
              "/joints/0/free/start: a cylinder has no \"start\" here; it may have \"turn\" or \"slide\".");
    document = Cylinder();
    document["joints"][0]["free"].erase("turn");
    document["joints"][0]["prescribed"] = {{"turn", {{"quaternions", {{0, 1, 0, 0, 0}}}}}};
    EXPECT_EQ(FindingsOf(document),
              "/joints/0/prescribed/turn: exactly one of \"expression\" or \"table\" is wanted.\n"
              "/joints/0/prescribed/turn/quaternions: the turn of a cylinder has no \"quaternions\" here; it may have "
              "\"expression\" or \"table\".");
}

// Values.

TEST_F(JointReaderCases, RefusesQuaternionsThatAreNotOneLong) {
    EXPECT_EQ(FindingsOf(Free("ball", {{"turn", {{"quaternion", {0, 0, 0, 0}}}}})),
              "/joints/0/free/turn/quaternion: a quaternion must not be 0, 0, 0, 0; not turned is 1, 0, 0, 0.");
    EXPECT_EQ(FindingsOf(Free("free", {{"turn", {{"quaternion", {1, 1, 1, 1}}}}})),
              "/joints/0/free/turn/quaternion: the quaternion is 2 long and must be 1 long; of that direction it is "
              "0.5, 0.5, 0.5, 0.5 (w, x, y, z).");
    EXPECT_EQ(FindingsOf(Prescribed("ball", {{"turn", {{"quaternions", {{0, 1, 0, 0, 0}, {1, 0.7, 0.7, 0, 0}}}}}})),
              "/joints/0/prescribed/turn/quaternions/1: the quaternion is 0.989949 long and must be 1 long; of that "
              "direction it is 0.707106781, 0.707106781, 0, 0 (w, x, y, z).");
}

TEST_F(JointReaderCases, RefusesATableOfQuaternionsThatRunsBack) {
    EXPECT_EQ(FindingsOf(Prescribed("ball", {{"turn", {{"quaternions", {{2, 1, 0, 0, 0}, {1, 1, 0, 0, 0}}}}}})),
              "/joints/0/prescribed/turn/quaternions/1: time 1 s does not come after 2 s; times must ascend.");
}

TEST_F(JointReaderCases, RefusesNegativeDamping) {
    EXPECT_EQ(FindingsOf(Free("free", {{"damping", -1}, {"angularDamping", "-2*mm"}})),
              "/joints/0/free/angularDamping: -0.002 is negative; it must be 0 or more.\n"
              "/joints/0/free/damping: -1 is negative; it must be 0 or more.");
}

TEST_F(JointReaderCases, LooksAtPrescribedFormulasAtEveryStep) {
    EXPECT_EQ(FindingsOf(Prescribed("free", {{"x", {{"expression", "1/t"}}},
                                             {"turn", {{"axis", {0, 0, 1}}, {"expression", "log(t-0.5)"}}}})),
              "/joints/0/prescribed/turn/expression: \"log(t-0.5)\" is not a finite number at 0 s.\n"
              "/joints/0/prescribed/x/expression: \"1/t\" is not a finite number at 0 s.");
    EXPECT_EQ(FindingsOf(Prescribed("free", {{"z", {{"expression", "2000*t"}}}})),
              "/joints/0/prescribed/z/expression: at 0.51 s, 1020 m is farther than 1000 m; lengths are metres: write "
              "\"12*mm\" for 12 millimetres.");
    EXPECT_EQ(
        FindingsOf(Prescribed("free", {{"z", {{"expression", "2*x"}}}})),
        "/joints/0/prescribed/z/expression: formula \"2*x\", column 3: \"x\" is not known here; the only variable "
        "is t");
}

TEST_F(JointReaderCases, RefusesANewKindOfJointThatIsCalledLikeABody) {
    json document = Free("ball");
    document["joints"][0]["name"] = "Stator";
    EXPECT_EQ(FindingsOf(document),
              "/joints/0/name: a body is called \"stator\" already (upper and lower case count as "
              "the same).");
    // A hinge always could be.
    document["joints"][0]["type"] = "hinge";
    document["joints"][0]["axis"] = {0, 0, 1};
    EXPECT_EQ(FindingsOf(document), "no error");
}

// Masses and moments of inertia.

TEST_F(JointReaderCases, RefusesAFreeJointWithoutAMass) {
    json document = Free("free");
    document["bodies"][0]["mass"] = 0;
    EXPECT_EQ(FindingsOf(document), "/joints/0/free: nothing on this joint has a mass; give it to the bodies.");
    document["bodies"][0]["mass"] = -1;
    EXPECT_EQ(FindingsOf(document), "/bodies/0/mass: -1 is negative; it must be 0 or more.");
    // What is prescribed needs none.
    EXPECT_EQ(FindingsOf(Prescribed("free", {{"x", {{"expression", 0}}}})), "no error");
}

TEST_F(JointReaderCases, RefusesACylinderWithoutInertia) {
    json document = Cylinder();
    document["bodies"][0]["mass"] = 0;
    document["bodies"][0].erase("inertia");
    EXPECT_EQ(
        FindingsOf(document),
        "/joints/0/free/slide: nothing on this joint has a mass; give it to the bodies, or give \"inertia\" here.\n"
        "/joints/0/free/turn: nothing on this joint has a moment of inertia; give it to the bodies, or give "
        "\"inertia\" here.");
    document["joints"][0]["free"] = {{"turn", {{"inertia", 1}}}, {"slide", {{"inertia", 1}}}};
    EXPECT_EQ(FindingsOf(document), "no error");
}

TEST_F(JointReaderCases, RefusesMomentsOfInertiaThatNoBodyHas) {
    json document = Free("free");
    document["bodies"][0]["inertia"] = {1e-5, 4e-5, 2e-5};
    EXPECT_EQ(
        FindingsOf(document),
        "/bodies/0/inertia: the largest moment of inertia, 4e-05, is more than the sum of the two others, 3e-05: no "
        "rigid body is like that, and joint \"j\" turns this one about every axis; correct them.");
    // A disc without thickness is at the limit.
    document["bodies"][0]["inertia"] = {0.1, 0.2, "0.1+0.2"};
    EXPECT_EQ(FindingsOf(document), "no error");
    // A hinge needs one moment alone.
    document["bodies"][0]["inertia"] = {0, 0, 1};
    document["joints"][0] = Free("hinge")["joints"][0];
    EXPECT_EQ(FindingsOf(document), "no error");
}

TEST_F(JointReaderCases, RefusesAnAxisThatNothingHasInertiaAbout) {
    json document = Free("free");
    document["bodies"][0].erase("inertia");
    EXPECT_EQ(FindingsOf(document), "/joints/0/free: nothing on this joint has a moment of inertia; give it to the "
                                    "bodies.");
    // A rod along its y axis, which is drawn along global z.
    document["bodies"][0]["inertia"] = {1, 0, 1};
    document["bodies"][0]["rotation"] = {{"axis", {1, 0, 0}}, {"angle", "90*deg"}};
    EXPECT_EQ(FindingsOf(document), "/joints/0/free: nothing on this joint has a moment of inertia about 0, 0, 1 (in "
                                    "global axes); give it to the bodies.");
    // A ball somewhere beside the rod gives its mass an arm.
    document["joints"][0]["type"] = "ball";
    EXPECT_EQ(FindingsOf(document), "no error");
    document["joints"][0]["point"] = {0.1, 0.2, 5};
    EXPECT_EQ(FindingsOf(document), "/joints/0/free: nothing on this joint has a moment of inertia about 0, 0, 1 (in "
                                    "global axes); give it to the bodies.");
}

TEST_F(JointReaderCases, CountsTheBodiesOfAJointTogether) {
    json document = Free("free");
    document["bodies"][0].erase("inertia");
    document["bodies"][1]["mass"] = 1;
    document["joints"][0]["bodies"] = {"rotor", "stator"};
    // Two points on a line that leads through the origin.
    EXPECT_EQ(FindingsOf(document), "/joints/0/free: nothing on this joint has a moment of inertia about 0.267, 0.535, "
                                    "0.802 (in global axes); give it to the bodies.");
    document["bodies"].push_back(
        {{"name", "weight"}, {"objects", json::array()}, {"mass", 1}, {"position", {0, 0, 1}}});
    document["joints"][0]["bodies"].push_back("weight");
    EXPECT_EQ(FindingsOf(document), "no error");
}

TEST_F(JointReaderCases, FindsNoSecondFaultWithANumberThatIsWrong) {
    const json motion = {{"displacement", {0, 0, 0}}, {"turn", {{"axis", {0, 0, 1}}, {"angle", 1}}}, {"damping", 0}};
    for (const char* pointer : {"/bodies/0/mass", "/bodies/0/inertia/0", "/bodies/0/position/1", "/joints/0/point/0",
                                "/joints/0/free/displacement/2", "/joints/0/free/turn/axis/0",
                                "/joints/0/free/turn/angle", "/joints/0/free/damping"}) {
        json document = Free("free", motion);
        document["joints"][0]["point"] = {0, 0, 0};
        document[json::json_pointer(pointer)] = "oops";
        EXPECT_EQ(FindingsOf(document),
                  std::string(pointer) + ": formula \"oops\", column 1: \"oops\" is not known here");
    }
    json document = Free("ball");
    document["bodies"][0]["inertia"] = {-1, 1, 1};
    EXPECT_EQ(FindingsOf(document), "/bodies/0/inertia: moments of inertia must be 0 or more.");
    document = Free("ball");
    document["bodies"][0].erase("inertia");
    document["joints"][0]["bodies"] = {"rotr"};
    EXPECT_EQ(FindingsOf(document), "/joints/0/bodies/0: there is no body \"rotr\". Did you mean \"rotor\"?");
}

// Rotations of bodies.

TEST_F(JointReaderCases, ReadsARotationFromAxes) {
    json document = Smallest();
    document["bodies"][0]["rotation"] = {{"axes", {{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}}};
    const Matrix R_WB = Read(document).bodies[0].X_WB0.R_WB;
    EXPECT_EQ(R_WB.col(0), Vector::UnitY());
    EXPECT_EQ(R_WB.col(1), Vector::UnitZ());
    EXPECT_EQ(R_WB.col(2), Vector::UnitX());
}

TEST_F(JointReaderCases, StraightensAxesThatAreRounded) {
    json document = Smallest();
    document["bodies"][0]["rotation"] = {{"axes", {{0.8660254, 0.5, 0}, {-0.5, 0.8660254, 0}, {0, 0, 1}}}};
    const Matrix R_WB = Read(document).bodies[0].X_WB0.R_WB;
    EXPECT_LT((R_WB * R_WB.transpose() - Matrix::Identity()).norm(), 1e-15);
    EXPECT_LT((R_WB - Rotation(Vector::UnitZ(), pi / 6.0)).norm(), 1e-7);
}

TEST_F(JointReaderCases, RefusesAxesThatAreNoFrame) {
    const auto findings = [this](const json& rotation) {
        json document = Smallest();
        document["bodies"][0]["rotation"] = rotation;
        return FindingsOf(document);
    };
    EXPECT_EQ(findings({{"axes", {{0.866, 0.5, 0}, {-0.5, 0.866, 0}, {0, 0, 1}}}}),
              "/bodies/0/rotation/axes: the axes are off by 4.4e-05 from being at right angles and 1 long; the nearest "
              "right ones are [[0.866019053, 0.500011, 0], [-0.500011, 0.866019053, 0], [0, 0, 1]].");
    EXPECT_EQ(findings({{"axes", {{2, 0, 0}, {0, 1, 0}, {0, 0, 1}}}}),
              "/bodies/0/rotation/axes: the axes are off by 3 from being at right angles and 1 long; give three such "
              "axes, or \"axis\" and \"angle\".");
    EXPECT_EQ(findings({{"axes", {{1, 0, 0}, {0, 1, 0}, {0, 0, -1}}}}),
              "/bodies/0/rotation/axes: the axes are left-handed; reverse one of them, or swap two.");
    EXPECT_EQ(findings({{"axes", {{1, 0, 0}, {0, 1, 0}, {0, 0, "oops"}}}}),
              "/bodies/0/rotation/axes/2/2: formula \"oops\", column 1: \"oops\" is not known here");
    EXPECT_EQ(findings({{"axes", {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, {"angle", 1}}),
              "/bodies/0/rotation: exactly one of \"angle\" or \"axes\" is wanted.");
    EXPECT_EQ(findings({{"axis", {1, 0, 0}}}), "/bodies/0/rotation: one of \"angle\" or \"axes\" is wanted.");
    EXPECT_EQ(findings({{"angle", 1}}), "/bodies/0/rotation: the key \"axis\" is missing.");
    EXPECT_EQ(findings({{"axes", {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}}, {"axis", {1, 0, 0}}}),
              "/bodies/0/rotation/axis: a rotation by axes has no \"axis\" here; it may have \"axes\".");
}

} // namespace
} // namespace kinora::scenario
