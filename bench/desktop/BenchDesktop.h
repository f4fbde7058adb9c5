#pragma once

#include <windows.h>

#include <oaidl.h>

// A desktop for benchmarks: an in-process automation server that answers every command of a coupling step at once and
// keeps nothing. It is registered as "Pellux.VantorDesktop.Bench".

#if defined(BENCH_DESKTOP_EXPORTS)
#define BENCH_DESKTOP_API extern "C" __declspec(dllexport)
#else
#define BENCH_DESKTOP_API extern "C" __declspec(dllimport)
#endif

/// Writes the registration of this DLL (machine-wide; Wine does not merge per-user classes), or removes it.
BENCH_DESKTOP_API bool BenchRegister(bool install);

/// What the desktop answers from now on.
/// @param folder   the project's folder, with a trailing separator
/// @param bodies   number of bodies "B0", "B1", ... whose variables and reports the design has
/// @param reports  the option "UpdateReportsOnSolve"
BENCH_DESKTOP_API void BenchConfigure(const wchar_t* folder, int bodies, const wchar_t* reports);

/// Called before every invocation.
using BenchObserver = void (*)(IDispatch* object, const wchar_t* method, const DISPPARAMS& arguments);

/// @param observer  null for none
BENCH_DESKTOP_API void BenchObserve(BenchObserver observer);
