#pragma once

#include <filesystem>
#include <string>

/// The one name of an existing file or folder, as the file system itself gives it: absolute, links, junctions and dot
/// segments resolved, short names and letter case as they are on the disk. Where the file system cannot tell, the
/// absolute path. (The standard library's `canonical` is not used: some know no network paths, resolve no junctions,
/// and keep names as they are typed.)
/// @throws std::filesystem::filesystem_error  there is no such path
std::filesystem::path CanonicalPath(const std::filesystem::path& path);

/// @param path  as the system gives it, with the mark of paths that are not parsed: "\\?\C:\a", "\\?\UNC\server\share"
/// @return the same as users write it: "C:\a", "\\server\share"; what has no such form stays as it is
std::wstring WithoutPathMark(const std::wstring& path);
