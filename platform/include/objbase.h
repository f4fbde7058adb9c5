#pragma once

/// @file
/// Apartments and classes. Objects live in this process and are called directly, from whichever thread.

#include <unknwn.h>

#pragma GCC visibility push(default)

/// @name Apartments
/// They are counted, per thread, and keep a class from being created on a thread that has none.
/// @{
inline constexpr DWORD COINIT_MULTITHREADED = 0x0;
inline constexpr DWORD COINIT_APARTMENTTHREADED = 0x2;
HRESULT CoInitialize(void* reserved);
HRESULT CoInitializeEx(void* reserved, DWORD model);
void CoUninitialize();

enum APTTYPE { APTTYPE_CURRENT = -1, APTTYPE_STA = 0, APTTYPE_MTA = 1 };
enum APTTYPEQUALIFIER { APTTYPEQUALIFIER_NONE = 0, APTTYPEQUALIFIER_IMPLICIT_MTA = 1 };
/// A thread without an apartment of its own has none, whatever the others have: APTTYPEQUALIFIER_NONE always.
HRESULT CoGetApartmentType(APTTYPE* type, APTTYPEQUALIFIER* qualifier);
/// @}

/// @name Classes
/// Those of this process (platform/ClassTable.h). There is no registry, no other process and no other machine: a
/// context without CLSCTX_INPROC_SERVER finds none.
/// @{
inline constexpr DWORD CLSCTX_INPROC_SERVER = 0x01;
inline constexpr DWORD CLSCTX_LOCAL_SERVER = 0x04;
inline constexpr DWORD CLSCTX_REMOTE_SERVER = 0x10;
inline constexpr DWORD CLSCTX_SERVER = CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;
HRESULT CLSIDFromProgID(LPCOLESTR progId, CLSID* classId);
HRESULT CoGetClassObject(REFCLSID classId, DWORD context, void* server, REFIID iid, void** object);
HRESULT CoCreateInstance(REFCLSID classId, IUnknown* outer, DWORD context, REFIID iid, void** object);
/// @}

#pragma GCC visibility pop
