#include "bench/step/Floor.h"

#include "bench/desktop/BenchDesktop.h"

#include <stdexcept>

namespace Floor {
namespace {

Recording* current = nullptr;

Node TakeApart(const VARIANT& value) {
    Node node;
    node.type = value.vt;
    if (value.vt == VT_BSTR) {
        node.text.assign(value.bstrVal, SysStringLen(value.bstrVal));
    } else if (value.vt == (VT_ARRAY | VT_VARIANT)) {
        const auto* elements = static_cast<const VARIANT*>(value.parray->pvData);
        for (ULONG index = 0; index < value.parray->rgsabound[0].cElements; ++index) {
            node.elements.push_back(TakeApart(elements[index]));
        }
    } else {
        node.plain = value;
    }
    return node;
}

void Build(const Node& node, VARIANT& value) {
    if (node.type == VT_BSTR) {
        value.vt = VT_BSTR;
        value.bstrVal = SysAllocStringLen(node.text.data(), static_cast<UINT>(node.text.size()));
    } else if (node.type == (VT_ARRAY | VT_VARIANT)) {
        value.vt = node.type;
        value.parray = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(node.elements.size()));
        auto* element = static_cast<VARIANT*>(value.parray->pvData);
        for (const Node& inner : node.elements) {
            Build(inner, *element++);
        }
    } else {
        value = node.plain;
    }
}

void Observe(IDispatch* object, const wchar_t* method, const DISPPARAMS& arguments) {
    Call call = {object, method, {}};
    for (UINT place = 0; place < arguments.cArgs; ++place) {
        call.arguments.push_back(TakeApart(arguments.rgvarg[place]));
    }
    current->calls.push_back(std::move(call));
}

std::size_t Bytes(const Node& node) {
    std::size_t bytes = 0;
    if (node.type == VT_BSTR) {
        bytes = sizeof(UINT) + (node.text.size() + 1) * sizeof(wchar_t);
    }
    if (node.type == (VT_ARRAY | VT_VARIANT)) {
        bytes = sizeof(SAFEARRAY) + node.elements.size() * sizeof(VARIANT);
    }
    for (const Node& inner : node.elements) {
        bytes += Bytes(inner);
    }
    return bytes;
}

} // namespace

Recording::Recording() {
    current = this;
    BenchObserve(Observe);
}

Recording::~Recording() {
    BenchObserve(nullptr);
    current = nullptr;
}

void Replay(const std::vector<Call>& calls) {
    for (const Call& call : calls) {
        VARIANT block[8] = {}, result = {};
        for (std::size_t place = 0; place < call.arguments.size(); ++place) {
            Build(call.arguments[place], block[place]);
        }
        LPOLESTR name = const_cast<LPOLESTR>(call.method);
        DISPID id = DISPID_UNKNOWN;
        DISPPARAMS parameters = {block, nullptr, static_cast<UINT>(call.arguments.size()), 0};
        if (FAILED(call.object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_SYSTEM_DEFAULT, &id)) ||
            FAILED(call.object->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD, &parameters, &result,
                                       nullptr, nullptr))) {
            throw std::runtime_error("the bench desktop refused a replayed call");
        }
        for (std::size_t place = 0; place < call.arguments.size(); ++place) {
            VariantClear(&block[place]);
        }
        VariantClear(&result);
    }
}

std::size_t ArgumentBytes(const std::vector<Call>& calls) {
    std::size_t bytes = 0;
    for (const Call& call : calls) {
        for (const Node& argument : call.arguments) {
            bytes += Bytes(argument);
        }
    }
    return bytes;
}

} // namespace Floor
