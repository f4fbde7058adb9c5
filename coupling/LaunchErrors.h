#pragma once

/// The name of the desktop's class; that of a version has a point and the version behind it.
inline constexpr char desktopProgId[] = "Pellux.VantorDesktop";

/// The two texts of `LaunchDesktopExeption`.
inline constexpr char desktopNotInstalled[] = "Please check your QUORIX Vantor Desktop installation.";
inline constexpr char desktopNotStarted[] =
    "QUORIX Vantor Desktop failed to launch. Please check your license or other configuration.";
