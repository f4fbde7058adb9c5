#pragma once

/// @file
/// The mark of exported names.

/// Marks what the DLL exports; the library's own sources define KINORA_VELTRIX_EXPORTS. Nobody else needs a mark: a
/// program reaches the DLL through its import library, and one that compiles the sources in, or is tested on another
/// system against a coupling of its own, uses the same headers.
#if defined(_WIN32) && defined(KINORA_VELTRIX_EXPORTS)
#define KINORA_VELTRIX_API __declspec(dllexport)
#else
#define KINORA_VELTRIX_API
#endif
