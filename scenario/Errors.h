#pragma once

#include "programs/Errors.h"

namespace kinora::scenario {

/// What is wrong with a scenario ends a program as anything else does.
using programs::ExitStatus;
using programs::InputError;
using programs::RunError;

} // namespace kinora::scenario
