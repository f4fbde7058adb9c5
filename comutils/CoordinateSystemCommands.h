#pragma once

#include "comutils/Dispatch.h"
#include "interface/IKinoraVeltrixInterface.h"

#include <string>
#include <string_view>

/// Commands of the 3D modeler's editor that place bodies: coordinate systems, and what stands in them.
namespace CoordinateSystemCommands {

/// "CreateRelativeCS" twice: the body's frame, driven by its six pose variables, and the magnet frame in it with the
/// same axes. A body whose frame exists is taken as set up: no call then.
bool CreateBodyFrames(IDispatch* editor, const std::string& body);

/// "SetWCS": makes a frame the working coordinate system.
bool SetWorkingFrame(IDispatch* editor, std::string_view frame);

/// Attaches a modeler object and all its descendants to the body's frames, by their properties where they have them.
/// @return false at the first failed write and at the first missing child
bool AttachToBody(IDispatch* object, const std::string& body);

/// "Move" by the negated translation, from the imported position back to the body's origin. A zero translation makes no
/// call.
bool Move(IDispatch* editor, const IKinoraVeltrixInterface::Transform& pose, std::string_view objectName);

/// "Rotate" about X by psi, Y by theta, Z by phi, those that are zero left out.
/// @return false at the first failed call; earlier rotations stay
bool Rotate(IDispatch* editor, const IKinoraVeltrixInterface::Transform& pose, std::string_view objectName);

} // namespace CoordinateSystemCommands
