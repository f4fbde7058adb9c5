#pragma once

#include "simulator/model/Desktop.h"

#include <filesystem>
#include <memory>
#include <string>

namespace vantor::model {

/// The content of a project file: JSON, format "vantor-sim project", version 1 (docs/simulator.md describes it).
std::string WriteProject(const Project& project);

/// Reads what WriteProject wrote. Nothing of a bad file is taken over.
/// @param fileName for messages.
/// @throws DesktopError (ReadFile) naming file and location.
std::shared_ptr<Project> ReadProject(const std::string& content, const std::string& fileName);

/// Opens a project file; the project is named after it.
/// @throws DesktopError (ReadFile).
std::shared_ptr<Project> OpenProjectFile(const std::filesystem::path& file);

/// Writes a project to its file, as a whole or not at all.
/// @throws DesktopError (WriteFile).
void SaveProjectFile(const Project& project);

} // namespace vantor::model
