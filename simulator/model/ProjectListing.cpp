#include "simulator/model/ProjectListing.h"

#include "simulator/model/DesktopError.h"
#include "simulator/model/Files.h"
#include "simulator/model/Text.h"

#include <algorithm>

namespace vantor::model {
namespace {

/// Lines of text with an indentation.
class Listing {
public:
    void Line(int indent, const std::string& text) {
        m_text += std::string(static_cast<std::size_t>(indent) * 2, ' ') + text + "\n";
    }

    /// A heading with the number of what follows.
    void Heading(int indent, const std::string& title, std::size_t count) {
        Line(indent, title + " (" + std::to_string(count) + ")");
    }

    std::string Text() const { return m_text; }

private:
    std::string m_text;
};

std::string Joined(const std::vector<std::string>& texts, const char* separator) {
    std::string joined;
    for (const auto& text : texts) {
        joined += (joined.empty() ? "" : separator) + text;
    }
    return joined;
}

std::string Triple(const std::array<std::string, 3>& texts) {
    return "(" + texts[0] + ", " + texts[1] + ", " + texts[2] + ")";
}

void ListMaterials(const Project& project, Listing& listing) {
    listing.Heading(0, "Materials", project.materials.size());
    for (const auto& [name, material] : project.materials) {
        std::string line = name + ": relative permeability " + FormatNumber(material.relativePermeability);
        if (material.bhCurve) {
            line += ", B-H curve to " + FormatNumber(material.bhCurve->points.back().b) + " T";
        }
        if (material.coercivity) {
            const auto& c = material.coercivity->components;
            line += ", coercivity " + FormatNumber(material.coercivity->magnitude) + " A/m along (" +
                    FormatNumber(c[0]) + ", " + FormatNumber(c[1]) + ", " + FormatNumber(c[2]) + ")";
        }
        listing.Line(1, line);
    }
}

void ListModel(const Design& design, Listing& listing) {
    listing.Heading(1, "Variables", design.variables.All().size());
    for (const auto& variable : design.variables.All()) {
        listing.Line(2, variable.name + " = " + variable.value);
    }
    const Modeler& modeler = design.modeler;
    listing.Heading(1, "Coordinate systems", modeler.CoordinateSystems().size());
    for (const auto& system : modeler.CoordinateSystems()) {
        listing.Line(2, system.name + " in " + system.reference + ": origin " + Triple(system.origin) + ", x axis " +
                            Triple(system.xAxis) + ", y axis " + Triple(system.yAxis));
    }
    listing.Heading(1, "Objects, model unit " + modeler.Units(), modeler.Objects().size());
    for (const auto& object : modeler.Objects()) {
        listing.Line(2, object.name + ": " + object.material + ", " + std::to_string(object.mesh->triangles.size()) +
                            " faces, volume " + FormatNumber(SignedVolume(*object.mesh)) + " m^3, in " +
                            object.coordinateSystem + ", orientation " + object.orientation);
    }
    if (modeler.OuterRegion()) {
        const auto& padding = modeler.OuterRegion()->padding;
        listing.Line(1, "Region " + modeler.OuterRegion()->name + ": padding " +
                            Joined(std::vector<std::string>(padding.begin(), padding.end()), ", ") + " percent");
    }
}

void ListSetups(const Design& design, Listing& listing) {
    listing.Heading(1, "Setups", design.setups.size());
    for (const auto& setup : design.setups) {
        listing.Line(2, setup.name + ": " + setup.type + ", at most " + std::to_string(setup.maximumPasses) +
                            " passes, error " + FormatNumber(setup.percentError) + " %" +
                            (setup.enabled ? "" : ", not enabled"));
    }
    listing.Heading(1, "Forces and torques", design.loads.size());
    for (const auto& load : design.loads) {
        const bool isForce = load.kind == LoadParameter::Kind::Force;
        listing.Line(2, load.name + ": " + (isForce ? "force" : "torque about " + std::string(1, load.axis)) + " in " +
                            load.frame + " on " + Joined(load.objects, ", "));
    }
}

std::string LastValue(const Design& design, const OutputVariable& variable) {
    try {
        return FormatNumber(OutputVariableValue(design, variable));
    } catch (const DesktopError& error) {
        return std::string("no value, ") + error.what();
    }
}

/// A setup's rows: the first is what its sweeps began with. Of a long history the middle is only counted.
void ListRows(const ParametricSetup& setup, bool isFull, Listing& listing) {
    constexpr std::size_t shownAtEachEnd = 3;
    std::vector<std::string> first;
    for (const auto& sweep : setup.sweeps) {
        first.push_back(sweep.data);
    }
    const std::size_t count = setup.addedRows.size() + 1;
    // One more is written out rather than announced.
    const bool isWhole = isFull || count <= 2 * shownAtEachEnd + 1;
    for (std::size_t i = 0; i < count; ++i) {
        if (!isWhole && i == shownAtEachEnd) {
            const std::size_t leftOut = count - 2 * shownAtEachEnd;
            listing.Line(3, ".. " + std::to_string(leftOut) + " more rows, which --full shows");
            i += leftOut;
        }
        listing.Line(3, Joined(i == 0 ? first : setup.addedRows[i - 1], ", "));
    }
}

void ListHistory(const Design& design, bool isFull, Listing& listing) {
    listing.Heading(1, "Parametric setups", design.parametricSetups.size());
    for (const auto& setup : design.parametricSetups) {
        listing.Heading(2, setup.name + ": rows", setup.addedRows.size() + 1);
        std::vector<std::string> names;
        for (const auto& sweep : setup.sweeps) {
            names.push_back(sweep.variable);
        }
        listing.Line(3, Joined(names, ", "));
        ListRows(setup, isFull, listing);
    }
}

void ListResults(const Design& design, Listing& listing) {
    if (design.solution) {
        const Solution& solution = *design.solution;
        listing.Line(1, "Solution of " + solution.setup + ": " + std::to_string(solution.passes) + " passes, error " +
                            FormatNumber(solution.percentError) + " %" + (solution.converged ? "" : ", not converged") +
                            (solution.current ? "" : ", the model has changed since"));
    }
    listing.Heading(1, "Output variables", design.outputVariables.size());
    for (const auto& variable : design.outputVariables) {
        listing.Line(2, variable.name + " = " + variable.expression + ": " + LastValue(design, variable));
    }
    listing.Heading(1, "Reports", design.reports.size());
    for (const auto& report : design.reports) {
        listing.Line(2, report.name + ": " + report.displayType + " over " + report.xComponent);
        for (const auto& trace : report.traces) {
            listing.Line(3, trace.name + " [" + trace.unit + "]: " + std::to_string(trace.x.size()) + " points");
        }
    }
    listing.Heading(1, "Field plots", design.fieldPlots.size());
    for (const auto& plot : design.fieldPlots) {
        listing.Line(2, plot.folder + "/" + plot.name + ": " + plot.quantity + " on " + Joined(plot.objects, ", "));
    }
}

} // namespace

std::string ListProject(const Project& project, bool isFull) {
    Listing listing;
    listing.Line(0, "Project " + project.name + " in " + Utf8(project.file));
    ListMaterials(project, listing);
    for (const auto& design : project.designs) {
        listing.Line(0, "Design " + design->name + ": " + design->type + ", " + design->solutionType +
                            (design->name == project.activeDesign ? ", active" : ""));
        ListModel(*design, listing);
        ListSetups(*design, listing);
        ListHistory(*design, isFull, listing);
        ListResults(*design, listing);
    }
    return listing.Text();
}

} // namespace vantor::model
