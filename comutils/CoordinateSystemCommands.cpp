#include "comutils/CoordinateSystemCommands.h"

#include "comutils/Names.h"
#include "comutils/ObjectCommands.h"
#include "comutils/Pose.h"
#include "comutils/Text.h"

namespace CoordinateSystemCommands {
namespace {

constexpr char frameProperty[] = "Coordinate System";
constexpr char orientationProperty[] = "Orientation";

CValue FrameAttributes(const std::string& name) {
    return {"NAME:Attributes", "Name:=", name};
}

CValue Selection(std::string_view objectName) {
    return {"NAME:Selections", "Selections:=", objectName, "NewPartsModelFlag:=", "Model"};
}

/// Origin and axes as expressions of the body's variables: the first two rows of Rz(Theta) * Ry(Phi) * Rx(Psi).
/// That Phi and Theta stand here in each other's usual places is how the model is meant to be.
CValue DrivenFrame(const std::string& body) {
    const std::string cosP = "cos(" + body + Names::phi + ")", sinP = "sin(" + body + Names::phi + ")";
    const std::string cosT = "cos(" + body + Names::theta + ")", sinT = "sin(" + body + Names::theta + ")";
    const std::string cosS = "cos(" + body + Names::psi + ")", sinS = "sin(" + body + Names::psi + ")";
    // clang-format off
    return {"NAME:RelativeCSParameters",
            "Mode:=", "Axis/Position",
            "OriginX:=", body + Names::x,
            "OriginY:=", body + Names::y,
            "OriginZ:=", body + Names::z,
            "XAxisXvec:=", cosP + "*" + cosT,
            "XAxisYvec:=", sinS + "*" + sinP + "*" + cosT + "-" + cosS + "*" + sinT,
            "XAxisZvec:=", cosS + "*" + sinP + "*" + cosT + "+" + sinS + "*" + sinT,
            "YAxisXvec:=", cosP + "*" + sinT,
            "YAxisYvec:=", sinS + "*" + sinP + "*" + sinT + "+" + cosS + "*" + cosT,
            "YAxisZvec:=", cosS + "*" + sinP + "*" + sinT + "-" + sinS + "*" + cosT};
    // clang-format on
}

/// The axes of the frame that it refers to.
CValue ChildFrame(const std::string& parent) {
    const std::string origin = Pose::LengthText(0.0);
    // clang-format off
    return {"NAME:RelativeCSParameters",
            "Mode:=", "Axis/Position",
            "Reference CS:=", parent,
            "OriginX:=", origin,
            "OriginY:=", origin,
            "OriginZ:=", origin,
            "XAxisXvec:=", "1mm",
            "XAxisYvec:=", "0mm",
            "XAxisZvec:=", "0mm",
            "YAxisXvec:=", "0mm",
            "YAxisYvec:=", "1mm",
            "YAxisZvec:=", "0mm"};
    // clang-format on
}

std::vector<std::string> GetRelativeCoordinateSystems(IDispatch* editor) {
    return Dispatch::QueryTexts(editor, L"GetRelativeCoordinateSystems");
}

bool CreateRelativeCS(IDispatch* editor, CValue frame, const std::string& name) {
    return Dispatch::Call(editor, L"CreateRelativeCS", {std::move(frame), FrameAttributes(name)});
}

bool RotateAbout(IDispatch* editor, std::string_view objectName, const char* axis, double radians) {
    if (radians == 0.0) {
        return true;
    }
    return Dispatch::Call(editor, L"Rotate",
                          {Selection(objectName),
                           {"NAME:RotateParameters", "RotateAxis:=", axis, "RotateAngle:=", Text::Fixed(radians)}});
}

/// Deeper than any model nests its objects. One that is its own child would otherwise take the whole stack.
constexpr int deepestNesting = 256;

bool AttachToBody(IDispatch* object, const std::string& body, int depth) {
    const std::vector<std::string> properties = ObjectCommands::GetPropNames(object);
    if (Names::Contains(properties, frameProperty) &&
        !ObjectCommands::SetPropValue(object, frameProperty, Names::ObjectFrame(body))) {
        return false;
    }
    if (Names::Contains(properties, orientationProperty) &&
        !ObjectCommands::SetPropValue(object, orientationProperty, Names::MagnetFrame(body))) {
        return false;
    }
    for (const std::string& name : ObjectCommands::ChildNames(object)) {
        const CObject child = ObjectCommands::GetChildObject(object, name);
        if (!child || depth == deepestNesting || !AttachToBody(child.get(), body, depth + 1)) {
            return false;
        }
    }
    return true;
}

} // namespace

bool CreateBodyFrames(IDispatch* editor, const std::string& body) {
    const std::string frame = Names::ObjectFrame(body);
    // A body that has its frame is taken as set up, child frame included, even where that is missing.
    if (Names::Contains(GetRelativeCoordinateSystems(editor), frame)) {
        return true;
    }
    return CreateRelativeCS(editor, DrivenFrame(body), frame) &&
           CreateRelativeCS(editor, ChildFrame(frame), Names::MagnetFrame(body));
}

bool SetWorkingFrame(IDispatch* editor, std::string_view frame) {
    return Dispatch::Call(editor, L"SetWCS",
                          {{"NAME:SetWCS Parameter", "Working Coordinate System:=", frame, "RegionDepCSOk:=", true}});
}

bool AttachToBody(IDispatch* object, const std::string& body) {
    return AttachToBody(object, body, 0);
}

bool Move(IDispatch* editor, const IKinoraVeltrixInterface::Transform& pose, std::string_view objectName) {
    const auto& [x, y, z] = pose.translation;
    if (x == 0.0 && y == 0.0 && z == 0.0) {
        return true;
    }
    return Dispatch::Call(editor, L"Move",
                          {Selection(objectName),
                           {"NAME:TranslateParameters", "TranslateVectorX:=", Pose::LengthText(-x),
                            "TranslateVectorY:=", Pose::LengthText(-y), "TranslateVectorZ:=", Pose::LengthText(-z)}});
}

bool Rotate(IDispatch* editor, const IKinoraVeltrixInterface::Transform& pose, std::string_view objectName) {
    const Pose::Angles angles = Pose::AnglesOf(pose.rotation);
    return RotateAbout(editor, objectName, "X", angles.psi) && RotateAbout(editor, objectName, "Y", angles.theta) &&
           RotateAbout(editor, objectName, "Z", angles.phi);
}

} // namespace CoordinateSystemCommands
