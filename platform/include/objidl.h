#pragma once

/// @file
/// Who watches the memory of automation values.

#include <unknwn.h>

#include <cstddef>

#pragma GCC visibility push(default)

using SIZE_T = std::size_t;

extern const IID IID_IMallocSpy;

/// Asked before and after every allocation and release. Here only PreAlloc, PostAlloc, PreFree and PostFree are called,
/// and every block is a spied one.
struct IMallocSpy : IUnknown {
    /// @return bytes to allocate; 0 lets the allocation fail
    virtual SIZE_T STDMETHODCALLTYPE PreAlloc(SIZE_T size) = 0;
    virtual void* STDMETHODCALLTYPE PostAlloc(void* block) = 0;
    virtual void* STDMETHODCALLTYPE PreFree(void* block, BOOL isSpied) = 0;
    virtual void STDMETHODCALLTYPE PostFree(BOOL isSpied) = 0;
    virtual SIZE_T STDMETHODCALLTYPE PreRealloc(void* block, SIZE_T size, void** newBlock, BOOL isSpied) = 0;
    virtual void* STDMETHODCALLTYPE PostRealloc(void* block, BOOL isSpied) = 0;
    virtual void* STDMETHODCALLTYPE PreGetSize(void* block, BOOL isSpied) = 0;
    virtual SIZE_T STDMETHODCALLTYPE PostGetSize(SIZE_T size, BOOL isSpied) = 0;
    virtual void* STDMETHODCALLTYPE PreDidAlloc(void* block, BOOL isSpied) = 0;
    virtual int STDMETHODCALLTYPE PostDidAlloc(void* block, BOOL isSpied, int actual) = 0;
    virtual void STDMETHODCALLTYPE PreHeapMinimize() = 0;
    virtual void STDMETHODCALLTYPE PostHeapMinimize() = 0;
};

/// Install it before the first value is made. There is one at a time, and it stays: CO_E_OBJISREG for another.
HRESULT CoRegisterMallocSpy(IMallocSpy* spy);

#pragma GCC visibility pop
