#include "report/core/MaterialKind.h"

#include <gtest/gtest.h>

namespace kinora::report {
namespace {

/// The kind of an object without a direction.
MaterialKind KindOfUndirected(const std::string& material) {
    scenario::Scenario scenario;
    scenario.materials["part"].name = material;
    scenario.undirected = {"part"};
    return KindOf(scenario, "part");
}

TEST(MaterialKind, IsAMagnetWhereThereIsADirection) {
    scenario::Scenario scenario;
    scenario.materials["part"].name = "steel_soft";
    EXPECT_EQ(KindOf(scenario, "part"), MaterialKind::Magnet);
}

TEST(MaterialKind, OfWhatIsNamedAsNothingElseIsIron) {
    for (const char* material : {"steel_soft", "Iron", "M270-35A", "Repaired_armco"}) {
        EXPECT_EQ(KindOfUndirected(material), MaterialKind::Iron) << material;
    }
}

TEST(MaterialKind, FollowsTheNamesOfMagnetsAndOfWhatTheFieldDoesNotSee) {
    for (const char* material : {"magnet_1T", "NdFeB_N35", "SMCO_28", "AlNiCo5", "ferrite_Y30"}) {
        EXPECT_EQ(KindOfUndirected(material), MaterialKind::Magnet) << material;
    }
    for (const char* material : {"vacuum", "Air", "copper", "aluminum", "Aluminium_6061"}) {
        EXPECT_EQ(KindOfUndirected(material), MaterialKind::Other) << material;
    }
}

TEST(MaterialKind, IsThatOfTheMaterialWhereOnlyAnotherObjectHasADirection) {
    scenario::Scenario scenario;
    scenario.materials["given"].name = "N52";
    scenario.materials["part"].name = "N52";
    scenario.materials["yoke"].name = "armco";
    scenario.undirected = {"part", "yoke"};
    EXPECT_EQ(KindOf(scenario, "part"), MaterialKind::Magnet);
    EXPECT_EQ(KindOf(scenario, "yoke"), MaterialKind::Iron);
}

} // namespace
} // namespace kinora::report
