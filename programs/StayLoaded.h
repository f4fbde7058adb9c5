#pragma once

namespace kinora::programs {

/// Keeps the DLL that this is linked into in its process to the end, whoever lets go of it. (Elsewhere than on Windows
/// that is the linker's business.)
void StayLoaded();

} // namespace kinora::programs
