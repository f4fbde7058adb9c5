#include "tests/support/TestFolder.h"
#include "tests/support/Texts.h"

#include <filesystem>

namespace fake {

bool MakeFolderLink(const std::wstring& link, const std::wstring& target) {
    std::error_code error;
    std::filesystem::create_directory_symlink(ToPath(target), ToPath(link), error);
    return !error;
}

NetworkFolder::NetworkFolder() : TestFolder(std::wstring()) {}

} // namespace fake
