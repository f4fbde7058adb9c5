#include "comutils/Names.h"

#include <gtest/gtest.h>

TEST(Names, OutputVariablesOfABody) {
    const std::map<std::string, std::string> expected = {
        {"Force_Rotor_X", "Force_Rotor.Force_x/1Newton"},
        {"Force_Rotor_Y", "Force_Rotor.Force_y/1Newton"},
        {"Force_Rotor_Z", "Force_Rotor.Force_z/1Newton"},
        {"Torque_Rotor_X", "Torque_Rotor_X.Torque/1mNewtonMeter"},
        {"Torque_Rotor_Y", "Torque_Rotor_Y.Torque/1mNewtonMeter"},
        {"Torque_Rotor_Z", "Torque_Rotor_Z.Torque/1mNewtonMeter"},
    };
    EXPECT_EQ(Names::OutputVariables("Rotor"), expected);
}

TEST(Names, ContainsIsExact) {
    EXPECT_TRUE(Names::Contains({"a", "SimTime"}, "SimTime"));
    EXPECT_FALSE(Names::Contains({"a", "simtime", "SimTime "}, "SimTime"));
}
