#include "bench/desktop/BenchDesktop.h"

#include <windows.h>

#include <oleauto.h>

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <string>
#include <vector>

namespace {

constexpr wchar_t progId[] = L"Pellux.VantorDesktop.Bench";
constexpr wchar_t classText[] = L"{6B6E6F72-6142-4E43-8844-45534B544F50}";
constexpr CLSID classId = {0x6B6E6F72, 0x6142, 0x4E43, {0x88, 0x44, 0x45, 0x53, 0x4B, 0x54, 0x4F, 0x50}};

struct Answers {
    std::wstring folder;
    std::wstring reports = L"Never";
    std::vector<std::wstring> variables;
    std::vector<std::wstring> reportNames;
};

Answers answers;
BenchObserver observer = nullptr;
HMODULE thisModule = nullptr;

enum class Give { Nothing, Self, Name, Folder, Option, Variables, Setups, Children, Traces, Solved, Number };

struct Method {
    const wchar_t* name;
    Give give;
};

/// In the order of their names; the place in the table is the method's id.
constexpr Method methods[] = {
    {L"AddMessage", Give::Nothing},
    {L"Analyze", Give::Solved},
    {L"BenchConfigure", Give::Nothing}, // (folder, bodies, reports): for scripts
    {L"ChangeProperty", Give::Nothing},
    {L"ClearMessages", Give::Nothing},
    {L"Close", Give::Nothing},
    {L"CreateReport", Give::Nothing},
    {L"DeleteSetups", Give::Nothing},
    {L"DeleteTraces", Give::Nothing},
    {L"EditSetup", Give::Nothing},
    {L"GetAppDesktop", Give::Self},
    {L"GetChildNames", Give::Children},
    {L"GetChildObject", Give::Self},
    {L"GetModule", Give::Self},
    {L"GetName", Give::Name},
    {L"GetOutputVariableValue", Give::Number},
    {L"GetPath", Give::Folder},
    {L"GetProperties", Give::Variables},
    {L"GetRegistryString", Give::Option},
    {L"GetReportTraceNames", Give::Traces},
    {L"GetSetups", Give::Setups},
    {L"ImportIntoReport", Give::Nothing},
    {L"InsertSetup", Give::Nothing},
    {L"OpenProject", Give::Self},
    {L"QuitApplication", Give::Nothing},
    {L"Save", Give::Nothing},
    {L"SetActiveDesign", Give::Self},
};

void GiveText(VARIANT& result, const std::wstring& text) {
    result.vt = VT_BSTR;
    result.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

void GiveTexts(VARIANT& result, const std::vector<std::wstring>& texts) {
    result.vt = VT_ARRAY | VT_VARIANT;
    result.parray = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(texts.size()));
    auto* element = static_cast<VARIANT*>(result.parray->pvData);
    for (const std::wstring& text : texts) {
        GiveText(*element++, text);
    }
}

/// Application, desktop, project, design, modules and children are one object: it knows all their methods.
class BenchObject final : public IDispatch {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        if (id != IID_IUnknown && id != IID_IDispatch) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = this;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; } // lives as long as the DLL
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override {
        const auto method =
            std::lower_bound(std::begin(methods), std::end(methods), names[0],
                             [](const Method& row, const wchar_t* name) { return std::wcscmp(row.name, name) < 0; });
        if (method == std::end(methods) || std::wcscmp(method->name, names[0]) != 0) {
            return DISP_E_UNKNOWNNAME;
        }
        ids[0] = static_cast<DISPID>(method - std::begin(methods));
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* arguments, VARIANT* result, EXCEPINFO*,
                                     UINT*) override {
        const Method& method = methods[id];
        if (observer) {
            observer(this, method.name, *arguments);
        }
        if (std::wcscmp(method.name, L"BenchConfigure") == 0) {
            return ConfigureByScript(*arguments);
        }
        if (result) {
            Answer(method.give, *result);
        }
        return S_OK;
    }

private:
    static HRESULT ConfigureByScript(const DISPPARAMS& arguments) {
        VARIANT texts[3] = {};
        for (UINT place = 0; place < 3; ++place) {
            if (arguments.cArgs != 3 ||
                FAILED(VariantChangeType(&texts[place], &arguments.rgvarg[place], 0, VT_BSTR))) {
                return DISP_E_BADPARAMCOUNT;
            }
        }
        BenchConfigure(texts[2].bstrVal, std::stoi(texts[1].bstrVal), texts[0].bstrVal);
        std::for_each(std::begin(texts), std::end(texts), [](VARIANT& text) { VariantClear(&text); });
        return S_OK;
    }

    void Answer(Give give, VARIANT& result) {
        switch (give) {
        case Give::Nothing:
            return;
        case Give::Self:
            result.vt = VT_DISPATCH;
            result.pdispVal = this;
            return;
        case Give::Name:
            return GiveText(result, L"Bench");
        case Give::Folder:
            return GiveText(result, answers.folder);
        case Give::Option:
            return GiveText(result, answers.reports);
        case Give::Variables:
            return GiveTexts(result, answers.variables);
        case Give::Setups:
            return GiveTexts(result, {L"Setup1"});
        case Give::Children:
            return GiveTexts(result, answers.reportNames);
        case Give::Traces:
            return GiveTexts(result, {L"x", L"y", L"z"});
        case Give::Solved:
            result.vt = VT_I4;
            result.lVal = 0;
            return;
        case Give::Number:
            result.vt = VT_R8;
            result.dblVal = 0.123456789;
            return;
        }
    }
};

BenchObject desktop;

class BenchFactory final : public IClassFactory {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        if (id != IID_IUnknown && id != IID_IClassFactory) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = this;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID id, void** object) override {
        return desktop.QueryInterface(id, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

BenchFactory factory;

bool WriteDefault(const std::wstring& key, const std::wstring& value) {
    return RegSetKeyValueW(HKEY_LOCAL_MACHINE, (L"Software\\Classes\\" + key).c_str(), nullptr, REG_SZ, value.c_str(),
                           static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t))) == ERROR_SUCCESS;
}

} // namespace

bool BenchRegister(bool install) {
    const std::wstring classKey = std::wstring(L"CLSID\\") + classText;
    if (!install) {
        return RegDeleteTreeW(HKEY_LOCAL_MACHINE, (L"Software\\Classes\\" + classKey).c_str()) == ERROR_SUCCESS &&
               RegDeleteTreeW(HKEY_LOCAL_MACHINE, (std::wstring(L"Software\\Classes\\") + progId).c_str()) ==
                   ERROR_SUCCESS;
    }
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(thisModule, path, MAX_PATH);
    return WriteDefault(std::wstring(progId) + L"\\CLSID", classText) &&
           WriteDefault(classKey + L"\\InprocServer32", path);
}

void BenchConfigure(const wchar_t* folder, int bodies, const wchar_t* reports) {
    answers = {folder, reports, {L"SimTime"}, {L"KinoraHistory"}};
    for (int body = 0; body < bodies; ++body) {
        const std::wstring name = L"B" + std::to_wstring(body);
        for (const wchar_t* ending : {L"_X", L"_Y", L"_Z", L"_Phi", L"_Theta", L"_Psi"}) {
            answers.variables.push_back(name + ending);
        }
        answers.reportNames.push_back(L"Force_" + name);
        answers.reportNames.push_back(L"Torque_" + name);
    }
}

void BenchObserve(BenchObserver newObserver) {
    observer = newObserver;
}

STDAPI DllGetClassObject(REFCLSID id, REFIID interfaceId, void** object) {
    return id == classId ? factory.QueryInterface(interfaceId, object) : CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow() {
    return S_FALSE;
}

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void*) {
    if (reason == DLL_PROCESS_ATTACH) {
        thisModule = module;
    }
    return TRUE;
}
