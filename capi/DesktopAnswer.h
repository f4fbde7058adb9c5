#pragma once

#include "capi/Error.h"
#include "comutils/Dispatch.h"

namespace kinora::capi {

/// @return true when the desktop turned a call away because it is at work, or a dialog is open
bool IsBusy(HRESULT code);
Error DesktopIsBusy();

/// @return true when there is no desktop any more behind the objects that it gave
bool IsGone(HRESULT code);
Error DesktopIsGone();

/// What a refused call tells, as a sentence; also when none was.
std::string CauseOf(const Dispatch::Refusal& refusal);

} // namespace kinora::capi
