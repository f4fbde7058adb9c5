#pragma once

#include "host/project/GeometrySurvey.h"
#include "host/project/RunScript.h"

#include <filesystem>
#include <string>
#include <vector>

namespace kinora::host {

/// The files of a project from a template: scenario, its schema for editors, geometry, run script.
/// @param name  of the template; empty for the first one
/// @throws InputError  there is no such template
std::vector<ProjectFile> ProjectFromTemplate(const std::string& name);

/// The files of a project around a geometry. The geometry is not among them where it lies in the folder already. The
/// run script is the last one, here and above.
/// @throws InputError  the geometry cannot be used
std::vector<ProjectFile> ProjectAround(const std::filesystem::path& geometry,
                                       const std::vector<SurveyedObject>& objects, const std::filesystem::path& folder);

/// Writes all files into a folder, which is made if needed, or nothing.
/// @throws InputError  one of them is there already, or the folder cannot be made
/// @throws RunError    one of them cannot be written
void WriteProject(const std::filesystem::path& folder, const std::vector<ProjectFile>& files);

} // namespace kinora::host
