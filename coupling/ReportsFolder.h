#pragma once

#include <string>

/// Makes the folder that a step writes into. Read-only files go like others; what somebody else, such as a virus
/// scanner, still holds or is just deleting is waited for, a second at most.
/// @param folder   in the ANSI code page; its parent must exist
/// @param isFirst  a run begins: what is there is deleted with everything in it, and the folder made anew
/// @throws std::filesystem::filesystem_error  it cannot be deleted or made
void PrepareReportsFolder(const std::string& folder, bool isFirst);
