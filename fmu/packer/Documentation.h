#pragma once

#include "fmu/core/Model.h"
#include "fmu/packer/Xml.h"

#include <string>

namespace kinora::fmu {

/// documentation/index.html: what the FMU is, its variables with units and frames, and how time is meant.
/// @return UTF-8
std::string DocumentationPage(const Model& model, const Packing& packing, Fmi version, bool hasPicture);

/// documentation/externalDependencies.txt: what the FMU needs of the machine. Empty when it needs nothing.
std::string ExternalDependencies(const Model& model, const Packing& packing);

} // namespace kinora::fmu
