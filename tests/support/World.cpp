#include "tests/support/World.h"

#include "tests/support/ArrayElements.h"
#include "tests/support/Object.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <utility>

namespace fake {
namespace {

thread_local int insideDepth = 0;

Answer Filled(std::function<void(VARIANT&)> fill) {
    return {S_OK, std::move(fill)};
}

BSTR MakeText(const std::wstring& text) {
    return SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

void FillItems(VARIANT& result, const std::vector<Answer>& items, LONG lowerBound) {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_VARIANT, lowerBound, static_cast<ULONG>(items.size()));
    const ArrayElements<VARIANT> elements(array);
    VARIANT* element = elements.First();
    for (const Answer& item : items) {
        VariantInit(element);
        if (item.fill) {
            item.fill(*element);
        }
        ++element;
    }
    result.parray = array;
    result.vt = VT_ARRAY | VT_VARIANT;
}

std::string Line(const Entry& entry) {
    const std::string name = entry.object + "." + entry.method;
    if (entry.kind == Entry::Kind::NameUnknown || entry.kind == Entry::Kind::NameKnown) {
        return name + (entry.kind == Entry::Kind::NameKnown ? " -> known" : " -> unknown");
    }
    std::string line = name + "(";
    const bool hasArrays = std::any_of(entry.arguments.begin(), entry.arguments.end(),
                                       [](const Value& value) { return (value.type & VT_ARRAY) != 0; });
    for (const Value& argument : entry.arguments) {
        line += &argument == entry.arguments.data() ? "" : ",";
        line += hasArrays ? "\n    " : &argument == entry.arguments.data() ? "" : " ";
        line += Layout(argument, 4);
    }
    return line + ")" + (entry.kind == Entry::Kind::CallFailed ? " -> fails" : "");
}

} // namespace

InsideDesktop::InsideDesktop() {
    ++insideDepth;
}

InsideDesktop::~InsideDesktop() {
    --insideDepth;
}

bool InsideDesktop::Is() {
    return insideDepth > 0;
}

Answer Nothing() {
    return {};
}

Answer Text(const std::wstring& text) {
    return Filled([text](VARIANT& result) {
        result.bstrVal = MakeText(text);
        result.vt = VT_BSTR;
    });
}

Answer Texts(const std::vector<std::wstring>& texts) {
    std::vector<Answer> items;
    for (const std::wstring& text : texts) {
        items.push_back(Text(text));
    }
    return Items(items);
}

Answer Items(const std::vector<Answer>& items, LONG lowerBound) {
    return Filled([items, lowerBound](VARIANT& result) { FillItems(result, items, lowerBound); });
}

Answer TextArray(const std::vector<std::wstring>& texts) {
    return Filled([texts](VARIANT& result) {
        SAFEARRAY* const array = SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(texts.size()));
        std::transform(texts.begin(), texts.end(), ArrayElements<BSTR>(array).First(), MakeText);
        result.parray = array;
        result.vt = VT_ARRAY | VT_BSTR;
    });
}

Answer Long(std::int32_t number) {
    return Raw(VT_I4, static_cast<std::uint32_t>(number));
}

Answer Int(std::int32_t number) {
    return Raw(VT_INT, static_cast<std::uint32_t>(number));
}

Answer Real(double number) {
    return Filled([number](VARIANT& result) {
        result.dblVal = number;
        result.vt = VT_R8;
    });
}

Answer Flag(VARIANT_BOOL raw) {
    return Raw(VT_BOOL, static_cast<std::uint16_t>(raw));
}

Answer Reference(Object& object) {
    return Filled([&object](VARIANT& result) {
        object.AddRef();
        result.pdispVal = &object;
        result.vt = VT_DISPATCH;
    });
}

Answer NoObject() {
    return Raw(VT_DISPATCH, 0);
}

Answer Raw(VARTYPE type, std::uint64_t bits) {
    return Filled([type, bits](VARIANT& result) {
        result.ullVal = bits;
        result.vt = type;
    });
}

Answer Fails(HRESULT code) {
    return {code, nullptr};
}

Answer FailsWith(const Answer& result, HRESULT code) {
    return {code, result.fill};
}

World::World() = default;

World::~World() {
    for (const std::string& problem : TakeProblems()) {
        ADD_FAILURE() << problem;
    }
}

Object& World::Make(const std::string& path) {
    m_objects.push_back(std::make_unique<Object>(*this, path, false));
    return *m_objects.back();
}

Object& World::MakeHeld(const std::string& path) {
    m_objects.push_back(std::make_unique<Object>(*this, path, true));
    return *m_objects.back();
}

std::string World::Journal() const {
    std::string journal;
    for (const Entry& entry : m_entries) {
        journal += Line(entry) + "\n";
    }
    return journal;
}

std::size_t World::Count(const std::string& method) const {
    return static_cast<std::size_t>(
        std::count_if(m_entries.begin(), m_entries.end(), [&](const Entry& entry) { return entry.method == method; }));
}

const Fault* World::BeginCall() {
    const auto fault = m_faults.find(++m_callNumber);
    const bool isDead = m_deathNumber != 0 && m_callNumber >= m_deathNumber;
    if (fault == m_faults.end() && !isDead) {
        return nullptr;
    }
    m_faultHit = true;
    return isDead ? &m_death : &fault->second;
}

std::vector<std::string> World::TakeProblems() {
    std::vector<std::string> problems = std::exchange(m_problems, {});
    for (const auto& object : m_objects) {
        if (object->References() != 0) {
            problems.push_back(object->Path() + " has " + std::to_string(object->References()) + " leaked references");
        }
    }
    return problems;
}

long World::OutstandingReferences() const {
    long references = 0;
    for (const auto& object : m_objects) {
        references += object->References();
    }
    return references;
}

} // namespace fake
