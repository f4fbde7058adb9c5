#include "trace/server/CallRecord.h"

#include "trace/core/ErrorText.h"
#include "trace/server/JsonText.h"
#include "trace/server/TracedObject.h"
#include "trace/server/Tracer.h"
#include "trace/server/VariantJson.h"

#include <algorithm>
#include <cmath>

namespace kinora::trace {
namespace {

std::string HResultFields(HRESULT code) {
    const auto number = static_cast<std::uint32_t>(code);
    std::string text = ",\"hr\":\"" + HResultNumber(number) + "\",\"text\":";
    AppendJson(text, HResultText(number));
    return text;
}

void AppendTextField(std::string& out, const char* name, BSTR text) {
    out += std::string(",\"") + name + "\":";
    AppendJson(out, std::wstring_view(text, SysStringLen(text)));
}

} // namespace

CallRecord::CallRecord(Tracer& tracer) noexcept : m_tracer(&tracer), m_sequence(tracer.ItsRecorder().NextSequence()) {}

template <class Write>
void CallRecord::Try(const Write& write) noexcept {
    try {
        if (!m_isLost) {
            write();
        }
    } catch (...) {
        m_isLost = true;
    }
}

void CallRecord::Begin(const char* kind, const ObjectLabel* label) {
    m_head = "{\"seq\":" + std::to_string(m_sequence) + ",\"time\":\"" + TimeText() +
             "\",\"thread\":" + std::to_string(GetCurrentThreadId()) + ",\"kind\":\"" + kind + '"';
    if (label) {
        m_head += ",\"id\":" + std::to_string(label->id) + ",\"object\":";
        AppendJson(m_head, label->path);
    }
    m_head += ",\"method\":";
}

void CallRecord::AppendVariant(std::string& out, const VARIANT& value) const {
    VariantJson json(out, [this](std::string& text, IUnknown* object) {
        TracedObject* const wrapper = m_tracer->AsWrapper(object);
        if (wrapper) {
            text += ",\"v\":";
            AppendJson(text, wrapper->Label().path);
            text += ",\"id\":" + std::to_string(wrapper->Label().id);
        }
        return wrapper != nullptr;
    });
    json.Append(value);
}

CallRecord CallRecord::Lookup(Tracer& tracer, const ObjectLabel& label, const LPOLESTR* names, UINT count) noexcept {
    CallRecord record(tracer);
    record.Try([&] {
        record.Begin("lookup", &label);
        for (UINT i = 0; i < std::max(count, 1U); ++i) {
            const wchar_t* const name = names == nullptr || i >= count || names[i] == nullptr ? L"" : names[i];
            // Further names are those of arguments.
            record.m_head += i == 0 ? "" : i == 1 ? ",\"names\":[" : ",";
            AppendJson(record.m_head, std::wstring_view(name));
        }
        record.m_head += count > 1 ? "]" : "";
        tracer.ItsRecorder().Begin(record.m_sequence, record.m_head);
    });
    return record;
}

CallRecord CallRecord::Call(Tracer& tracer, const ObjectLabel& label, const std::string& method, DISPID id, WORD flags,
                            const DISPPARAMS* parameters) noexcept {
    CallRecord record(tracer);
    record.Try([&] {
        std::string& head = record.m_head;
        record.Begin("call", &label);
        AppendJson(head, method);
        head += ",\"dispid\":" + std::to_string(id) + ",\"flags\":" + std::to_string(flags) + ",\"args\":[";
        const UINT count = parameters == nullptr || parameters->rgvarg == nullptr ? 0 : parameters->cArgs;
        for (UINT i = count; i > 0; --i) {
            head += i == count ? "" : ",";
            record.AppendVariant(head, parameters->rgvarg[i - 1]);
        }
        head += ']';
        const UINT named = !parameters || !parameters->rgdispidNamedArgs ? 0 : parameters->cNamedArgs;
        for (UINT i = named; i > 0; --i) {
            head += i == named ? ",\"named\":[" : ",";
            head += std::to_string(parameters->rgdispidNamedArgs[i - 1]);
        }
        head += named > 0 ? "]" : "";
        tracer.ItsRecorder().Begin(record.m_sequence, head);
    });
    return record;
}

CallRecord CallRecord::Create(Tracer& tracer, const std::wstring& target) noexcept {
    CallRecord record(tracer);
    record.Try([&] {
        record.Begin("create", nullptr);
        AppendJson(record.m_head, target);
        record.m_head += ",\"target\":";
        AppendJson(record.m_head, target);
        tracer.ItsRecorder().Begin(record.m_sequence, record.m_head);
    });
    return record;
}

void CallRecord::AddIds(const DISPID* ids, UINT count) noexcept {
    Try([&] {
        m_tail += ",\"dispid\":" + std::to_string(ids[0]);
        for (UINT i = 1; i < count; ++i) {
            m_tail += (i == 1 ? ",\"ids\":[" : ",") + std::to_string(ids[i]);
        }
        m_tail += count > 1 ? "]" : "";
    });
}

void CallRecord::AddResult(const VARIANT& result) noexcept {
    Try([&] {
        m_tail += ",\"result\":";
        AppendVariant(m_tail, result);
    });
}

void CallRecord::AddElements(const VARIANT* elements, ULONG count) noexcept {
    Try([&] {
        m_tail += ",\"result\":{\"vt\":\"ARRAY|VARIANT\",\"v\":[";
        for (ULONG i = 0; i < count; ++i) {
            m_tail += i == 0 ? "" : ",";
            AppendVariant(m_tail, elements[i]);
        }
        m_tail += "]}";
    });
}

void CallRecord::AddReferences(const DISPPARAMS& parameters) noexcept {
    Try([&] {
        m_tail += ",\"after\":[";
        for (UINT i = parameters.cArgs; i > 0; --i) {
            const VARIANT& argument = parameters.rgvarg[i - 1];
            m_tail += i == parameters.cArgs ? "" : ",";
            if ((V_VT(&argument) & VT_BYREF) != 0) {
                AppendVariant(m_tail, argument);
            } else {
                m_tail += "null";
            }
        }
        m_tail += ']';
    });
}

void CallRecord::AddException(EXCEPINFO& exception, bool mayAsk) noexcept {
    Try([&] {
        if (exception.pfnDeferredFillIn && mayAsk) {
            exception.pfnDeferredFillIn(&exception);
        }
        const auto number = static_cast<std::uint32_t>(exception.scode);
        m_tail += ",\"exception\":{\"code\":" + std::to_string(exception.wCode) + ",\"scode\":\"" +
                  HResultNumber(number) + '"';
        if (exception.pfnDeferredFillIn && !mayAsk) {
            m_tail += ",\"deferred\":true";
        } else {
            AppendTextField(m_tail, "source", exception.bstrSource);
            AppendTextField(m_tail, "description", exception.bstrDescription);
        }
        m_tail += ",\"script\":";
        AppendJson(m_tail, ScriptErrorText(number));
        m_tail += '}';
    });
}

void CallRecord::AddArgumentError(UINT position, UINT count) noexcept {
    // The platform counts from the last argument.
    Try([&] { m_tail += position < count ? ",\"argerr\":" + std::to_string(count - 1 - position) : ""; });
}

void CallRecord::Finish(HRESULT code, double microseconds) noexcept {
    Try([&] {
        std::string tail = ",\"us\":";
        AppendJson(tail, std::round(10.0 * microseconds) / 10.0);
        tail += HResultFields(code) + m_tail;
        m_tracer->ItsRecorder().End(m_sequence, m_head, tail);
    });
}

} // namespace kinora::trace
