#pragma once

#include <string>

/// Makes the folder that a step writes into.
/// @param folder   in the ANSI code page; its parent must exist
/// @param isFirst  a run begins: what is there is deleted with everything in it, and the folder made anew
/// @throws std::filesystem::filesystem_error  it cannot be deleted or made
void PrepareReportsFolder(const std::string& folder, bool isFirst);
