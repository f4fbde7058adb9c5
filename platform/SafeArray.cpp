#include "platform/Elements.h"
#include "platform/Memory.h"

#include <oleauto.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>

namespace {

using platform::ClearElement;
using platform::CopyElement;
using platform::ElementSize;

/// What stands before the array's record: the type of its elements.
struct alignas(std::max_align_t) ArrayHead {
    VARTYPE type;
};

ArrayHead* ArrayHeadOf(SAFEARRAY* array) {
    return reinterpret_cast<ArrayHead*>(array) - 1;
}

VARTYPE TypeOf(SAFEARRAY* array) {
    return ArrayHeadOf(array)->type;
}

std::size_t CountOf(const SAFEARRAY& array) {
    std::size_t count = 1;
    for (USHORT dimension = 0; dimension < array.cDims; ++dimension) {
        count *= array.rgsabound[dimension].cElements;
    }
    return count;
}

/// The bounds of a dimension, counted from 1; null when there is none such.
const SAFEARRAYBOUND* BoundsOf(const SAFEARRAY* array, UINT dimension) {
    return array && dimension >= 1 && dimension <= array->cDims ? &array->rgsabound[array->cDims - dimension] : nullptr;
}

/// The most bytes that elements may take: their number and places have to be told in 32 bits.
constexpr std::size_t mostBytes = std::numeric_limits<LONG>::max();

/// Memory for the elements, all zero; null when there are too many.
void* AllocateElements(const SAFEARRAY& array) {
    std::size_t bytes = array.cbElements;
    for (USHORT dimension = 0; dimension < array.cDims; ++dimension) {
        const std::size_t count = array.rgsabound[dimension].cElements;
        if (count != 0 && bytes > mostBytes / count) {
            return nullptr;
        }
        bytes *= count;
    }
    void* const memory = platform::Allocate(std::max<std::size_t>(bytes, 1));
    return memory ? std::memset(memory, 0, bytes) : nullptr;
}

SAFEARRAY* AllocateRecord(VARTYPE type, UINT rank) {
    const std::size_t further = (rank - std::size_t{1}) * sizeof(SAFEARRAYBOUND);
    void* const memory = platform::Allocate(sizeof(ArrayHead) + sizeof(SAFEARRAY) + further);
    if (!memory) {
        return nullptr;
    }
    std::memset(memory, 0, sizeof(ArrayHead) + sizeof(SAFEARRAY) + further);
    ArrayHead* const head = new (memory) ArrayHead{type};
    auto* const array = reinterpret_cast<SAFEARRAY*>(head + 1);
    array->cDims = static_cast<USHORT>(rank);
    array->cbElements = static_cast<ULONG>(ElementSize(type));
    return array;
}

void FreeRecord(SAFEARRAY* array) {
    platform::Free(array->pvData);
    platform::Free(ArrayHeadOf(array));
}

BYTE* ElementAt(const SAFEARRAY& array, std::size_t place) {
    return static_cast<BYTE*>(array.pvData) + place * array.cbElements;
}

void ClearElements(SAFEARRAY* array) {
    for (std::size_t place = 0; place < CountOf(*array); ++place) {
        ClearElement(TypeOf(array), ElementAt(*array, place));
    }
}

/// @return DISP_E_BADINDEX when an index is out of its bounds
HRESULT Find(const SAFEARRAY& array, const LONG* indices, BYTE*& element) {
    std::size_t place = 0;
    std::size_t stride = 1;
    for (UINT dimension = 1; dimension <= array.cDims; ++dimension) {
        const SAFEARRAYBOUND& bounds = *BoundsOf(&array, dimension);
        const std::int64_t offset = std::int64_t{indices[dimension - 1]} - bounds.lLbound;
        if (offset < 0 || offset >= bounds.cElements) {
            return DISP_E_BADINDEX;
        }
        place += static_cast<std::size_t>(offset) * stride;
        stride *= bounds.cElements;
    }
    element = ElementAt(array, place);
    return S_OK;
}

/// Texts and objects are handed over as such, all others behind a pointer.
const void* SourceOf(VARTYPE type, void* const& element) {
    const bool isItself = type == VT_BSTR || type == VT_UNKNOWN || type == VT_DISPATCH;
    return isItself ? static_cast<const void*>(&element) : element;
}

} // namespace

SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT rank, SAFEARRAYBOUND* bounds) {
    if (!platform::IsElementType(type) || rank == 0 || rank > std::numeric_limits<USHORT>::max() || !bounds) {
        return nullptr;
    }
    SAFEARRAY* const array = AllocateRecord(type, rank);
    if (!array) {
        return nullptr;
    }
    std::reverse_copy(bounds, bounds + rank, array->rgsabound);
    array->pvData = AllocateElements(*array);
    if (!array->pvData) {
        FreeRecord(array);
        return nullptr;
    }
    return array;
}

SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lowerBound, ULONG count) {
    SAFEARRAYBOUND bounds = {count, lowerBound};
    return SafeArrayCreate(type, 1, &bounds);
}

HRESULT SafeArrayDestroy(SAFEARRAY* array) {
    if (!array) {
        return S_OK;
    }
    if (array->cLocks > 0) {
        return DISP_E_ARRAYISLOCKED;
    }
    ClearElements(array);
    FreeRecord(array);
    return S_OK;
}

HRESULT SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy) {
    if (!copy) {
        return E_INVALIDARG;
    }
    *copy = nullptr;
    if (!array) {
        return S_OK;
    }
    SAFEARRAY* const made = AllocateRecord(TypeOf(array), array->cDims);
    if (!made) {
        return E_OUTOFMEMORY;
    }
    std::copy(array->rgsabound, array->rgsabound + array->cDims, made->rgsabound);
    made->pvData = AllocateElements(*made);
    if (!made->pvData) {
        FreeRecord(made);
        return E_OUTOFMEMORY;
    }
    for (std::size_t place = 0; place < CountOf(*array); ++place) {
        const HRESULT outcome = CopyElement(TypeOf(array), ElementAt(*made, place), ElementAt(*array, place));
        if (FAILED(outcome)) {
            SafeArrayDestroy(made);
            return outcome;
        }
    }
    *copy = made;
    return S_OK;
}

UINT SafeArrayGetDim(SAFEARRAY* array) {
    return array ? array->cDims : 0;
}

UINT SafeArrayGetElemsize(SAFEARRAY* array) {
    return array ? array->cbElements : 0;
}

HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type) {
    if (!array || !type) {
        return E_INVALIDARG;
    }
    *type = TypeOf(array);
    return S_OK;
}

HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
    if (!array || !bound) {
        return E_INVALIDARG;
    }
    const SAFEARRAYBOUND* const bounds = BoundsOf(array, dimension);
    if (!bounds) {
        return DISP_E_BADINDEX;
    }
    *bound = bounds->lLbound;
    return S_OK;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
    const HRESULT outcome = SafeArrayGetLBound(array, dimension, bound);
    if (SUCCEEDED(outcome)) {
        // As unsigned numbers, so that the bound below an empty array does not overflow.
        *bound = static_cast<LONG>(static_cast<ULONG>(*bound) + BoundsOf(array, dimension)->cElements - 1);
    }
    return outcome;
}

HRESULT SafeArrayLock(SAFEARRAY* array) {
    if (!array) {
        return E_INVALIDARG;
    }
    ++array->cLocks;
    return S_OK;
}

HRESULT SafeArrayUnlock(SAFEARRAY* array) {
    if (!array) {
        return E_INVALIDARG;
    }
    if (array->cLocks == 0) {
        return E_UNEXPECTED;
    }
    --array->cLocks;
    return S_OK;
}

HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data) {
    if (!array || !data) {
        return E_INVALIDARG;
    }
    *data = array->pvData;
    return SafeArrayLock(array);
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* array) {
    return SafeArrayUnlock(array);
}

HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* indices, void* element) {
    if (!array || !indices) {
        return E_INVALIDARG;
    }
    BYTE* place = nullptr;
    const HRESULT outcome = Find(*array, indices, place);
    if (FAILED(outcome)) {
        return outcome;
    }
    ClearElement(TypeOf(array), place);
    return CopyElement(TypeOf(array), place, SourceOf(TypeOf(array), element));
}

HRESULT SafeArrayGetElement(SAFEARRAY* array, LONG* indices, void* element) {
    if (!array || !indices || !element) {
        return E_INVALIDARG;
    }
    BYTE* place = nullptr;
    const HRESULT outcome = Find(*array, indices, place);
    return FAILED(outcome) ? outcome : CopyElement(TypeOf(array), element, place);
}
