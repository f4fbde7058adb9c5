#include "bench/native/Metered.h"

#include "platform/ClassTable.h"
#include "programs/ComObject.h"

#include <objbase.h>
#include <oleauto.h>

#include <chrono>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;
using kinora::programs::ComObject;

constexpr CLSID classId = {0x5d3b7f2e, 0x1c90, 0x4a7d, {0xa1, 0x6e, 0x83, 0x24, 0x5f, 0x0d, 0x9c, 0x71}};

Clock::duration inside{};

/// Counts the time of one call.
class Meter {
public:
    ~Meter() { inside += Clock::now() - m_start; }

private:
    Clock::time_point m_start = Clock::now();
};

class MeteredObject final : public ComObject<IDispatch, IID_IDispatch> {
public:
    /// Takes the reference over.
    explicit MeteredObject(IDispatch* target) : m_target(target) {}

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override { return m_target->GetTypeInfoCount(count); }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override {
        return m_target->GetTypeInfo(index, locale, info);
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                                            DISPID* ids) override {
        const Meter meter;
        return m_target->GetIDsOfNames(iid, names, count, locale, ids);
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* exception, UINT* argumentError) override {
        const Meter meter;
        const HRESULT outcome = m_target->Invoke(id, iid, locale, flags, parameters, result, exception, argumentError);
        if (SUCCEEDED(outcome) && result && result->vt == VT_DISPATCH && result->pdispVal) {
            result->pdispVal = new MeteredObject(result->pdispVal);
        }
        return outcome;
    }

private:
    ~MeteredObject() override {
        const Meter meter;
        m_target->Release();
    }

    IDispatch* m_target;
};

class Factory final : public ComObject<IClassFactory, IID_IClassFactory> {
public:
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        CLSID simulator = {};
        HRESULT outcome = CLSIDFromProgID(L"Pellux.VantorDesktop.Simulator", &simulator);
        IDispatch* application = nullptr;
        if (SUCCEEDED(outcome)) {
            outcome = CoCreateInstance(simulator, outer, CLSCTX_SERVER, IID_IDispatch,
                                       reinterpret_cast<void**>(&application));
        }
        if (FAILED(outcome)) {
            return outcome;
        }
        auto* const metered = new MeteredObject(application);
        outcome = metered->QueryInterface(iid, object);
        metered->Release();
        return outcome;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

HRESULT GetClassObject(REFCLSID, REFIID iid, void** object) {
    auto* const factory = new Factory;
    const HRESULT outcome = factory->QueryInterface(iid, object);
    factory->Release();
    return outcome;
}

} // namespace

struct MeteredDesktop::Entry {
    platform::RegisteredClass row{L"Pellux.VantorDesktop.Metered", classId, GetClassObject};
};

MeteredDesktop::MeteredDesktop() : m_entry(std::make_unique<Entry>()) {}

MeteredDesktop::~MeteredDesktop() = default;

double MeteredDesktop::TakeSeconds() {
    return std::chrono::duration<double>(std::exchange(inside, {})).count();
}
