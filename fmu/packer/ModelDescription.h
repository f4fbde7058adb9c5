#pragma once

#include "fmu/core/Model.h"
#include "fmu/packer/Xml.h"

#include <string>

namespace kinora::fmu {

/// What else a description says.
struct DescriptionSettings {
    Fmi version = Fmi::Two;
    /// Proposed to the importing tool, seconds.
    double stepSeconds = 0.0;
    /// Name and version of the program that writes it.
    std::string generator;
};

/// modelDescription.xml of an FMU.
/// @return UTF-8
std::string ModelDescription(const Model& model, const Packing& packing, const DescriptionSettings& settings);

/// terminalsAndIcons.xml of FMI 3.0: a terminal for every port.
/// @param hasIcon  whether icon.png lies beside it
std::string TerminalsAndIcons(const Model& model, bool hasIcon);

} // namespace kinora::fmu
