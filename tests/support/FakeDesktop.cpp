#include "tests/support/FakeDesktop.h"

#include <algorithm>

namespace fake {
namespace {

const std::wstring coercivity = L"Magnetic Coercivity Components";

bool Contains(const std::vector<std::wstring>& names, const std::wstring& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// The text of argument `index`; empty when it is missing or no text.
std::wstring TextAt(const Arguments& arguments, std::size_t index) {
    return index < arguments.size() ? arguments[index].text : std::wstring();
}

/// A handler that gives the object of this name.
Object::Handler ByName(const std::map<std::wstring, Object*>& objects) {
    return [objects](const Arguments& arguments) {
        const auto found = objects.find(TextAt(arguments, 0));
        return found == objects.end() ? Fails() : Reference(*found->second);
    };
}

/// The name behind "NAME:" at the begin of an array.
std::wstring HeaderName(const Value& array) {
    const std::wstring header = array.items.empty() ? std::wstring() : array.items[0].text;
    return header.size() < 5 ? std::wstring() : header.substr(5);
}

} // namespace

const Value* FindKey(const Value& array, const std::wstring& key) {
    for (std::size_t index = 0; index + 1 < array.items.size(); ++index) {
        if (array.items[index].text == key) {
            return &array.items[index + 1];
        }
    }
    return nullptr;
}

FakeDesktop::FakeDesktop()
    : application(world.Make("application")), desktop(world.Make("desktop")), projects(world.Make("projects")),
      project(world.Make("project")), design(world.Make("design")), editor(world.Make("editor")),
      materials(world.Make("Materials")), definitions(world.Make("definitions")),
      setupModule(world.Make("AnalysisSetup")), outputModule(world.Make("OutputVariable")),
      reportModule(world.Make("ReportSetup")), fieldsModule(world.Make("FieldsReporter")),
      parameterModule(world.Make("VeltrixParameterSetup")), paravant(world.Make("Paravant")),
      results(world.Make("Results")), loads([](const std::wstring&) { return 0.0; }) {
    DefineDesktop();
    DefineProject();
    DefineDesign();
    DefineModules();
    DefineEditor();
    DefineMaterials();
    DefineReports();
}

void FakeDesktop::DefineDesktop() {
    application.On("GetAppDesktop", Reference(desktop));
    for (const char* const open : {"NewProject", "OpenProject"}) {
        desktop.On(open, [this](const Arguments&) {
            openProjects = {projectName};
            return Reference(project);
        });
    }
    desktop.On("GetProjects", Reference(projects));
    projects.On("Count", [this](const Arguments&) { return Long(static_cast<std::int32_t>(openProjects.size())); });
    projects.On("Item", Reference(project));
    desktop.On("QuitApplication", Nothing());
    desktop.On("ClearMessages", Nothing());
    desktop.On("AddMessage", [this](const Arguments& arguments) {
        messages.push_back(TextAt(arguments, 3));
        return Nothing();
    });
    desktop.On("GetMessages", [this](const Arguments&) { return Texts(messages); });
    desktop.On("GetRegistryString", [this](const Arguments&) { return Text(updateReports); });
}

void FakeDesktop::DefineProject() {
    project.On("GetName", [this](const Arguments&) { return Text(projectName); });
    project.On("GetPath", [this](const Arguments&) { return Text(projectFolder); });
    project.On("SaveAs", Nothing());
    project.On("Save", Nothing());
    project.On("Close", [this](const Arguments&) {
        openProjects.clear();
        return Nothing();
    });
    project.On("InsertDesign", Nothing());
    project.On("SetActiveDesign", Reference(design));
    project.On("GetDesign", Reference(design));
    project.On("GetChildNames", [this](const Arguments&) { return Texts({designName}); });
    project.On("GetChildObject", ByName({{L"Materials", &materials}}));
    project.On("GetDefinitionManager", Reference(definitions));
    project.On("AddMaterial", [this](const Arguments& arguments) {
        const std::wstring name = arguments.empty() ? std::wstring() : HeaderName(arguments[0]);
        MakeMaterial(name, m_components[name]);
        return Nothing();
    });
}

void FakeDesktop::DefineDesign() {
    design.On("GetName", [this](const Arguments&) { return Text(designName); });
    design.On("GetDesignType", [this](const Arguments&) { return Text(designType); });
    design.On("SetDesignSettings", Nothing());
    design.On("SetActiveEditor", Reference(editor));
    design.On("GetModule", ByName({{L"AnalysisSetup", &setupModule},
                                   {L"OutputVariable", &outputModule},
                                   {L"ReportSetup", &reportModule},
                                   {L"FieldsReporter", &fieldsModule},
                                   {L"VeltrixParameterSetup", &parameterModule}}));
    design.On("GetChildObject", ByName({{L"Paravant", &paravant}, {L"Results", &results}}));
    design.On("GetProperties", [this](const Arguments&) { return Texts(variables); });
    design.On("ChangeProperty", [this](const Arguments& arguments) {
        if (!arguments.empty()) {
            ChangeVariables(arguments[0]);
        }
        return Nothing();
    });
    design.On("Analyze", Long(0));
}

void FakeDesktop::ChangeVariables(const Value& allTabs) {
    const bool isComplete = allTabs.items.size() == 2 && allTabs.items[1].items.size() == 3;
    if (!isComplete) {
        return;
    }
    const Value& properties = allTabs.items[1].items[2];
    for (const Value& property : properties.items) {
        if (HeaderName(properties) == L"NewProps" && !property.items.empty()) {
            variables.push_back(HeaderName(property));
        }
    }
}

void FakeDesktop::DefineModules() {
    setupModule.On("GetSetups", [this](const Arguments&) { return Texts(setups); });
    setupModule.On("InsertSetup", [this](const Arguments& arguments) {
        setups.push_back(arguments.size() < 2 ? std::wstring() : HeaderName(arguments[1]));
        return Nothing();
    });
    setupModule.On("EditSetup", Nothing());
    outputModule.On("CreateOutputVariable", [this](const Arguments& arguments) {
        if (Contains(outputVariables, TextAt(arguments, 0))) {
            return Fails();
        }
        outputVariables.push_back(TextAt(arguments, 0));
        return Nothing();
    });
    outputModule.On("GetOutputVariableValue", [this](const Arguments& arguments) {
        const std::wstring name = TextAt(arguments, 0);
        return Contains(outputVariables, name) ? Real(loads(name)) : Fails();
    });
    parameterModule.On("AssignForce", Nothing());
    parameterModule.On("AssignTorque", Nothing());
    fieldsModule.On("CreateFieldPlot", Nothing());
    paravant.On("GetChildNames", [this](const Arguments&) { return Texts(histories); });
    paravant.On("InsertSetup", [this](const Arguments& arguments) {
        histories.push_back(arguments.size() < 2 ? std::wstring() : HeaderName(arguments[1]));
        return Nothing();
    });
    paravant.On("EditSetup", Nothing());
    paravant.On("DeleteSetups", [this](const Arguments&) {
        histories.clear();
        return Nothing();
    });
}

void FakeDesktop::DefineEditor() {
    for (const char* const command :
         {"SetModelUnits", "Import", "FitAll", "CreateRegion", "SetWCS", "Move", "Rotate", "AssignMaterial"}) {
        editor.On(command, Nothing());
    }
    editor.On("GetRelativeCoordinateSystems", [this](const Arguments&) { return Texts(coordinateSystems); });
    editor.On("CreateRelativeCS", [this](const Arguments& arguments) {
        const Value* const name = arguments.size() < 2 ? nullptr : FindKey(arguments[1], L"Name:=");
        coordinateSystems.push_back(!name ? std::wstring() : name->text);
        return Nothing();
    });
    DefineChildren(editor);
}

void FakeDesktop::DefineChildren(Object& parent) {
    parent.On("GetChildNames", [this, &parent](const Arguments&) {
        Names names;
        for (const auto& child : m_children[&parent]) {
            names.push_back(child.first);
        }
        return Texts(names);
    });
    parent.On("GetChildObject", [this, &parent](const Arguments& arguments) {
        for (const auto& child : m_children[&parent]) {
            if (child.first == TextAt(arguments, 0)) {
                return Reference(*child.second);
            }
        }
        return Fails();
    });
}

Object& FakeDesktop::AddChild(Object& parent, const std::wstring& name, const Names& properties) {
    const std::string prefix = &parent == &editor ? std::string() : parent.Path() + "/";
    Object& solid = world.Make(prefix + ToUtf8(name));
    solid.On("GetPropNames", Texts(properties));
    solid.On("SetPropValue", Nothing());
    DefineChildren(solid);
    m_children[&parent].emplace_back(name, &solid);
    return solid;
}

Object& FakeDesktop::AddSolid(const std::wstring& name, const std::wstring& material, const Names& properties) {
    return AddChild(editor, name, properties).On("GetPropValue", Text(material));
}

void FakeDesktop::RemoveSolid(const std::wstring& name) {
    Children& solids = m_children[&editor];
    solids.erase(std::remove_if(solids.begin(), solids.end(), [&](const auto& child) { return child.first == name; }),
                 solids.end());
}

void FakeDesktop::DefineMaterials() {
    DefineChildren(materials);
    definitions.On("CloneMaterial", [this](const Arguments& arguments) { return CloneMaterial(arguments); });
}

Answer FakeDesktop::CloneMaterial(const Arguments& arguments) {
    MakeMaterial(TextAt(arguments, 1), m_components[TextAt(arguments, 0)]);
    return Flag(VARIANT_TRUE);
}

Object& FakeDesktop::AddMaterial(const std::wstring& name, const Names& components) {
    return MakeMaterial(name, components);
}

Object& FakeDesktop::MakeMaterial(const std::wstring& name, const Names& components) {
    Object& material = world.Make("Materials/" + ToUtf8(name));
    m_components[name] = components;
    material.On("GetPropNames", Texts(components.empty() ? Names{L"Name"} : Names{L"Name", coercivity}));
    material.On("GetPropValue", [components](const Arguments& arguments) {
        for (std::size_t index = 0; index < components.size(); ++index) {
            if (TextAt(arguments, 0) == coercivity + L"/Component" + std::to_wstring(index + 1)) {
                return Text(components[index]);
            }
        }
        return Fails();
    });
    material.On("SetPropValue", Nothing());
    m_children[&materials].emplace_back(name, &material);
    return material;
}

void FakeDesktop::DefineReports() {
    results.On("GetChildNames", [this](const Arguments&) { return Texts(reports); });
    reportModule.On("CreateReport", [this](const Arguments& arguments) {
        if (!Contains(reports, TextAt(arguments, 0))) {
            reports.push_back(TextAt(arguments, 0));
        }
        return Nothing();
    });
    reportModule.On("GetReportTraceNames",
                    [this](const Arguments& arguments) { return Texts(traces[TextAt(arguments, 0)]); });
    reportModule.On("DeleteTraces", [this](const Arguments& arguments) {
        std::wstring report = arguments.empty() || arguments[0].items.empty() ? L"" : arguments[0].items[0].text;
        report.resize(report.size() < 2 ? 0 : report.size() - 2);
        traces[report].clear();
        return Nothing();
    });
    reportModule.On("ImportIntoReport", [this](const Arguments& arguments) {
        traces[TextAt(arguments, 0)] = {L"Imported"};
        return Nothing();
    });
}

} // namespace fake
