#pragma once

/// @file
/// What this project uses of the platform's base interface, for systems without one: types, result codes, text
/// conversion, files, time. Everything does what the platform documents for it; what differs is said here.

#include <cerrno>
#include <cstdint>

#pragma GCC visibility push(default)

/// @name Types
/// The widths are the platform's, but for characters: those of wide texts are UTF-32 here.
/// @{
using BOOL = int;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using SHORT = std::int16_t;
using USHORT = std::uint16_t;
using INT = int;
using UINT = unsigned int;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using WCHAR = wchar_t;
using OLECHAR = wchar_t;
using LPWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;
using LPOLESTR = OLECHAR*;
using LPCOLESTR = const OLECHAR*;
using PVOID = void*;
using HANDLE = void*;
using LCID = DWORD;
using HRESULT = LONG;

struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
};
using IID = GUID;
using CLSID = GUID;
using REFGUID = const GUID&;
using REFIID = const IID&;
using REFCLSID = const CLSID&;
/// @}

#define STDMETHODCALLTYPE
#define WINAPI

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;

bool operator==(const GUID& left, const GUID& right);
inline bool operator!=(const GUID& left, const GUID& right) {
    return !(left == right);
}
inline BOOL IsEqualGUID(REFGUID left, REFGUID right) {
    return left == right;
}
inline BOOL IsEqualIID(REFIID left, REFIID right) {
    return left == right;
}
inline BOOL IsEqualCLSID(REFCLSID left, REFCLSID right) {
    return left == right;
}

/// @name Result codes
/// @{
constexpr HRESULT MAKE_HRESULT(unsigned severity, unsigned facility, unsigned code) {
    return static_cast<HRESULT>(severity << 31U | facility << 16U | code);
}
constexpr bool SUCCEEDED(HRESULT result) {
    return result >= 0;
}
constexpr bool FAILED(HRESULT result) {
    return result < 0;
}

inline constexpr unsigned SEVERITY_ERROR = 1;
inline constexpr unsigned FACILITY_RPC = 1;
inline constexpr unsigned FACILITY_DISPATCH = 2;
inline constexpr unsigned FACILITY_ITF = 4;
inline constexpr unsigned FACILITY_WIN32 = 7;

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = MAKE_HRESULT(SEVERITY_ERROR, 0, 0x4001);
inline constexpr HRESULT E_NOINTERFACE = MAKE_HRESULT(SEVERITY_ERROR, 0, 0x4002);
inline constexpr HRESULT E_POINTER = MAKE_HRESULT(SEVERITY_ERROR, 0, 0x4003);
inline constexpr HRESULT E_ABORT = MAKE_HRESULT(SEVERITY_ERROR, 0, 0x4004);
inline constexpr HRESULT E_FAIL = MAKE_HRESULT(SEVERITY_ERROR, 0, 0x4005);
inline constexpr HRESULT E_UNEXPECTED = MAKE_HRESULT(SEVERITY_ERROR, 0, 0xFFFF);
inline constexpr HRESULT E_ACCESSDENIED = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_WIN32, 0x0005);
inline constexpr HRESULT E_OUTOFMEMORY = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_WIN32, 0x000E);
inline constexpr HRESULT E_INVALIDARG = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_WIN32, 0x0057);
inline constexpr HRESULT RPC_E_CALL_REJECTED = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_RPC, 0x0001);
inline constexpr HRESULT RPC_E_SERVER_DIED = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_RPC, 0x0007);
inline constexpr HRESULT RPC_E_CHANGED_MODE = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_RPC, 0x0106);
inline constexpr HRESULT RPC_E_DISCONNECTED = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_RPC, 0x0108);
inline constexpr HRESULT RPC_E_SERVERCALL_RETRYLATER = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_RPC, 0x010A);
inline constexpr HRESULT RPC_E_SERVERCALL_REJECTED = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_RPC, 0x010B);
inline constexpr HRESULT DISP_E_UNKNOWNINTERFACE = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_DISPATCH, 0x0001);
inline constexpr HRESULT DISP_E_MEMBERNOTFOUND = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_DISPATCH, 0x0003);
inline constexpr HRESULT DISP_E_TYPEMISMATCH = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_DISPATCH, 0x0005);
inline constexpr HRESULT DISP_E_UNKNOWNNAME = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_DISPATCH, 0x0006);
inline constexpr HRESULT DISP_E_NONAMEDARGS = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_DISPATCH, 0x0007);
inline constexpr HRESULT DISP_E_BADVARTYPE = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_DISPATCH, 0x0008);
inline constexpr HRESULT DISP_E_EXCEPTION = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_DISPATCH, 0x0009);
inline constexpr HRESULT DISP_E_OVERFLOW = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_DISPATCH, 0x000A);
inline constexpr HRESULT DISP_E_BADINDEX = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_DISPATCH, 0x000B);
inline constexpr HRESULT DISP_E_ARRAYISLOCKED = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_DISPATCH, 0x000D);
inline constexpr HRESULT DISP_E_BADPARAMCOUNT = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_DISPATCH, 0x000E);
inline constexpr HRESULT CLASS_E_NOAGGREGATION = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x0110);
inline constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x0111);
inline constexpr HRESULT REGDB_E_CLASSNOTREG = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x0154);
inline constexpr HRESULT CO_E_NOTINITIALIZED = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x01F0);
inline constexpr HRESULT CO_E_OBJNOTCONNECTED = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x01FD);
inline constexpr HRESULT CO_E_OBJISREG = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x01FC);
inline constexpr HRESULT CO_E_CLASSSTRING = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, 0x01F3);
inline constexpr HRESULT CO_E_SERVER_EXEC_FAILURE = MAKE_HRESULT(SEVERITY_ERROR, 8, 0x0005);
inline constexpr HRESULT CO_E_SERVER_STOPPING = MAKE_HRESULT(SEVERITY_ERROR, 8, 0x0008);
/// @}

/// @name Errors of this thread
/// Their numbers are the system's own, so that `std::system_category` can tell what they mean.
/// @{
inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = ENOENT;
inline constexpr DWORD ERROR_PATH_NOT_FOUND = ENOENT;
inline constexpr DWORD ERROR_ACCESS_DENIED = EACCES;
inline constexpr DWORD ERROR_SHARING_VIOLATION = EBUSY;
inline constexpr DWORD ERROR_INVALID_PARAMETER = EINVAL;
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = ENOBUFS;
inline constexpr DWORD ERROR_DIR_NOT_EMPTY = ENOTEMPTY;
inline constexpr DWORD ERROR_ALREADY_EXISTS = EEXIST;
inline constexpr DWORD ERROR_NO_MORE_FILES = ENODATA;
inline constexpr DWORD ERROR_DELETE_PENDING = ESTALE;
DWORD GetLastError();
void SetLastError(DWORD error);
/// @}

/// @name Text
/// All code pages are UTF-8. What is none, or half of a surrogate pair, becomes the replacement character. Flags are
/// not looked at, and nothing is ever replaced by a default character.
/// @{
inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_OEMCP = 1;
inline constexpr UINT CP_UTF8 = 65001;
inline constexpr DWORD WC_NO_BEST_FIT_CHARS = 0x400;
inline constexpr LCID LOCALE_SYSTEM_DEFAULT = 0x0800;
inline constexpr LCID LOCALE_USER_DEFAULT = 0x0400;
int MultiByteToWideChar(UINT codePage, DWORD flags, const char* text, int length, wchar_t* target, int capacity);
int WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* text, int length, char* target, int capacity,
                        const char* defaultCharacter, BOOL* usedDefault);
BOOL AreFileApisANSI();
UINT GetACP();
/// @}

/// @name Files
/// Paths are the system's own, with slashes. Share modes are not enforced, as nowhere on such systems.
/// @{
inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(std::intptr_t{-1}); // NOLINT: the published value
inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;
inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x01;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD FILE_ATTRIBUTE_REPARSE_POINT = 0x400;
inline constexpr DWORD FILE_APPEND_DATA = 0x04;
inline constexpr DWORD FILE_SHARE_READ = 0x01;
inline constexpr DWORD FILE_SHARE_WRITE = 0x02;
inline constexpr DWORD FILE_SHARE_DELETE = 0x04;
inline constexpr DWORD FILE_FLAG_BACKUP_SEMANTICS = 0x02000000;
inline constexpr DWORD FILE_NAME_NORMALIZED = 0;
inline constexpr DWORD VOLUME_NAME_DOS = 0;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD OPEN_ALWAYS = 4;
inline constexpr DWORD MAX_PATH = 260;

struct SECURITY_ATTRIBUTES;
struct OVERLAPPED;

/// An entry of a folder. Its name has room for what this system allows, not for MAX_PATH.
struct WIN32_FIND_DATAW {
    DWORD dwFileAttributes;
    WCHAR cFileName[1024];
};

/// Opens a file for FILE_APPEND_DATA, or for nothing but its name (access 0); ERROR_INVALID_PARAMETER for all else.
HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security, DWORD disposition,
                   DWORD flags, HANDLE templateFile);
BOOL WriteFile(HANDLE file, const void* data, DWORD size, DWORD* written, OVERLAPPED* overlapped);
BOOL CloseHandle(HANDLE file);
/// A link has FILE_ATTRIBUTE_REPARSE_POINT alone, whatever it leads to: DeleteFileW removes it.
DWORD GetFileAttributesW(LPCWSTR path);
/// FILE_ATTRIBUTE_READONLY is the one that can be changed.
BOOL SetFileAttributesW(LPCWSTR path, DWORD attributes);
BOOL DeleteFileW(LPCWSTR path);
BOOL CreateDirectoryW(LPCWSTR path, SECURITY_ATTRIBUTES* security);
BOOL RemoveDirectoryW(LPCWSTR path);
/// @param pattern  a folder and "*"; ERROR_INVALID_PARAMETER for any other pattern
HANDLE FindFirstFileW(LPCWSTR pattern, WIN32_FIND_DATAW* entry);
BOOL FindNextFileW(HANDLE search, WIN32_FIND_DATAW* entry);
BOOL FindClose(HANDLE search);
DWORD GetFullPathNameW(LPCWSTR path, DWORD capacity, LPWSTR name, LPWSTR* filePart);
DWORD GetFinalPathNameByHandleW(HANDLE file, LPWSTR name, DWORD capacity, DWORD flags);
/// @}

/// @name Time
/// @{
void Sleep(DWORD milliseconds);
ULONGLONG GetTickCount64();
/// @}

#pragma GCC visibility pop
