#pragma once

#include "comutils/Dispatch.h"

#include <string>
#include <string_view>
#include <vector>

/// Commands of the module of field plots.
namespace FieldPlotCommands {

/// "CreateFieldPlot": a vector plot in the volume of objects.
/// @param folder    folder of the plot, for example "H"
/// @param quantity  field quantity, for example "H_Vector"
bool CreateFieldPlot(IDispatch* module, std::string_view plot, std::string_view folder, const std::string& setup,
                     std::string_view quantity, const std::vector<std::string>& objects);

} // namespace FieldPlotCommands
