// Files and folders by wide names, as the coupling log and the reports folder use them: what succeeds, and which error
// says why something does not.

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using testing::UnorderedElementsAre;

struct CloseFile {
    void operator()(HANDLE file) const noexcept { CloseHandle(file); }
};
using File = std::unique_ptr<void, CloseFile>;

File AsFile(HANDLE file) {
    return File(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

/// @return null when it cannot be opened
File OpenToAppend(const std::wstring& path) {
    return AsFile(CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr));
}

/// @return null when it cannot be opened
File OpenForItsName(const std::wstring& path) {
    return AsFile(CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                              OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

void Write(const File& file, const std::string& bytes) {
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
    EXPECT_EQ(written, bytes.size());
}

/// @return the error; ERROR_SUCCESS after a success
template <class Call>
DWORD ErrorOf(Call call) {
    SetLastError(ERROR_SUCCESS);
    return call() ? static_cast<DWORD>(ERROR_SUCCESS) : GetLastError();
}

DWORD ErrorOfAppending(const std::wstring& path) {
    return ErrorOf([&] { return OpenToAppend(path) != nullptr; });
}

DWORD ErrorOfMaking(const std::wstring& folder) {
    return ErrorOf([&] { return CreateDirectoryW(folder.c_str(), nullptr); });
}

DWORD ErrorOfRemoving(const std::wstring& folder) {
    return ErrorOf([&] { return RemoveDirectoryW(folder.c_str()); });
}

DWORD ErrorOfDeleting(const std::wstring& file) {
    return ErrorOf([&] { return DeleteFileW(file.c_str()); });
}

DWORD ErrorOfAttributes(const std::wstring& path) {
    return ErrorOf([&] { return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; });
}

bool IsFolder(DWORD attributes) {
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

/// The name of an open file or folder as the system gives it.
std::wstring FinalName(const File& file) {
    std::wstring name(1000, L'\0');
    const DWORD length = GetFinalPathNameByHandleW(file.get(), name.data(), static_cast<DWORD>(name.size()),
                                                   FILE_NAME_NORMALIZED | VOLUME_NAME_DOS);
    EXPECT_NE(length, 0U);
    name.resize(length);
    return name;
}

/// A path's own conversion goes by the locale on some systems.
std::wstring FromUtf8(const std::string& utf8) {
    std::wstring wide(utf8.size(), L'\0');
    const int length = static_cast<int>(utf8.size());
    wide.resize(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, wide.data(), length)));
    return wide;
}

bool EndsWith(const std::wstring& text, const std::wstring& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

class Files : public testing::Test {
protected:
    Files() { std::filesystem::create_directory(m_folder); }
    ~Files() override {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }
    /// The path of something in the test's folder, its name in UTF-8.
    std::filesystem::path Path(const std::string& name) const { return m_folder / std::filesystem::u8path(name); }
    std::wstring In(const std::string& name) const { return FromUtf8(Path(name).u8string()); }
    std::wstring MakeFile(const std::string& name, const std::string& bytes = "") const {
        std::ofstream(Path(name), std::ios::binary) << bytes;
        return In(name);
    }
    std::wstring MakeFolder(const std::string& name) const {
        EXPECT_EQ(ErrorOfMaking(In(name)), static_cast<DWORD>(ERROR_SUCCESS));
        return In(name);
    }
    std::string Bytes(const std::string& name) const {
        std::ifstream file(Path(name), std::ios::binary);
        EXPECT_TRUE(file);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    static constexpr wchar_t m_separator = static_cast<wchar_t>(std::filesystem::path::preferred_separator);

private:
    const std::filesystem::path m_folder =
        std::filesystem::temp_directory_path() / ("kinora-files-" + std::to_string(std::random_device()()));
};

// Files.

TEST_F(Files, FileThatIsOpenedOrMadeTellsWhetherItWasThere) {
    SetLastError(ERROR_INVALID_PARAMETER);
    EXPECT_NE(OpenToAppend(In("log.csv")), nullptr);
    SetLastError(ERROR_INVALID_PARAMETER);
    const File made = OpenToAppend(In("log2.csv"));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SUCCESS)) << "made";
    const File there = OpenToAppend(In("log2.csv"));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    EXPECT_NE(there, nullptr);
}

TEST_F(Files, AppendingKeepsWhatIsThere) {
    MakeFile("log.csv", "1\r\n");
    Write(OpenToAppend(In("log.csv")), "2\r\n");
    Write(OpenToAppend(In("log.csv")), "3\r\n");
    EXPECT_EQ(Bytes("log.csv"), "1\r\n2\r\n3\r\n");
}

TEST_F(Files, TwoAppendingHandlesOverwriteNothingOfEachOther) {
    const File first = OpenToAppend(In("log.csv"));
    const File second = OpenToAppend(In("log.csv"));
    Write(first, "a");
    Write(second, "b");
    Write(first, "c");
    EXPECT_EQ(Bytes("log.csv"), "abc");
}

TEST_F(Files, FileThatOthersReadIsAppendedTo) {
    MakeFile("log.csv", "1");
    std::ifstream reader(Path("log.csv"));
    Write(OpenToAppend(In("log.csv")), "2");
    std::string bytes;
    EXPECT_TRUE(reader >> bytes);
    EXPECT_EQ(bytes, "12");
}

TEST_F(Files, NothingIsWrittenWithoutBytes) {
    Write(OpenToAppend(In("log.csv")), "");
    EXPECT_EQ(Bytes("log.csv"), "");
}

TEST_F(Files, OpeningWhatIsNotThereSaysWhatIsMissing) {
    EXPECT_EQ(ErrorOf([&] { return OpenForItsName(In("missing")) != nullptr; }),
              static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(ErrorOfAppending(In("missing/log.csv")), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
}

TEST_F(Files, FolderIsOpenedForItsNameOnly) {
    MakeFolder("folder");
    EXPECT_EQ(ErrorOfAppending(In("folder")), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    EXPECT_NE(OpenForItsName(In("folder")), nullptr);
}

TEST_F(Files, DeletedFileIsGone) {
    const std::wstring path = MakeFile("log.csv", "1");
    EXPECT_EQ(ErrorOfDeleting(path), static_cast<DWORD>(ERROR_SUCCESS));
    EXPECT_EQ(ErrorOfDeleting(path), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(ErrorOfAttributes(path), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

TEST_F(Files, FolderIsNotDeletedAsAFile) {
    const std::wstring folder = MakeFolder("folder");
    EXPECT_EQ(ErrorOfDeleting(folder), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    EXPECT_EQ(ErrorOfAttributes(folder), static_cast<DWORD>(ERROR_SUCCESS));
}

TEST_F(Files, ReadOnlyFileIsNotDeleted) {
    const std::wstring path = MakeFile("log.csv");
    EXPECT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY));
    const DWORD attributes = GetFileAttributesW(path.c_str());
    EXPECT_NE(attributes & FILE_ATTRIBUTE_READONLY, 0U);
    EXPECT_EQ(ErrorOfDeleting(path), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    EXPECT_TRUE(SetFileAttributesW(path.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY)));
    EXPECT_EQ(GetFileAttributesW(path.c_str()) & FILE_ATTRIBUTE_READONLY, 0U);
    EXPECT_EQ(ErrorOfDeleting(path), static_cast<DWORD>(ERROR_SUCCESS));
}

// Attributes.

TEST_F(Files, AttributesTellFilesFromFolders) {
    EXPECT_TRUE(IsFolder(GetFileAttributesW(MakeFolder("folder").c_str())));
    EXPECT_FALSE(IsFolder(GetFileAttributesW(MakeFile("file").c_str())));
}

TEST_F(Files, AttributesOfWhatIsNotThereSayWhatIsMissing) {
    EXPECT_EQ(ErrorOfAttributes(In("missing")), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(ErrorOfAttributes(In("missing/file")), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
    SetLastError(ERROR_SUCCESS);
    EXPECT_FALSE(SetFileAttributesW(In("missing").c_str(), FILE_ATTRIBUTE_NORMAL));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

// Folders.

TEST_F(Files, FolderIsMadeOnce) {
    const std::wstring folder = MakeFolder("folder");
    EXPECT_EQ(ErrorOfMaking(folder), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    EXPECT_EQ(ErrorOfMaking(MakeFile("file")), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    EXPECT_EQ(ErrorOfMaking(In("missing/folder")), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
}

TEST_F(Files, FolderIsRemovedWhenItIsEmpty) {
    const std::wstring folder = MakeFolder("folder");
    const std::wstring file = MakeFile("folder/file");
    EXPECT_EQ(ErrorOfRemoving(folder), static_cast<DWORD>(ERROR_DIR_NOT_EMPTY));
    EXPECT_EQ(ErrorOfDeleting(file), static_cast<DWORD>(ERROR_SUCCESS));
    EXPECT_EQ(ErrorOfRemoving(folder), static_cast<DWORD>(ERROR_SUCCESS));
    EXPECT_EQ(ErrorOfRemoving(folder), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_NE(ErrorOfRemoving(MakeFile("file")), static_cast<DWORD>(ERROR_SUCCESS));
    EXPECT_EQ(ErrorOfAttributes(In("file")), static_cast<DWORD>(ERROR_SUCCESS));
}

TEST_F(Files, ListOfAFolderNamesEverythingInIt) {
    MakeFolder("folder");
    MakeFolder("folder/inner");
    MakeFile("folder/\xE7\xA3\x81.csv", "123");
    MakeFile("folder/.hidden");
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileW((In("folder") + m_separator + L"*").c_str(), &entry);
    ASSERT_NE(search, INVALID_HANDLE_VALUE);
    std::vector<std::wstring> files;
    std::vector<std::wstring> folders;
    do {
        (IsFolder(entry.dwFileAttributes) ? folders : files).push_back(entry.cFileName);
    } while (FindNextFileW(search, &entry));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NO_MORE_FILES));
    EXPECT_TRUE(FindClose(search));
    EXPECT_THAT(files, UnorderedElementsAre(L"\u78C1.csv", L".hidden"));
    EXPECT_THAT(folders, UnorderedElementsAre(L".", L"..", L"inner"));
}

TEST_F(Files, ListOfAFolderThatIsNotThereFails) {
    WIN32_FIND_DATAW entry;
    SetLastError(ERROR_SUCCESS);
    // cppcheck-suppress leakReturnValNotUsed ; there is nothing to close
    const bool isFound = FindFirstFileW((In("missing") + m_separator + L"*").c_str(), &entry) != INVALID_HANDLE_VALUE;
    EXPECT_FALSE(isFound);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
}

// Names.

TEST_F(Files, OneFolderHasOneName) {
    MakeFolder("a");
    MakeFolder("b");
    MakeFolder("b/\xE7\xA3\x81");
    const std::wstring name = FinalName(OpenForItsName(In("b/\xE7\xA3\x81")));
    EXPECT_TRUE(EndsWith(name, m_separator + std::wstring(L"b") + m_separator + L"\u78C1"));
    EXPECT_EQ(FinalName(OpenForItsName(In("a/../b/./\xE7\xA3\x81"))), name);
    EXPECT_EQ(FinalName(OpenForItsName(In("b/\xE7\xA3\x81/"))), name);
    EXPECT_NE(FinalName(OpenForItsName(In("b"))), name);
    EXPECT_TRUE(EndsWith(FinalName(OpenForItsName(MakeFile("b/file"))), m_separator + std::wstring(L"file")));
}

TEST_F(Files, NameWithoutRoomSaysHowMuchItTakes) {
    const File folder = OpenForItsName(MakeFolder("a"));
    const std::wstring name = FinalName(folder);
    wchar_t small[2];
    EXPECT_EQ(GetFinalPathNameByHandleW(folder.get(), small, 2, VOLUME_NAME_DOS), name.size() + 1);
}

TEST_F(Files, FullPathIsMadeWithoutALookAtTheDisk) {
    std::wstring full(1000, L'\0');
    full.resize(GetFullPathNameW(In("a/../missing/./b").c_str(), 1000, full.data(), nullptr));
    EXPECT_EQ(std::filesystem::path(full), std::filesystem::path(In("missing/b")).make_preferred());
    wchar_t small[2];
    EXPECT_EQ(GetFullPathNameW(full.c_str(), 2, small, nullptr), full.size() + 1);
}

TEST_F(Files, FullPathOfANameIsInTheCurrentFolder) {
    std::wstring full(1000, L'\0');
    full.resize(GetFullPathNameW(L"missing", 1000, full.data(), nullptr));
    EXPECT_EQ(std::filesystem::path(full), std::filesystem::current_path() / L"missing");
}

// Time.

TEST(Clock, CountsMilliseconds) {
    const ULONGLONG start = GetTickCount64();
    Sleep(100);
    const ULONGLONG passed = GetTickCount64() - start;
    EXPECT_GE(passed, 80U) << "it may be coarse";
    EXPECT_LT(passed, 60000U);
}

} // namespace
