// What the solver is given of a design's objects: which take part, in which body, and with what material.
#include "simulator/analysis/FieldModel.h"

#include "simulator/analysis/KeptSolver.h"
#include "simulator/model/DesktopError.h"
#include "tests/simulator/automation/Desk.h"
#include "tests/simulator/model/Shapes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <optional>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using vantor::model::Coercivity;
using vantor::solver::Magnet;

class FieldModel : public testing::Test {
protected:
    /// Cubes of 10 mm in a row, each of the material of its name.
    void Create(const std::vector<std::string>& materials) {
        std::string text;
        int place = 0;
        for (const auto& material : materials) {
            text += shapes::CubeObj(material, material, place, 10);
            place += 20;
        }
        m_desk.Create(text);
    }

    void Define(const std::string& name, double relativePermeability, std::optional<Coercivity> coercivity = {}) {
        m_desk.world->library[name] = {name, relativePermeability, coercivity};
    }

    vantor::analysis::FieldModel Build() {
        const vantor::model::Design& design = *m_desk.world->projects.front()->designs.front();
        return vantor::analysis::BuildFieldModel(
            *m_desk.world->projects.front(), m_desk.world->library, design, design.variables, m_copies,
            [this](vantor::model::Severity, const std::string& text) { m_remarks.push_back(text); });
    }

    std::string Complaint() {
        try {
            Build();
        } catch (const vantor::model::DesktopError& error) {
            EXPECT_EQ(error.Code(), vantor::model::ErrorCode::SolverData);
            return error.what();
        }
        return "none";
    }

    static std::vector<std::string> Names(const vantor::solver::Body& body) {
        std::vector<std::string> names;
        for (const auto& magnet : body.magnets) {
            names.push_back(magnet.name);
        }
        return names;
    }

    desk::Desk m_desk;
    vantor::analysis::SolverCopies m_copies;
    std::vector<std::string> m_remarks;
};

TEST_F(FieldModel, HasMagnetsAndIronAndNothingElse) {
    Define("weak", 1.002);
    Define("weaker", 1.0009);
    Define("diamagnet", 0.99);
    Define("compass", 1.0, Coercivity{1e3, {0.0, 1.0, 0.0}});
    Create({"steel_soft", "copper", "air", "vacuum", "weak", "weaker", "diamagnet", "compass", "paint"});
    const auto model = Build();
    ASSERT_EQ(model.bodies.size(), 1U);
    EXPECT_EQ(model.bodies[0].name, "objects without a load");
    EXPECT_THAT(Names(model.bodies[0]), ElementsAre("steel_soft", "weak", "diamagnet", "compass"));
    EXPECT_THAT(m_remarks, ElementsAre("unknown materials are taken as non-magnetic: \"paint\""));
}

TEST_F(FieldModel, HasNoBodyWhereNothingIsMagnetic) {
    Create({"copper", "vacuum"});
    EXPECT_TRUE(Build().bodies.empty());
}

TEST_F(FieldModel, PutsIronIntoTheBodyOfItsLoad) {
    Create({"steel_soft", "magnet_1T", "SmCo_28"});
    m_desk.AddBody("Yoke", "steel_soft", "steel_soft", 0.0);
    m_desk.AddBody("Rotor", "magnet_1T", "magnet_1T", 0.02);
    const auto model = Build();
    ASSERT_EQ(model.bodies.size(), 3U);
    EXPECT_THAT(Names(model.bodies[0]), ElementsAre("steel_soft"));
    EXPECT_THAT(Names(model.bodies[1]), ElementsAre("magnet_1T"));
    EXPECT_THAT(Names(model.bodies[2]), ElementsAre("SmCo_28"));
    EXPECT_EQ(model.bodyOfLoad.front(), 0U);
    EXPECT_EQ(model.bodyOfLoad.back(), 1U);
}

TEST_F(FieldModel, GivesMagnetsTheirPermeabilityAndRemanence) {
    Define("almost", 1.0 + 5e-7, Coercivity{1e5, {0.0, 0.0, 2.0}});
    Define("hardly", 1.0 + 2e-6, Coercivity{1e5, {0.0, 0.0, 2.0}});
    Create({"NdFeB_N35", "magnet_1T", "almost", "hardly"});
    const auto model = Build();
    const std::vector<Magnet>& magnets = model.bodies.at(0).magnets;
    ASSERT_EQ(magnets.size(), 4U);
    EXPECT_EQ(magnets[0].permeability, 1.0998);
    EXPECT_EQ(magnets[0].magnetisation, Eigen::Vector3d(1.0998 * 890000.0, 0.0, 0.0));
    EXPECT_EQ(magnets[1].permeability, 1.0);
    EXPECT_EQ(magnets[2].permeability, 1.0);
    EXPECT_NEAR(magnets[2].magnetisation.z(), (1.0 + 5e-7) * 1e5, 1e-9);
    EXPECT_EQ(magnets[3].permeability, 1.0 + 2e-6);
    for (const auto& magnet : magnets) {
        EXPECT_FALSE(magnet.curve) << magnet.name;
    }
}

TEST_F(FieldModel, GivesIronItsPermeabilityOrItsCurve) {
    Define("weak", 1.002);
    Create({"weak", "steel_soft"});
    const auto model = Build();
    const std::vector<Magnet>& magnets = model.bodies.at(0).magnets;
    EXPECT_EQ(magnets.at(0).permeability, 1.002);
    EXPECT_EQ(magnets[0].magnetisation, Eigen::Vector3d::Zero());
    EXPECT_FALSE(magnets[0].curve);
    EXPECT_EQ(magnets.at(1).magnetisation, Eigen::Vector3d::Zero());
    ASSERT_TRUE(magnets[1].curve);
    const auto& points = m_desk.world->library.at("steel_soft").bhCurve->points;
    ASSERT_EQ(magnets[1].curve->points.size(), points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
        EXPECT_EQ(magnets[1].curve->points[i].h, points[i].h);
        EXPECT_EQ(magnets[1].curve->points[i].b, points[i].b);
    }
}

TEST_F(FieldModel, TakesACurveWhateverThePermeabilityBesideIt) {
    const vantor::model::BhCurve curve{{{0.0, 0.0}, {100.0, 0.5}}};
    m_desk.world->library["alloy"] = {"alloy", 1.0, std::nullopt,
                                      std::make_shared<const vantor::model::BhCurve>(curve)};
    Create({"alloy"});
    EXPECT_TRUE(Build().bodies.at(0).magnets.at(0).curve);
}

TEST_F(FieldModel, SharesACurveAmongObjectsAndSolves) {
    m_desk.Create(shapes::CubeObj("Yoke", "steel_soft", 0, 10) + shapes::CubeObj("Core", "steel_soft", 20, 10));
    const auto first = Build().bodies.at(0).magnets;
    const auto second = Build().bodies.at(0).magnets;
    EXPECT_EQ(first.at(0).curve, first.at(1).curve);
    EXPECT_EQ(first.at(0).curve, second.at(0).curve);
    // Copies that nobody uses go with the model's own.
    const std::weak_ptr<const vantor::solver::MagnetizationCurve> other =
        m_copies.Of(std::make_shared<const vantor::model::BhCurve>());
    m_copies.DropExpired();
    EXPECT_TRUE(other.expired());
    EXPECT_EQ(Build().bodies.at(0).magnets.at(0).curve, first[0].curve);
}

TEST_F(FieldModel, NamesObjectAndMaterialOfAPermeabilityThatNothingHas) {
    Define("odd", 1.0);
    Create({"odd"});
    vantor::model::Material& odd = m_desk.world->projects.front()->materials["odd"];
    for (const double value :
         {0.899, 0.0, -1.0, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        odd = {"odd", value, std::nullopt};
        EXPECT_THAT(Complaint(), HasSubstr("the material \"odd\" of the object \"odd\" has the relative permeability "))
            << value;
    }
    odd = {"odd", 0.5, Coercivity{1e5, {1.0, 0.0, 0.0}}};
    EXPECT_THAT(Complaint(),
                HasSubstr("permeability 0.5, which must be finite and 0.9 or more; give the object another"));
    odd.relativePermeability = 0.9;
    EXPECT_EQ(Complaint(), "none");
}

TEST_F(FieldModel, NamesObjectAndMaterialOfACoercivityWithoutDirection) {
    Define("lost", 1.0, Coercivity{1e5, {0.0, 0.0, 0.0}});
    Create({"lost"});
    EXPECT_EQ(Complaint(),
              "the coercivity components of the material \"lost\" of the object \"lost\" give no direction: all are 0");
}

} // namespace
