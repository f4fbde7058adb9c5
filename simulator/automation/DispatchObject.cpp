#include "simulator/automation/DispatchObject.h"

#include "programs/ComObject.h"
#include "programs/Utf.h"
#include "simulator/automation/Server.h"
#include "simulator/automation/VariantConversion.h"
#include "simulator/commands/ScriptObject.h"
#include "simulator/model/DesktopError.h"

#include <windows.h>

#include <oleauto.h>

#include <new>

namespace vantor::automation {
namespace {

using commands::Value;
using kinora::programs::ComObject;
using model::DesktopError;

/// A script error as an HRESULT: its code in the low 16 bits.
HRESULT ScriptErrorResult(model::ErrorCode code) {
    return MAKE_HRESULT(SEVERITY_ERROR, FACILITY_ITF, static_cast<unsigned>(code));
}

BSTR NewTextOrNull(const std::string& text) noexcept {
    try {
        const std::wstring wide = kinora::programs::WideFromUtf8(text);
        return SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

/// Fills the exception record that the caller may have passed.
HRESULT Raise(EXCEPINFO* exception, const DesktopError& error) {
    if (exception) {
        *exception = EXCEPINFO{};
        exception->scode = ScriptErrorResult(error.Code());
        exception->bstrSource = NewTextOrNull("Pellux.VantorDesktop.Simulator");
        exception->bstrDescription = NewTextOrNull(error.what());
    }
    return DISP_E_EXCEPTION;
}

/// IDispatch over one object of the scripting interface.
class DispatchObject final : public ComObject<IDispatch, IID_IDispatch>, private ClientObject {
public:
    DispatchObject(std::shared_ptr<Server> server, Value::Object object)
        : m_server(std::move(server)), m_object(std::move(object)), m_client(&m_object->ItsSession()) {
        m_server->ItsLifetime().AddObject();
        m_server->ItsClients().Add(m_client, this);
    }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        if (!count) {
            return E_POINTER;
        }
        *count = 0;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** info) override {
        if (info) {
            *info = nullptr;
        }
        return DISP_E_BADINDEX;
    }

    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
        if (!IsEqualIID(iid, IID_NULL)) {
            return DISP_E_UNKNOWNINTERFACE;
        }
        if (!names || !ids || count == 0) {
            return E_INVALIDARG;
        }
        for (UINT i = 0; i < count; ++i) {
            ids[i] = DISPID_UNKNOWN;
        }
        try {
            const auto method = m_object->FindMethod(kinora::programs::Utf8FromWide(names[0]));
            // Further names would be those of arguments, which no method has.
            if (method) {
                ids[0] = *method + 1;
            }
            return method && count == 1 ? S_OK : DISP_E_UNKNOWNNAME;
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        }
    }

    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                                     EXCEPINFO* exception, UINT*) override {
        if (!IsEqualIID(iid, IID_NULL)) {
            return DISP_E_UNKNOWNINTERFACE;
        }
        if (id < 1 || id > m_object->MethodCount() || (flags & DISPATCH_METHOD) == 0) {
            return DISP_E_MEMBERNOTFOUND;
        }
        if (!parameters) {
            return E_POINTER;
        }
        if (parameters->cNamedArgs != 0) {
            return DISP_E_NONAMEDARGS;
        }
        try {
            return Run(id - 1, *parameters, result);
        } catch (const DesktopError& error) {
            return Raise(exception, error);
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        } catch (...) {
            return E_UNEXPECTED;
        }
    }

private:
    ~DispatchObject() override {
        m_server->ItsClients().Remove(m_client, this);
        // What the object holds may be shared with a command that is running.
        {
            const std::lock_guard<std::mutex> lock(m_server->CommandMutex());
            m_object.reset();
        }
        m_server->ItsLifetime().RemoveObject();
    }

    bool TryAddRef() override { return AddRefUnlessEnding(); }

    IUnknown* Identity() override { return static_cast<IDispatch*>(this); }

    HRESULT Run(int method, const DISPPARAMS& parameters, VARIANT* result) {
        std::vector<Value> arguments;
        arguments.reserve(parameters.cArgs);
        for (UINT i = parameters.cArgs; i > 0; --i) {
            arguments.push_back(ValueFromVariant(parameters.rgvarg[i - 1]));
        }
        Value value;
        {
            const std::lock_guard<std::mutex> lock(m_server->CommandMutex());
            value = m_object->Invoke(method, arguments);
        }
        if (result) {
            VariantFromValue(
                value, [this](const Value::Object& object) { return MakeDispatchObject(m_server, object); }, *result);
        }
        return S_OK;
    }

    /// A desktop that has been quit lives on for those who still hold its objects.
    std::shared_ptr<Server> m_server;
    Value::Object m_object;
    /// Identity of the session, for the registry of clients only.
    const void* m_client;
};

} // namespace

IDispatch* MakeDispatchObject(std::shared_ptr<Server> server, Value::Object object) {
    return new DispatchObject(std::move(server), std::move(object));
}

} // namespace vantor::automation
