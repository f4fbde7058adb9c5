#include "fmu/packer/Documentation.h"

#include <fmt/format.h>

namespace kinora::fmu {
namespace {

constexpr const char* style =
    "body{font:16px/1.5 system-ui,sans-serif;max-width:60em;margin:2em auto;padding:0 1em;color:#1c2430}"
    "table{border-collapse:collapse;width:100%;font-size:14px}th,td{text-align:left;padding:.3em .7em;"
    "border-bottom:1px solid #d5dbe3;vertical-align:top}th{background:#f2f5f8}code{font-size:.95em}"
    "img{float:right;width:16em;margin:0 0 1em 1em}";

std::string DesktopName(const Model& model, const Packing& packing) {
    if (packing.bringsSimulator) {
        return "the simulator of the desktop, which is part of the FMU";
    }
    const std::string& version = model.Description().desktop.version;
    return fmt::format("the Vantor Desktop{} (ProgID \"Pellux.VantorDesktop{}{}\"), which has to be installed",
                       version.empty() ? "" : ", version \"" + version + "\"", version.empty() ? "" : ".", version);
}

std::string StartOf(const Variable& variable) {
    if (variable.type == Type::Text) {
        return "\"" + variable.text + "\"";
    }
    if (variable.causality != Causality::Input) {
        return "";
    }
    std::string text;
    for (const double element : variable.start) {
        text += (text.empty() ? "" : ", ") + fmt::format("{:.9g}", element);
    }
    return text;
}

void AddTable(pugi::xml_node body, const Model& model, Fmi version) {
    pugi::xml_node table = body.append_child("table");
    pugi::xml_node head = table.append_child("tr");
    for (const char* column : {"Variable", "", "Unit", "Start", "Meaning"}) {
        Add(head, "th", column);
    }
    for (const Variable& variable : model.Variables()) {
        pugi::xml_node row = table.append_child("tr");
        const std::string name = !variable.isVector ? variable.name
                                 : version == Fmi::Two
                                     ? fmt::format("{0}[1] .. {0}[{1}]", variable.name, variable.start.size())
                                     : fmt::format("{}[{}]", variable.name, variable.start.size());
        Add(row.append_child("td"), "code", name);
        Add(row, "td", NameOf(variable.causality));
        Add(row, "td", variable.unit ? variable.unit->name : "");
        Add(row, "td", StartOf(variable));
        Add(row, "td", variable.description);
    }
}

void AddFrames(pugi::xml_node body, const Packing& packing) {
    Add(body, "h2", "Frames");
    if (packing.ports == Ports::Joints) {
        Add(body, "p",
            "Angles and displacements are those of the joints, from the pose in which the geometry is drawn, positive "
            "along the axis and by the right hand about it. A torque is that of the field on all bodies of the joint; "
            "connect it to the flange of what the joint stands for. Bodies on no joint stand still.");
    } else {
        Add(body, "p",
            "Positions are those of the bodies' origins in the global frame. Orientations are unit quaternions w, x, "
            "y, z that turn components along the body's axes into components along the global ones; (1, 0, 0, 0) is "
            "not turned. Torques are about the body's origin. Velocities are along the global axes.");
    }
}

void AddTime(pugi::xml_node body) {
    Add(body, "h2", "Time");
    Add(body, "p",
        "Inputs are those at the beginning of a step, outputs those at its end. The field is solved once per step, at "
        "its end, where the bodies then are by the velocities that are given as inputs (or, in FMI 2.0, by the "
        "derivatives of inputs). Without velocities it is the field of the poses at the beginning: forces lag by one "
        "step. Steps may be of any length; none can be taken back, for each solve is recorded.");
}

} // namespace

std::string DocumentationPage(const Model& model, const Packing& packing, Fmi version, bool hasPicture) {
    const std::string& title = model.Description().title;
    pugi::xml_document document;
    pugi::xml_node html = document.append_child("html");
    Set(html, "lang", "en");
    pugi::xml_node head = html.append_child("head");
    Set(head.append_child("meta"), "charset", "utf-8");
    Add(head, "title", packing.modelIdentifier);
    Add(head, "style", style);
    pugi::xml_node body = html.append_child("body");
    Add(body, "h1", title.empty() ? packing.modelIdentifier : title);
    if (hasPicture) {
        pugi::xml_node image = body.append_child("img");
        Set(image, "src", version == Fmi::Two ? "../model.png" : "../terminalsAndIcons/icon.png");
        Set(image, "alt", "The bodies as they are drawn, each in a colour of its own");
    }
    Add(body, "p",
        fmt::format("A magnetostatic model as a co-simulation FMU of FMI {}.0: motion in, force and torque of the "
                    "magnetic field out. The field is solved by {}.",
                    static_cast<int>(version), DesktopName(model, packing)));
    AddFrames(body, packing);
    AddTime(body);
    Add(body, "h2", "Variables");
    AddTable(body, model, version);
    Add(body, "h2", "Files");
    Add(body, "p",
        "Every run makes a new folder, named after the instance, in the folder that the parameter outputFolder names, "
        "or in the current one. In it are the project, the log and the reports of the run.");
    return TextOf(document, true);
}

std::string ExternalDependencies(const Model& model, const Packing& packing) {
    if (packing.bringsSimulator) {
        return {};
    }
    return fmt::format("This FMU needs {}.\n"
                       "The parameter desktopVersion names another version.\n",
                       DesktopName(model, packing));
}

} // namespace kinora::fmu
