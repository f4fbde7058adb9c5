#include "tests/capi/InstantDesktop.h"

#include "platform/ClassTable.h"
#include "programs/ComObject.h"

#include <objbase.h>
#include <oleauto.h>

#include <algorithm>
#include <atomic>
#include <cwchar>
#include <iterator>
#include <stdexcept>
#include <utility>
#include <vector>

namespace capi {
namespace {

using kinora::programs::ComObject;

constexpr CLSID classId = {0x3f0a6c11, 0x77d4, 0x4d57, {0x9b, 0x0e, 0x1c, 0xaa, 0x52, 0x94, 0xe6, 0x08}};

enum class Give { Nothing, Self, Zero, Solved, True, Load, Name, Folder, Type, Option, Setups, Messages, List, Saved };

struct Method {
    const wchar_t* name;
    Give give;
};

/// In the order of their names. Every other method gives nothing.
constexpr Method methods[] = {
    {L"Analyze", Give::Solved},
    {L"CloneMaterial", Give::True},
    {L"Count", Give::Zero},
    {L"GetAppDesktop", Give::Self},
    {L"GetChildNames", Give::List},
    {L"GetChildObject", Give::Self},
    {L"GetDefinitionManager", Give::Self},
    {L"GetDesign", Give::Self},
    {L"GetDesignType", Give::Type},
    {L"GetMessages", Give::Messages},
    {L"GetModule", Give::Self},
    {L"GetName", Give::Name},
    {L"GetOutputVariableValue", Give::Load},
    {L"GetPath", Give::Folder},
    {L"GetProjects", Give::Self},
    {L"GetPropNames", Give::List},
    {L"GetProperties", Give::List},
    {L"GetRegistryString", Give::Option},
    {L"GetRelativeCoordinateSystems", Give::List},
    {L"GetReportTraceNames", Give::List},
    {L"GetSetups", Give::Setups},
    {L"NewProject", Give::Self},
    {L"OpenProject", Give::Self},
    {L"Save", Give::Saved},
    {L"SetActiveDesign", Give::Self},
    {L"SetActiveEditor", Give::Self},
};

std::wstring desktopFolder;
bool doesRefuse = false;
std::atomic<long> live{0};
std::atomic<unsigned> made{0};
std::atomic<unsigned> answers{0};

/// Every so many answers go wrong.
bool GoesWrong(unsigned every) {
    return doesRefuse && ++answers % every == 0;
}

void GiveText(VARIANT& result, const std::wstring& text) {
    result.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    result.vt = VT_BSTR;
}

void GiveTexts(VARIANT& result, const std::vector<std::wstring>& texts) {
    result.parray = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(texts.size()));
    result.vt = VT_ARRAY | VT_VARIANT;
    auto* element = static_cast<VARIANT*>(result.parray->pvData);
    for (const std::wstring& text : texts) {
        GiveText(*element++, text);
    }
}

/// Application, desktop, project, design, modules and children are one object.
class InstantObject final : public ComObject<IDispatch, IID_IDispatch> {
public:
    InstantObject() { ++live; }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override {
        const auto method =
            std::lower_bound(std::begin(methods), std::end(methods), names[0],
                             [](const Method& row, const wchar_t* name) { return std::wcscmp(row.name, name) < 0; });
        const bool isThere = method != std::end(methods) && std::wcscmp(method->name, names[0]) == 0;
        ids[0] = static_cast<DISPID>(isThere ? method - std::begin(methods)
                                             : static_cast<std::ptrdiff_t>(std::size(methods)));
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*,
                                     UINT*) override {
        ++m_calls;
        return Answer(id < static_cast<DISPID>(std::size(methods)) ? methods[id].give : Give::Nothing, *result);
    }

private:
    ~InstantObject() override { --live; }

    HRESULT Answer(Give give, VARIANT& result) {
        switch (give) {
        case Give::Nothing:
            break;
        case Give::Self:
            AddRef();
            result.pdispVal = this;
            result.vt = VT_DISPATCH;
            break;
        case Give::Zero:
            result.vt = VT_I4;
            break;
        case Give::Solved:
            result.lVal = GoesWrong(7) ? 3 : 0;
            result.vt = VT_I4;
            break;
        case Give::True:
            result.boolVal = VARIANT_TRUE;
            result.vt = VT_BOOL;
            break;
        case Give::Load:
            if (GoesWrong(101)) {
                throw std::runtime_error("a desktop of C++");
            }
            result.dblVal = instantLoad;
            result.vt = VT_R8;
            break;
        case Give::Name:
            GiveText(result, L"Instant" + std::to_wstring(m_number));
            break;
        case Give::Folder:
            GiveText(result, desktopFolder);
            break;
        case Give::Type:
            GiveText(result, L"Veltrix 3D");
            break;
        case Give::Option:
            GiveText(result, L"Never");
            break;
        case Give::Setups:
            GiveTexts(result, {L"Setup1"});
            break;
        case Give::Messages:
            GiveTexts(result, {L"a message", std::to_wstring(m_calls)});
            break;
        case Give::List:
            GiveTexts(result, {});
            break;
        case Give::Saved:
            return GoesWrong(5) ? DISP_E_EXCEPTION : S_OK;
        }
        return S_OK;
    }

    /// Neither is guarded: calls of one application come from one thread at a time.
    unsigned m_calls = 0;
    const unsigned m_number = made++ % 64;
};

class Factory final : public ComObject<IClassFactory, IID_IClassFactory> {
public:
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID iid, void** object) override {
        if (GoesWrong(11)) {
            return E_FAIL;
        }
        auto* const application = new InstantObject;
        const HRESULT outcome = application->QueryInterface(iid, object);
        application->Release();
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

struct InstantDesktop::Entry {
    platform::RegisteredClass row;
};

InstantDesktop::InstantDesktop(const std::string& version, const std::string& folder, bool refuses)
    : m_entry(new Entry{
          {L"Pellux.VantorDesktop." + std::wstring(version.begin(), version.end()), classId, GetClassObject}}) {
    desktopFolder.assign(folder.begin(), folder.end());
    doesRefuse = refuses;
}

InstantDesktop::~InstantDesktop() = default;

long InstantDesktop::Live() {
    return live;
}

} // namespace capi
