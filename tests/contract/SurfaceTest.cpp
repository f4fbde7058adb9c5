// The headers as somebody else's program uses them: every name with its arguments and types. Built twice: against the
// DLL, and with the library's objects linked in, which takes no preprocessor definition either.

#include "comutils/ComUtils.h"
#include "coupling/KinoraVeltrixCoupling.h"
#include "interface/IKinoraVeltrixInterface.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <type_traits>

namespace {

using Coupling = CKinoraVeltrixCoupling;
using Host = IKinoraVeltrixInterface;
using Utils = CComUtils;
using Text = const std::string&;
using Names = std::vector<std::string>;
using Automation = IDispatch*;

/// @return true when the function can be called through a pointer of exactly this type
template <class Function>
bool Is(Function function) {
    return function != nullptr;
}

TEST(Surface, InterfaceHasItsOperations) {
    EXPECT_TRUE((Is<bool (Host::*)(Names&, Host::MessageSeverity)>(&Host::GetMessages)));
    EXPECT_TRUE((Is<bool (Host::*)(Text, Names&)>(&Host::GetVeltrixDesigns)));
    EXPECT_TRUE((Is<bool (Host::*)(Text, Text)>(&Host::OpenProject)));
    EXPECT_TRUE((Is<bool (Host::*)(Text, Text, Text)>(&Host::CreateProject)));
    EXPECT_TRUE((Is<bool (Host::*)(Text, Text)>(&Host::InitGeometry)));
    EXPECT_TRUE((Is<bool (Host::*)(const std::vector<Host::Group>&, const std::map<std::string, Host::Material>&)>(
        &Host::InitMagneticObjects)));
    EXPECT_TRUE((Is<bool (Host::*)(double, const std::vector<Host::Transform>&, std::vector<Host::Result>&, int&)>(
        &Host::Analyze)));
    for (const auto operation :
         {&Host::SaveProject, &Host::CloseProject, &Host::QuitApplication, &Host::ReleaseApplication}) {
        EXPECT_TRUE((Is<bool (Host::*)()>(operation)));
    }
    EXPECT_TRUE((Is<Host* (*)()>(&GetKinoraVeltrixFactoryInterface)));
}

TEST(Surface, CouplingHasItsOwnMembers) {
    EXPECT_TRUE((Is<bool (Coupling::*)()>(&Coupling::LaunchDesktop)));
    EXPECT_TRUE((Is<bool (Coupling::*)(Text, Text, bool) const>(&Coupling::SetVariableValue)));
    EXPECT_TRUE((Is<bool (Coupling::*)(bool) const>(&Coupling::AddParametricSetup)));
}

TEST(Surface, RecordsAreFilledInTheOrderOfTheirFields) {
    const Host::Transform pose{"Rotor", {1.0, 2.0, 3.0}, {1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0}};
    const Host::Group group{pose, {"Magnet", "Yoke"}};
    const Host::Material material{"N45", {0.0, 0.0, 1.0}};
    const Host::Result load{{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}};
    EXPECT_EQ(group.transform.name, "Rotor");
    EXPECT_EQ(group.transform.translation[2], 3.0);
    EXPECT_EQ(group.transform.rotation[8], 1.0);
    EXPECT_EQ(group.objects.size(), 2U);
    EXPECT_EQ(material.name, "N45");
    EXPECT_EQ(material.coercivityDirection[2], 1.0);
    EXPECT_EQ(load.force[2], 3.0);
    EXPECT_EQ(load.torque[2], 6.0);
}

TEST(Surface, CallsAndValues) {
    EXPECT_TRUE((Is<bool (*)(Automation, const wchar_t*)>(&Utils::SupportComFunction)));
    EXPECT_TRUE(
        (Is<bool (*)(Automation, const wchar_t*, unsigned short, DISPPARAMS&, VARIANT&)>(&Utils::CallComFunction)));
    EXPECT_TRUE((Is<bool (*)(Automation, const wchar_t*, VARIANT&)>(&Utils::CallComFunction)));
    EXPECT_TRUE((Is<VARIANT (*)(Text)>(&Utils::CreateVariant)));
    EXPECT_TRUE((Is<VARIANT (*)(const Names&)>(&Utils::CreateStringArray)));
    EXPECT_TRUE((Is<Names (*)(const VARIANT&)>(&Utils::ReadStringArray)));
    EXPECT_TRUE((Is<VARIANT (*)(const std::vector<VARIANT>&)>(&Utils::CreateVariantArray)));
    EXPECT_TRUE((Is<Names (*)(Automation)>(&Utils::CallGetChildNames)));
    EXPECT_TRUE((Is<Automation (*)(Automation, Text)>(&Utils::CallGetChildObject)));
    EXPECT_TRUE((Is<Names (*)(Automation)>(&Utils::CallGetPropNames)));
    EXPECT_TRUE((Is<VARIANT (*)(Automation, Text)>(&Utils::CallGetPropValue)));
    EXPECT_TRUE((Is<bool (*)(Automation, Text, const VARIANT&)>(&Utils::CallSetPropValue)));
    EXPECT_TRUE((Is<Automation (*)(Automation, Text)>(&Utils::CallGetModule)));
    EXPECT_TRUE((Is<Automation (*)(Automation, const wchar_t*, Text)>(&Utils::CallSetActive)));
    EXPECT_TRUE((Is<std::set<std::string> (*)(Automation, const wchar_t*)>(&Utils::CallAndGetStringSet)));
    static_assert(std::is_empty_v<Utils> && std::is_copy_assignable_v<Utils> && std::is_move_assignable_v<Utils>);
}

TEST(Surface, ProjectAndModelCommands) {
    using Pose = const Host::Transform&;
    EXPECT_TRUE((Is<bool (*)(Automation, Text)>(&Utils::CallInsertDesign)));
    EXPECT_TRUE((Is<bool (*)(Automation)>(&Utils::CallSetDesignSetttings)));
    EXPECT_TRUE((Is<bool (*)(Automation, Text, const bool&)>(&Utils::CallSaveAs)));
    EXPECT_TRUE((Is<bool (*)(Automation, Text)>(&Utils::CallCreateRelativeCS)));
    EXPECT_TRUE((Is<bool (*)(Automation, Text)>(&Utils::CallSetWorkingCS)));
    EXPECT_TRUE((Is<bool (*)(Automation, Text)>(&Utils::RecurseSetCoordinateSystem)));
    EXPECT_TRUE((Is<bool (*)(Automation, Pose, Text)>(&Utils::CallMove)));
    EXPECT_TRUE((Is<bool (*)(Automation, Pose, Text)>(&Utils::CallRotate)));
    EXPECT_TRUE((Is<bool (*)(Automation, Text, std::string)>(&Utils::CallAssignMaterial)));
    EXPECT_TRUE((Is<bool (*)(Automation, Text, Text)>(&Utils::CallCloneMaterial)));
    EXPECT_TRUE((Is<bool (*)(Automation)>(&Utils::SetSolveInside)));
    EXPECT_TRUE((Is<Names (*)(Automation, Names)>(&Utils::GetNonVacuumObjects)));
    EXPECT_TRUE((Is<bool (*)(Automation, Text, const Names&)>(&Utils::CallAssignForce)));
    EXPECT_TRUE((Is<bool (*)(Automation, Text, const Names&)>(&Utils::CallAssignTorque)));
    EXPECT_TRUE((Is<bool (*)(Automation, Text)>(&Utils::CallSetModelUnits)));
    EXPECT_TRUE((Is<bool (*)(Automation, Text)>(&Utils::CallImport)));
    EXPECT_TRUE((Is<bool (*)(Automation)>(&Utils::CallAssignRegion)));
}

TEST(Surface, SolveResultAndReportCommands) {
    using Pose = const Host::Transform&;
    EXPECT_TRUE((Is<std::string (*)(Automation)>(&Utils::GetFirstSetup)));
    EXPECT_TRUE((Is<bool (*)(Automation, Text)>(&Utils::CallInsertSetup)));
    EXPECT_TRUE((Is<bool (*)(Automation)>(&Utils::CheckAndInsertSetup)));
    EXPECT_TRUE((Is<bool (*)(Automation, Text, int&)>(&Utils::CallAnalyze)));
    EXPECT_TRUE((Is<bool (*)(Automation, Pose)>(&Utils::InsertExpressionCaches)));
    EXPECT_TRUE((Is<bool (*)(Automation, Pose, Text)>(&Utils::CreateOutputVariables)));
    EXPECT_TRUE((Is<bool (*)(Automation, Text, Text, double&)>(&Utils::CallGetOutputVariableValue)));
    EXPECT_TRUE((Is<bool (*)(Automation, Text, Text, Host::Result&)>(&Utils::ExtractOutputData)));
    EXPECT_TRUE((Is<VARIANT (*)(std::string, std::string, bool)>(&Utils::GetChangePropertyArgument)));
    EXPECT_TRUE((Is<bool (*)(Automation, const std::map<std::string, std::string>&)>(&Utils::UpdateVariables)));
    EXPECT_TRUE((Is<VARIANT (*)(Names, std::vector<Names>)>(&Utils::GetParavantArgument)));
    EXPECT_TRUE((Is<std::set<std::string> (*)(Automation)>(&Utils::GetReportNames)));
    EXPECT_TRUE((Is<bool (*)(Automation, Text, Text, const Names&)>(&Utils::CreateEmptyReport)));
    EXPECT_TRUE((Is<bool (*)(Automation, Text, Text)>(&Utils::ClearAndImportReport)));
    EXPECT_TRUE((Is<bool (*)(Automation, Text, Text, const Names&)>(&Utils::CreateDataTable)));
    EXPECT_TRUE((Is<std::string (*)(Automation, Text)>(&Utils::CallGetRegistryString)));
    EXPECT_TRUE((Is<bool (*)(Automation, Text, Text, Text, Text, const Names&)>(&Utils::CreateFieldPlot)));
}

/// A host's own variation: what uses the operation inside the library calls this one.
class CountingCoupling : public Coupling {
public:
    bool OpenProject(Text projectPath, Text designName) override {
        opened.push_back(projectPath + "|" + designName);
        return false;
    }
    Names opened;
};

TEST(Surface, CouplingMayBeDerivedFrom) {
    CountingCoupling coupling;
    Names designs;
    EXPECT_FALSE(coupling.GetVeltrixDesigns("a.vtdk", designs));
    EXPECT_THAT(coupling.opened, testing::ElementsAre("a.vtdk|"));
    EXPECT_NE(dynamic_cast<Coupling*>(GetKinoraVeltrixFactoryInterface()), nullptr);
}

} // namespace
