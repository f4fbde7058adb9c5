#pragma once

namespace platform {

/// True between CoInitialize and CoUninitialize on this thread.
bool HasApartment();

} // namespace platform
