#pragma once

/// @file
/// The exception of a launch that fails.

#include <stdexcept>

/// Thrown by `LaunchDesktop`, and by `CreateProject` and `OpenProject` when they launch the desktop themselves.
///
/// `what()` is one of two texts: the desktop is not installed ("Please check your QUORIX Vantor Desktop
/// installation."), or it is installed and does not start ("QUORIX Vantor Desktop failed to launch. Please check your
/// license or other configuration."). The coupling object may be used again after it: launch once more when the cause
/// is mended.
///
/// The name has been spelled so since the first version and is part of the binary interface.
class LaunchDesktopExeption : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};
