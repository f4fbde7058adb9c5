#pragma once

/// Marks what the DLL exports. The library's own sources define KINORA_VELTRIX_EXPORTS; everybody else imports. Other
/// systems have the headers only, for programs that are tested there against a coupling of their own.
#if !defined(_WIN32)
#define KINORA_VELTRIX_API
#elif defined(KINORA_VELTRIX_EXPORTS)
#define KINORA_VELTRIX_API __declspec(dllexport)
#else
#define KINORA_VELTRIX_API __declspec(dllimport)
#endif
