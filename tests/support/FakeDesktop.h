#pragma once

#include "tests/support/Object.h"
#include "tests/support/World.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace fake {

/// A well-behaved desktop: it answers every command of a whole session and remembers what later commands ask for
/// (variables, coordinate systems, setups, materials, reports, histories). It solves nothing: `loads` says what the
/// output variables hold. Tests that want something else redefine single methods with `Object::On`.
class FakeDesktop {
public:
    FakeDesktop();

    World world;
    Object& application;
    Object& desktop;
    Object& projects;
    Object& project;
    Object& design;
    Object& editor;
    Object& materials;
    Object& definitions;
    Object& setupModule;
    Object& outputModule;
    Object& reportModule;
    Object& fieldsModule;
    Object& parameterModule;
    Object& paravant;
    Object& results;

    std::wstring projectName = L"Magnets";
    /// As the desktop gives it: with a separator at its end.
    std::wstring projectFolder = L"C:/work/";
    std::wstring designName = L"Veltrix3DDesign1";
    std::wstring designType = L"Veltrix 3D";
    std::vector<std::wstring> openProjects;
    std::vector<std::wstring> variables;
    std::vector<std::wstring> coordinateSystems;
    std::vector<std::wstring> setups;
    std::vector<std::wstring> outputVariables;
    std::vector<std::wstring> reports;
    std::vector<std::wstring> histories;
    std::map<std::wstring, std::vector<std::wstring>> traces;
    std::vector<std::wstring> messages;
    std::wstring updateReports = L"Never";
    std::function<double(const std::wstring& outputVariable)> loads;

    /// A solid with these properties that has this "Material" (as the desktop writes it: in double quotes).
    Object& AddSolid(const std::wstring& name, const std::wstring& material,
                     const std::vector<std::wstring>& properties = {L"Name", L"Material", L"Solve Inside",
                                                                    L"Coordinate System", L"Orientation"});
    /// A solid inside another one.
    Object& AddChild(Object& parent, const std::wstring& name, const std::vector<std::wstring>& properties);
    /// A magnet material with three component texts, or a plain one with none.
    Object& AddMaterial(const std::wstring& name, const std::vector<std::wstring>& components = {});
    /// Removes a solid that the editor then neither lists nor gives.
    void RemoveSolid(const std::wstring& name);

private:
    using Names = std::vector<std::wstring>;
    using Children = std::vector<std::pair<std::wstring, Object*>>;

    void DefineDesktop();
    void DefineProject();
    void DefineDesign();
    void DefineModules();
    void DefineEditor();
    void DefineMaterials();
    void DefineReports();
    void DefineChildren(Object& parent);
    void ChangeVariables(const Value& allTabs);
    Answer CloneMaterial(const Arguments& arguments);
    Object& MakeMaterial(const std::wstring& name, const Names& components);

    std::map<const Object*, Children> m_children;
    std::map<std::wstring, Names> m_components;
};

/// Value of a key in a named argument array; nothing when the key is missing.
const Value* FindKey(const Value& array, const std::wstring& key);

} // namespace fake
