#pragma once

/// @file
/// The mark of exported names.

/// Marks what the library exports. Its own sources define KINORA_VELTRIX_EXPORTS for the DLL; a program reaches that
/// through its import library and needs no mark. On other systems the mark is the same for both.
#if defined(_WIN32) && defined(KINORA_VELTRIX_EXPORTS)
#define KINORA_VELTRIX_API __declspec(dllexport)
#elif defined(_WIN32)
#define KINORA_VELTRIX_API
#else
#define KINORA_VELTRIX_API __attribute__((visibility("default")))
#endif
