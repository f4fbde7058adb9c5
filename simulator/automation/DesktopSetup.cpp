#include "simulator/automation/DesktopSetup.h"

#include "programs/Environment.h"
#include "simulator/model/DesktopError.h"
#include "simulator/model/Files.h"
#include "simulator/model/Materials.h"

namespace vantor::automation {

using kinora::programs::EnvironmentValue;

model::MaterialTable MaterialsLibrary() {
    model::MaterialTable library = model::BuiltInMaterials();
    const std::string file = EnvironmentValue("VANTOR_SIM_MATERIALS");
    if (!file.empty()) {
        for (const auto& material : model::ReadMaterialsFile(model::PathFromUtf8(file))) {
            library[material.name] = material;
        }
    }
    return library;
}

std::shared_ptr<model::Desktop> SetUpDesktop(const std::string& updateReports) {
    auto desktop = std::make_shared<model::Desktop>();
    try {
        desktop->library = MaterialsLibrary();
    } catch (const model::DesktopError& error) {
        desktop->library = model::BuiltInMaterials();
        desktop->messages.Add(
            {"", "", model::Severity::Error,
             std::string("the materials file named by VANTOR_SIM_MATERIALS is not used: ") + error.what()});
    }
    const std::string fromEnvironment = EnvironmentValue("VANTOR_SIM_UPDATE_REPORTS");
    desktop->options[model::updateReportsKey] = fromEnvironment.empty() ? updateReports : fromEnvironment;
    return desktop;
}

} // namespace vantor::automation
