#pragma once

#include "simulator/commands/ScriptObject.h"

#include <memory>
#include <string>

namespace vantor::commands {

/// The object that a client starts from.
Value::Object MakeApplication(std::shared_ptr<Session> session);

// The other kinds of objects, each made by the one before it.

using SessionPointer = std::shared_ptr<Session>;
using ProjectPointer = std::shared_ptr<model::Project>;

/// A design together with the project that it stands in.
struct DesignPlace {
    ProjectPointer project;
    std::shared_ptr<model::Design> design;
};

Value::Object MakeProject(SessionPointer session, ProjectPointer project);
Value::Object MakeDefinitionManager(SessionPointer session, ProjectPointer project);
Value::Object MakeMaterials(SessionPointer session, ProjectPointer project);
Value::Object MakeDesign(SessionPointer session, DesignPlace place);
Value::Object MakeEditor(SessionPointer session, DesignPlace place);
Value::Object MakeSetupModule(SessionPointer session, DesignPlace place);
Value::Object MakeOutputVariableModule(SessionPointer session, DesignPlace place);
Value::Object MakeLoadModule(SessionPointer session, DesignPlace place);
Value::Object MakeReportModule(SessionPointer session, DesignPlace place);
Value::Object MakeFieldsModule(SessionPointer session, DesignPlace place);
Value::Object MakeParametricSetups(SessionPointer session, DesignPlace place);
Value::Object MakeResults(SessionPointer session, DesignPlace place);

} // namespace vantor::commands
