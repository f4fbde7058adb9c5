#pragma once

/// @file
/// Whether host and DLL were built so that they can hand each other C++ objects.

#include "interface/KinoraVeltrixExport.h"

#include <cstring>
#include <string> // any header of the standard library tells which one it is

/// @cond
// The parts of the text below: what a compiler says about itself.

#define KINORA_VELTRIX_TEXT_OF_VALUE(value) #value
#define KINORA_VELTRIX_TEXT_OF(macro) KINORA_VELTRIX_TEXT_OF_VALUE(macro)

#if defined(_MSC_VER)
#define KINORA_VELTRIX_COMPILER_FAMILY "MSVC"
#elif defined(__GNUC__)
#define KINORA_VELTRIX_COMPILER_FAMILY "GCC"
#else
#define KINORA_VELTRIX_COMPILER_FAMILY "unknown compiler"
#endif

#if defined(_LIBCPP_VERSION)
#define KINORA_VELTRIX_LIBRARY "libc++ " KINORA_VELTRIX_TEXT_OF(_LIBCPP_ABI_VERSION)
#elif defined(__GLIBCXX__) && _GLIBCXX_USE_CXX11_ABI
#define KINORA_VELTRIX_LIBRARY "libstdc++ 6, C++11 texts"
#elif defined(__GLIBCXX__)
#define KINORA_VELTRIX_LIBRARY "libstdc++ 6, older texts"
#elif defined(_MSVC_STL_VERSION)
#define KINORA_VELTRIX_LIBRARY "of MSVC, 14" // one binary interface since 2015
#else
#define KINORA_VELTRIX_LIBRARY "unknown library"
#endif

#if defined(_ITERATOR_DEBUG_LEVEL)
#define KINORA_VELTRIX_ITERATORS KINORA_VELTRIX_TEXT_OF(_ITERATOR_DEBUG_LEVEL)
#elif defined(_GLIBCXX_DEBUG)
#define KINORA_VELTRIX_ITERATORS "2"
#else
#define KINORA_VELTRIX_ITERATORS "0"
#endif

#if defined(_MSC_VER) && defined(_DLL)
#define KINORA_VELTRIX_RUNTIME "shared"
#elif defined(_MSC_VER)
#define KINORA_VELTRIX_RUNTIME "its own"
#elif defined(_UCRT)
#define KINORA_VELTRIX_RUNTIME "ucrt"
#elif defined(__MSVCRT__)
#define KINORA_VELTRIX_RUNTIME "msvcrt"
#else
#define KINORA_VELTRIX_RUNTIME "the system's"
#endif
/// @endcond

/// Number of the interface: it grows when an operation, a record or the coupling object takes another form.
#define KINORA_VELTRIX_INTERFACE_VERSION 1

/// What has to be the same on both sides, as whoever includes this header sees it: compiler family, standard library
/// and its version, level of iterator checks, C runtime, and version of the interface. Clang counts as the compiler
/// whose library it uses.
#define KINORA_VELTRIX_BINARY_INTERFACE                                                                                \
    KINORA_VELTRIX_COMPILER_FAMILY                                                                                     \
    "; standard library " KINORA_VELTRIX_LIBRARY "; iterator level " KINORA_VELTRIX_ITERATORS                          \
    "; C runtime " KINORA_VELTRIX_RUNTIME "; interface " KINORA_VELTRIX_TEXT_OF(KINORA_VELTRIX_INTERFACE_VERSION)

/// @return `KINORA_VELTRIX_BINARY_INTERFACE` as the DLL was built, valid as long as it is loaded. Only C crosses here,
///         so that every program may ask.
extern "C" KINORA_VELTRIX_API const char* GetKinoraVeltrixBinaryInterface();

/// The first call of a careful host, before the factory: a program of another compiler gets an object from the factory
/// all the same, and corrupts memory with the first text that it hands over.
/// @return true when the DLL was built as this program is
static inline bool IsKinoraVeltrixCompatible() {
    return std::strcmp(GetKinoraVeltrixBinaryInterface(), KINORA_VELTRIX_BINARY_INTERFACE) == 0;
}
