#pragma once

/// Marks what the DLL exports. The library's own sources define KINORA_VELTRIX_EXPORTS; everybody else imports.
#if defined(KINORA_VELTRIX_EXPORTS)
#define KINORA_VELTRIX_API __declspec(dllexport)
#else
#define KINORA_VELTRIX_API __declspec(dllimport)
#endif
