#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

/// The names that belong to a body, and the fixed names of the desktop's objects. Each stands here once.
namespace Names {

inline constexpr char magnetostatic[] = "Magnetostatic";
inline constexpr char designType[] = "Veltrix 3D";
inline constexpr char newDesign[] = "Veltrix3DDesign1";
inline constexpr char modelerEditor[] = "3D Modeler";
inline constexpr char globalFrame[] = "Global";
inline constexpr char defaultSetup[] = "Setup1";
inline constexpr char timeVariable[] = "SimTime";
/// The variables with the percentages by which the region reaches beyond the model, along x, y, z.
inline constexpr const char* regionPaddings[] = {"RegionPaddingX", "RegionPaddingY", "RegionPaddingZ"};
inline constexpr char parametricChild[] = "Paravant";
inline constexpr char materialsChild[] = "Materials";
inline constexpr char resultsChild[] = "Results";
inline constexpr char setupModule[] = "AnalysisSetup";
inline constexpr char loadModule[] = "VeltrixParameterSetup";
inline constexpr char outputVariableModule[] = "OutputVariable";
inline constexpr char reportModule[] = "ReportSetup";
inline constexpr char fieldsModule[] = "FieldsReporter";
/// The material of empty space as an object's property has it.
inline constexpr char quotedVacuum[] = "\"vacuum\"";
/// The thickness of a body that is no shell.
inline constexpr char noThickness[] = "nan ";
inline constexpr char coercivity[] = "Magnetic Coercivity Components";
inline constexpr char newtonUnit[] = "Newton";
inline constexpr char torqueUnit[] = "mNewtonMeter";

/// Units of a length and an angle in a variable's value.
inline constexpr char lengthUnit[] = "Meter";
inline constexpr char angleUnit[] = "Rad";

/// Ends of the names of a body's six pose variables; those of the axes also end its loads and output variables.
inline constexpr char x[] = "_X";
inline constexpr char y[] = "_Y";
inline constexpr char z[] = "_Z";
inline constexpr char phi[] = "_Phi";
inline constexpr char theta[] = "_Theta";
inline constexpr char psi[] = "_Psi";
inline constexpr const char* axes[] = {x, y, z};

/// The coordinate system that follows the body's variables.
std::string ObjectFrame(const std::string& body);
/// Its child with the same axes, in which coercivity directions are meant.
std::string MagnetFrame(const std::string& body);

/// The body's force, and the report of it.
std::string Force(const std::string& body);
/// The body's torque report; with the end of an axis's name, the torque about that axis.
std::string Torque(const std::string& body);

/// The solver's name of a force component, for example "Force_Rotor.Force_x".
/// @param axis  0, 1, 2 for x, y, z
std::string ForceQuantity(const std::string& body, int axis);
/// The solver's name of a torque component, for example "Torque_Rotor_X.Torque".
std::string TorqueQuantity(const std::string& body, int axis);

/// Output variable name to its expression without unit: forces in newtons, torques in millinewton-metres.
std::map<std::string, std::string> OutputVariables(const std::string& body);

/// The solution of a setup that results are taken from.
std::string Solution(const std::string& setup);

/// First element of a named argument array.
std::string Block(std::string_view name);

/// @return true when the name is among the names, exactly so
bool Contains(const std::vector<std::string>& names, std::string_view name);

} // namespace Names
