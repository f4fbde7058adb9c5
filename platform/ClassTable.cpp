#include "platform/ClassTable.h"

#include "platform/Apartment.h"

#include <objbase.h>

#include <algorithm>
#include <mutex>
#include <vector>

namespace platform {
namespace {

struct Row {
    const RegisteredClass* owner;
    std::wstring progId;
    CLSID classId;
    ClassObjectGetter getter;
};

/// Safe to use from any thread. The newest row comes first.
class ClassTable {
public:
    static ClassTable& Get() {
        static ClassTable table;
        return table;
    }

    void Add(Row row) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_rows.insert(m_rows.begin(), std::move(row));
    }

    void Remove(const RegisteredClass* owner) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_rows.erase(std::remove_if(m_rows.begin(), m_rows.end(), [=](const Row& row) { return row.owner == owner; }),
                     m_rows.end());
    }

    bool FindClassId(const std::wstring& progId, CLSID& classId) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found =
            std::find_if(m_rows.begin(), m_rows.end(), [&](const Row& row) { return row.progId == progId; });
        if (found == m_rows.end()) {
            return false;
        }
        classId = found->classId;
        return true;
    }

    /// @return null for a class that is not there
    ClassObjectGetter FindGetter(REFCLSID classId) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found =
            std::find_if(m_rows.begin(), m_rows.end(), [&](const Row& row) { return row.classId == classId; });
        return found == m_rows.end() ? nullptr : found->getter;
    }

private:
    std::mutex m_mutex;
    std::vector<Row> m_rows;
};

} // namespace

RegisteredClass::RegisteredClass(std::wstring progId, const CLSID& classId, ClassObjectGetter getter) {
    ClassTable::Get().Add({this, std::move(progId), classId, getter});
}

RegisteredClass::~RegisteredClass() {
    ClassTable::Get().Remove(this);
}

} // namespace platform

using platform::ClassTable;

HRESULT CLSIDFromProgID(LPCOLESTR progId, CLSID* classId) {
    if (!progId || !classId) {
        return E_INVALIDARG;
    }
    if (ClassTable::Get().FindClassId(progId, *classId)) {
        return S_OK;
    }
    *classId = CLSID{};
    return CO_E_CLASSSTRING;
}

// cppcheck-suppress constParameter ; the platform's signature
HRESULT CoGetClassObject(REFCLSID classId, DWORD context, void* server, REFIID iid, void** object) {
    if (!object) {
        return E_INVALIDARG;
    }
    *object = nullptr;
    if (!platform::HasApartment()) {
        return CO_E_NOTINITIALIZED;
    }
    const platform::ClassObjectGetter getter = ClassTable::Get().FindGetter(classId);
    if (!getter || server || !(context & CLSCTX_INPROC_SERVER)) {
        return REGDB_E_CLASSNOTREG;
    }
    return getter(classId, iid, object);
}

HRESULT CoCreateInstance(REFCLSID classId, IUnknown* outer, DWORD context, REFIID iid, void** object) {
    if (!object) {
        return E_POINTER;
    }
    *object = nullptr;
    IClassFactory* factory = nullptr;
    HRESULT outcome =
        CoGetClassObject(classId, context, nullptr, IID_IClassFactory, reinterpret_cast<void**>(&factory));
    if (SUCCEEDED(outcome)) {
        outcome = factory->CreateInstance(outer, iid, object);
        factory->Release();
    }
    return outcome;
}
