#pragma once

/// @file
/// The desktop's scripting commands, for callers from outside.

#include "interface/IKinoraVeltrixInterface.h"

// Of the platform's headers no more than automation needs: the old sockets among them would keep <winsock2.h> out.
#if !defined(WIN32_LEAN_AND_MEAN)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#undef WIN32_LEAN_AND_MEAN
#else
#include <windows.h>
#endif

#include <oleauto.h>

#include <map>
#include <set>
#include <string>
#include <vector>

/// The face of the desktop's scripting commands for callers from outside: every function only forwards to the library's
/// own one, which issues the command.
///
/// Common to all functions
///  - Objects are raw `IDispatch*` of the caller; the functions take no reference on them, and a null object fails the
///    call. An object that a function returns carries one reference, which the caller releases.
///  - A VARIANT that a function returns belongs to the caller, who clears it.
///  - Every call looks the method's name up anew (IID_NULL, locale 0x0800), and invokes it with DISPATCH_METHOD, the
///    arguments last-first, without exception information. Arguments and results are cleared after the call.
///  - Failure is false, null, an empty container or text, or a VT_EMPTY VARIANT; the reason is not kept.
///  - Narrow texts are in the system's ANSI code page; embedded zero characters survive.
///  - A text that cannot be allocated raises `_com_error` (E_OUTOFMEMORY); an array that cannot be created is passed on
///    as VT_EMPTY, which the desktop rejects.
/// The functions keep no state.
///
/// @pre The calling thread is the one that initialised COM. Not checked: the platform refuses a call on an object of
///      another thread, which then counts as failed.
/// @pre An object is null or alive. One that has been released already is not recognised: undefined behaviour.
/// @pre The name of a method is a text that ends in a zero, not null. Not checked: undefined behaviour.
/// @pre The name of a body is a letter followed by letters, digits and underscores, and no other body has it. Not
///      checked: the name goes into variables and expressions as it is, and the desktop refuses what it cannot read.
/// @pre The name of an object, module, setup or report exists where a command refers to it. Not checked: the desktop
///      refuses the command, and the function answers as after any failed call.
class KINORA_VELTRIX_API CComUtils {
public:
    /// @name Calls and values
    /// @{

    /// @return true when the object knows a method of this name
    static bool SupportComFunction(IDispatch* object, const wchar_t* methodName);

    /// Looks a method up and invokes it.
    /// @param flags      dispatch flags, DISPATCH_METHOD everywhere in this library
    /// @param arguments  the argument block, last argument first; stays the caller's, who clears it
    /// @param result     receives the result, of whatever type; neither initialised nor cleared here
    /// @pre The block holds as many initialised VARIANTs as it counts. Not checked: undefined behaviour.
    /// @pre `result` is initialised and empty. Not checked: a value in it is overwritten and leaks.
    /// @return false when the object is null, does not know the name, or the call fails
    static bool CallComFunction(IDispatch* object, const wchar_t* methodName, unsigned short flags,
                                DISPPARAMS& arguments, VARIANT& result);

    /// The same without arguments, as DISPATCH_METHOD.
    /// @pre `result` is initialised and empty. Not checked: a value in it is overwritten and leaks.
    static bool CallComFunction(IDispatch* object, const wchar_t* methodName, VARIANT& result);

    /// @return a VT_BSTR VARIANT
    static VARIANT CreateVariant(const std::string& text);

    /// @return an array (VT_ARRAY | VT_VARIANT, lower bound 0) of VT_BSTR elements in the order given, without elements
    ///         when there are no texts; VT_EMPTY when the array cannot be created
    static VARIANT CreateStringArray(const std::vector<std::string>& texts);

    /// @return the VT_BSTR elements of an array VT_ARRAY | VT_VARIANT in their order, elements of other types left out;
    ///         nothing for a VARIANT of any other type
    /// @pre `array` is initialised. Not checked: undefined behaviour.
    static std::vector<std::string> ReadStringArray(const VARIANT& array);

    /// @param values  stay the caller's: the array holds copies
    /// @pre The values are initialised. One that cannot be copied gives VT_EMPTY.
    /// @return an array (VT_ARRAY | VT_VARIANT, lower bound 0); VT_EMPTY when it cannot be created or filled
    static VARIANT CreateVariantArray(const std::vector<VARIANT>& values);

    /// "GetChildNames". Without children and after a failed call alike, nothing.
    static std::vector<std::string> CallGetChildNames(IDispatch* object);

    /// "GetChildObject"(name). @return null unless the result is an object
    static IDispatch* CallGetChildObject(IDispatch* object, const std::string& name);

    /// "GetPropNames".
    static std::vector<std::string> CallGetPropNames(IDispatch* object);

    /// "GetPropValue"(property). @return the value as the desktop gave it; VT_EMPTY on failure
    static VARIANT CallGetPropValue(IDispatch* object, const std::string& property);

    /// "SetPropValue"(property, value).
    /// @param value  stays the caller's: a copy is sent
    /// @pre `value` is initialised. Not checked: undefined behaviour.
    /// @throws _com_error  the value cannot be copied
    static bool CallSetPropValue(IDispatch* object, const std::string& property, const VARIANT& value);

    /// "GetModule"(module). @return null unless the result is an object
    static IDispatch* CallGetModule(IDispatch* object, const std::string& module);

    /// The method with one name as its argument, for "SetActiveDesign" of a project and "SetActiveEditor" of a design.
    /// @return null unless the result is an object
    static IDispatch* CallSetActive(IDispatch* object, const wchar_t* methodName, const std::string& name);

    /// The method without arguments. @return the texts of the array that it gives
    static std::set<std::string> CallAndGetStringSet(IDispatch* object, const wchar_t* methodName);

    /// @}
    /// @name Project
    /// @{

    /// "InsertDesign"("Veltrix 3D", designName, "Magnetostatic", "") on a project.
    static bool CallInsertDesign(IDispatch* project, const std::string& designName);

    /// "SetDesignSettings" on a design: allows an object to override the material of another one that it lies in.
    /// The name has been spelled so since the first version and is part of the binary interface.
    static bool CallSetDesignSetttings(IDispatch* design);

    /// "SaveAs"(path, overwrite) on a project.
    /// @param overwrite  false lets the desktop refuse a path that exists
    static bool CallSaveAs(IDispatch* project, const std::string& path, const bool& overwrite);

    /// @}
    /// @name Coordinate systems and placement
    /// @{

    /// "CreateRelativeCS" twice on the editor: "Obj_CS_" + body, driven by the body's six pose variables, and
    /// "Mag_CS_" + body in it with the same axes. A body whose "Obj_CS_" exists is taken as set up: no call then.
    static bool CallCreateRelativeCS(IDispatch* editor, const std::string& body);

    /// "SetWCS" on the editor: makes csName the working coordinate system.
    static bool CallSetWorkingCS(IDispatch* editor, const std::string& csName);

    /// Attaches a modeler object and all its descendants to the body's coordinate systems, by "SetPropValue" of
    /// "Coordinate System" and "Orientation" where an object has them.
    /// @pre `CallCreateRelativeCS` has made the body's coordinate systems. Not checked: the desktop refuses the write.
    /// @return false at the first failed write and at the first missing child
    static bool RecurseSetCoordinateSystem(IDispatch* object, const std::string& body);

    /// "Move" on the editor: by the negated translation (metres), from the imported position back to the body's origin.
    /// A zero translation makes no call.
    static bool CallMove(IDispatch* editor, const IKinoraVeltrixInterface::Transform& pose,
                         const std::string& objectName);

    /// "Rotate" on the editor: about X by psi, Y by theta, Z by phi (radians, sent without a unit), those that are zero
    /// left out.
    /// @pre The rotation of `pose` is orthonormal. Not checked: the angles are then those of some other orientation, or
    ///      no numbers.
    /// @return false at the first failed call; earlier rotations stay
    static bool CallRotate(IDispatch* editor, const IKinoraVeltrixInterface::Transform& pose,
                           const std::string& objectName);

    /// @}
    /// @name Materials, force and torque
    /// @{

    /// "AssignMaterial" on the editor.
    static bool CallAssignMaterial(IDispatch* editor, const std::string& object, std::string material);

    /// "CloneMaterial"(source, newName) on the definition manager. @return true only when the desktop answers true
    static bool CallCloneMaterial(IDispatch* definitionManager, const std::string& source, const std::string& newName);

    /// "SetPropValue"("Solve Inside", true) on every top-level object of the editor that has the property.
    /// @return false at the first missing object or failed write
    static bool SetSolveInside(IDispatch* editor);

    /// @return the names, in the order given, of the objects whose "Material" is a text other than "vacuum"; that text
    ///         counts as vacuum only in quotes and in exactly this spelling. Objects that are missing, and those whose
    ///         "Material" is no text, are left out.
    static std::vector<std::string> GetNonVacuumObjects(IDispatch* editor, std::vector<std::string> objects);

    /// "AssignForce" on the module "VeltrixParameterSetup": force "Force_" + body in the frame "Obj_CS_" + body.
    /// @pre `objects` is not empty. Not checked: an empty list is sent, and the desktop decides.
    static bool CallAssignForce(IDispatch* module, const std::string& body, const std::vector<std::string>& objects);

    /// "AssignTorque" on the same module, for the axes X, Y, Z of the frame "Obj_CS_" + body.
    /// @pre `objects` is not empty. Not checked: an empty list is sent, and the desktop decides.
    /// @return false at the first failed call; earlier torques stay
    static bool CallAssignTorque(IDispatch* module, const std::string& body, const std::vector<std::string>& objects);

    /// @}
    /// @name Geometry
    /// @{

    /// "SetModelUnits" on the editor, without rescaling what is there. The unit's text is passed on unchecked.
    static bool CallSetModelUnits(IDispatch* editor, const std::string& units);

    /// "Import" on the editor, with the material names of the file.
    static bool CallImport(IDispatch* editor, const std::string& sourceFile);

    /// "CreateRegion" on the editor: the vacuum region "OuterRegion", padded by the percentages in the variables
    /// "RegionPaddingX", "RegionPaddingY" and "RegionPaddingZ". Called unconditionally.
    /// @pre The design has these variables and no region yet. Not checked: the desktop refuses the command.
    static bool CallAssignRegion(IDispatch* editor);

    /// @}
    /// @name Setups and solve
    /// @{

    /// @return the name of the design's alphabetically first analysis setup (byte order); empty without one
    static std::string GetFirstSetup(IDispatch* design);

    /// "InsertSetup" on the module "AnalysisSetup": magnetostatic, at most 15 passes, 0.5 percent error.
    static bool CallInsertSetup(IDispatch* module, const std::string& name);

    /// Inserts the setup "Setup1" unless the design has a setup. @return true when there is one afterwards
    static bool CheckAndInsertSetup(IDispatch* design);

    /// "Analyze"(setupName) on the design.
    /// @param status  untouched on success and when the call itself fails; else the low 16 bits of the solver's answer,
    ///                sign-extended
    /// @return true when the answer is a 32-bit integer (VT_I4) whose low 16 bits are 0
    static bool CallAnalyze(IDispatch* design, const std::string& setupName, int& status);

    /// "EditSetup" on the first setup: adds the body's six output variables to its expression cache.
    /// @return false also without a setup
    static bool InsertExpressionCaches(IDispatch* design, const IKinoraVeltrixInterface::Transform& transform);

    /// @}
    /// @name Output variables
    /// @{

    /// "CreateOutputVariable" for the six output variables of a body: "Force_" + body + "_X", "_Y", "_Z" in newtons and
    /// "Torque_" + body + "_X", "_Y", "_Z" in millinewton-metres.
    /// @return false at the first failed call (also for a variable that exists); earlier ones stay
    static bool CreateOutputVariables(IDispatch* design, const IKinoraVeltrixInterface::Transform& transform,
                                      const std::string& setupName);

    /// "GetOutputVariableValue" on the module "OutputVariable".
    /// @param value  receives the result's eight bytes as a double, whatever the result's type; untouched on failure
    static bool CallGetOutputVariableValue(IDispatch* module, const std::string& name, const std::string& setupName,
                                           double& value);

    /// Reads the six output variables of a body.
    /// @param result  force in newtons, torque in millinewton-metres; at the first failed read the earlier ones are set
    static bool ExtractOutputData(IDispatch* design, const std::string& name, const std::string& setupName,
                                  IKinoraVeltrixInterface::Result& result);

    /// @}
    /// @name Design variables and parametric setup
    /// @{

    /// @return the argument of "ChangeProperty" that creates (isNew) or changes one local variable
    static VARIANT GetChangePropertyArgument(std::string name, std::string value, bool isNew);

    /// "ChangeProperty" on the design: changes existing local variables, all in one call (also for an empty map).
    /// @param variables  name to value in the desktop's syntax
    /// @pre The design has every one of them. Not checked: the desktop refuses the command.
    static bool UpdateVariables(IDispatch* design, const std::map<std::string, std::string>& variables);

    /// @param variables  names, in column order
    /// @param rows       one row of values per step, the first the sweep's start and each later one an added point
    /// @pre Every row has one value per variable. Checked for the first row only; the others are sent as they are.
    /// @return the argument that describes the parametric setup "KinoraHistory"; VT_EMPTY without rows, and when the
    ///         first row is shorter than the variables
    static VARIANT GetParavantArgument(std::vector<std::string> variables, std::vector<std::vector<std::string>> rows);

    /// @}
    /// @name Reports and plots
    /// @{

    /// @return the names of the design's reports (children of "Results")
    static std::set<std::string> GetReportNames(IDispatch* design);

    /// "CreateReport" on the module "ReportSetup": a rectangular plot over "SimTime" without traces.
    /// @param variables  design variables: the first is swept over all its values, the others are nominal
    /// @pre `variables` is not empty: false without a call.
    static bool CreateEmptyReport(IDispatch* reportModule, const std::string& reportName, const std::string& setupName,
                                  const std::vector<std::string>& variables);

    /// "GetReportTraceNames", "DeleteTraces" (when there are traces), "ImportIntoReport" on the module "ReportSetup".
    /// @param filePath  a file that the desktop can read; not checked, the desktop refuses the import
    static bool ClearAndImportReport(IDispatch* reportModule, const std::string& reportName,
                                     const std::string& filePath);

    /// "CreateReport" on the module "ReportSetup": the table "Output Variables for " + body of its output variables.
    /// @param variables  design variables: the first is the X component
    /// @pre `variables` is not empty: false without a call.
    static bool CreateDataTable(IDispatch* reportModule, const std::string& bodyName, const std::string& setupName,
                                const std::vector<std::string>& variables);

    /// "GetRegistryString"(key) on the desktop. @return empty on failure and when the setting is no text
    static std::string CallGetRegistryString(IDispatch* desktop, const std::string& key);

    /// "CreateFieldPlot" on the module "FieldsReporter": a vector plot in the volume of objects.
    /// @param plotFolder    folder of the plot, for example "H"
    /// @param quantityName  field quantity, for example "H_Vector"
    static bool CreateFieldPlot(IDispatch* fieldsModule, const std::string& plotName, const std::string& plotFolder,
                                const std::string& setupName, const std::string& quantityName,
                                const std::vector<std::string>& objectNames);

    /// @}
};
