#include "tests/fault/CountingNew.h"

#include "tests/support/World.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

thread_local int libraryDepth = 0;
thread_local bool isTests = false;
std::atomic<bool> areOthersLibrarys = false;
std::atomic<std::size_t> liveBlocks = 0;
std::atomic<std::size_t> liveBytes = 0;
std::atomic<std::size_t> countedAllocations = 0;
std::atomic<std::size_t> failing = 0;

/// Stands before every block; as large as the alignment that operator new promises.
struct alignas(16) Header {
    std::size_t size;
    bool isLibrarys;
};

bool IsLibrary() {
    return (libraryDepth > 0 || (areOthersLibrarys && !isTests)) && !fake::InsideDesktop::Is();
}

void* Allocate(std::size_t size) {
    const bool isLibrarys = IsLibrary();
    if (isLibrarys && ++countedAllocations == failing) {
        return nullptr;
    }
    auto* const header = static_cast<Header*>(std::malloc(sizeof(Header) + size));
    if (!header) {
        return nullptr;
    }
    *header = {size, isLibrarys};
    liveBlocks += isLibrarys ? 1U : 0U;
    liveBytes += isLibrarys ? size : 0U;
    return header + 1;
}

void* AllocateOrThrow(std::size_t size) {
    void* const block = Allocate(size);
    if (!block) {
        throw std::bad_alloc();
    }
    return block;
}

void Free(void* block) {
    if (!block) {
        return;
    }
    Header* const header = static_cast<Header*>(block) - 1;
    liveBlocks -= header->isLibrarys ? 1U : 0U;
    liveBytes -= header->isLibrarys ? header->size : 0U;
    std::free(header);
}

} // namespace

CountingNew::InLibrary::InLibrary() {
    ++libraryDepth;
}

CountingNew::InLibrary::~InLibrary() {
    --libraryDepth;
}

void CountingNew::CountOtherThreads() {
    isTests = true;
    areOthersLibrarys = true;
}

std::size_t CountingNew::LiveBlocks() {
    return liveBlocks;
}

std::size_t CountingNew::LiveBytes() {
    return liveBytes;
}

void CountingNew::Fail(std::size_t number) {
    failing = number;
    countedAllocations = 0;
}

std::size_t CountingNew::Count() {
    return countedAllocations;
}

void* operator new(std::size_t size) {
    return AllocateOrThrow(size);
}

void* operator new[](std::size_t size) {
    return AllocateOrThrow(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}

void operator delete(void* block) noexcept {
    Free(block);
}

void operator delete[](void* block) noexcept {
    Free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    Free(block);
}

void operator delete[](void* block, std::size_t) noexcept {
    Free(block);
}

void operator delete(void* block, const std::nothrow_t&) noexcept {
    Free(block);
}

void operator delete[](void* block, const std::nothrow_t&) noexcept {
    Free(block);
}
