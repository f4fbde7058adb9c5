#include "bench/peers/CopyingStep.h"

#include <comdef.h>
#include <comutil.h>

#include <fstream>
#include <stdexcept>

namespace {

using Values = std::vector<_variant_t>;

_variant_t Array(const Values& values) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(values.size()));
    for (LONG place = 0; place < static_cast<LONG>(values.size()); ++place)
        SafeArrayPutElement(array, &place, const_cast<_variant_t*>(&values[static_cast<std::size_t>(place)]));
    VARIANT list = {};
    list.vt = VT_ARRAY | VT_VARIANT;
    list.parray = array;
    return _variant_t(list, false);
}

_variant_t Texts(const std::vector<std::wstring>& texts) {
    Values values;
    for (const std::wstring& text : texts)
        values.push_back(text.c_str());
    return Array(values);
}

_variant_t Int(int number) {
    return _variant_t(static_cast<long>(number), VT_I4);
}

_variant_t Call(IDispatch* object, const wchar_t* method, const Values& arguments = {}) {
    Values block(arguments.rbegin(), arguments.rend());
    LPOLESTR name = const_cast<LPOLESTR>(method);
    DISPID id = DISPID_UNKNOWN;
    DISPPARAMS parameters = {block.data(), nullptr, static_cast<UINT>(block.size()), 0};
    _variant_t result;
    if (FAILED(object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_SYSTEM_DEFAULT, &id)) ||
        FAILED(object->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD, &parameters, &result, nullptr,
                              nullptr)))
        throw std::runtime_error("the bench desktop refused a call of the copying step");
    return result;
}

std::wstring Text(double number, const wchar_t* unit) {
    return std::to_wstring(number) + unit;
}

_variant_t ChangeProperty(const std::vector<std::wstring>& names, const std::vector<std::wstring>& values) {
    Values properties = {L"NAME:ChangedProps"};
    for (std::size_t index = 0; index < names.size(); ++index)
        properties.push_back(Texts({L"NAME:" + names[index], L"Value:=", values[index]}));
    const _variant_t tab =
        Array({L"NAME:LocalVariableTab", Texts({L"NAME:PropServers", L"LocalVariables"}), Array(properties)});
    return Array({L"NAME:AllTabs", tab});
}

_variant_t History(const std::vector<std::wstring>& names, const std::vector<std::vector<std::wstring>>& rows) {
    Values sweeps = {L"NAME:Sweeps"};
    for (std::size_t column = 0; column < names.size(); ++column)
        sweeps.push_back(Array({L"NAME:SweepDefinition", L"Variable:=", names[column].c_str(), L"Data:=",
                                rows.front()[column].c_str(), L"OffsetF1:=", false, L"Synchronize:=", 0.0}));
    Values operations = {L"NAME:Sweep Operations"};
    for (std::size_t row = 1; row < rows.size(); ++row) {
        operations.push_back(L"add:=");
        operations.push_back(Texts(rows[row]));
    }
    const _variant_t data = Array(
        {L"NAME:ProdOptiSetupDataV2", L"SaveFields:=", true, L"CopyMesh:=", true, L"SolveWithCopiedMeshOnly:=", true});
    return Array({L"NAME:KinoraHistory", L"IsEnabled:=", true, data, Texts({L"NAME:StartingPoint"}), L"Sim. Setups:=",
                  Texts({L"Setup1"}), Array(sweeps), Array(operations), Texts({L"NAME:Goals"})});
}

} // namespace

CopyingStep::CopyingStep(IDispatch* desktop, int bodies, std::size_t recordedSteps, std::filesystem::path log)
    : m_desktop(desktop), m_bodies(bodies), m_names({L"SimTime"}), m_log(std::move(log)) {
    for (int body = 0; body < bodies; ++body)
        for (const wchar_t* ending : {L"_Phi", L"_Psi", L"_Theta", L"_X", L"_Y", L"_Z"})
            m_names.push_back(L"B" + std::to_wstring(body) + ending);
    m_rows.assign(recordedSteps, Row(m_names.size(), L"0.012345Meter"));
}

void CopyingStep::Step() {
    const _variant_t name = Call(m_desktop, L"GetName"), path = Call(m_desktop, L"GetPath");
    Call(m_desktop, L"ClearMessages", {name, Call(m_desktop, L"GetName"), Int(0)});
    Call(m_desktop, L"GetProperties", {L"LocalVariableTab", L"LocalVariables"});

    Row row = {Text(0.01, L"s")};
    for (int body = 0; body < m_bodies; ++body)
        for (const wchar_t* unit : {L"Rad", L"Rad", L"Rad", L"Meter", L"Meter", L"Meter"})
            row.push_back(Text(0.0123456 * (body + 1), unit));
    Call(m_desktop, L"ChangeProperty", {ChangeProperty(m_names, row)});
    m_rows.push_back(row);
    Call(m_desktop, L"GetChildObject", {L"Paravant"});
    Call(m_desktop, L"GetChildNames");
    Call(m_desktop, L"EditSetup", {L"KinoraHistory", History(m_names, m_rows)});
    m_rows.pop_back();
    Call(m_desktop, L"GetModule", {L"AnalysisSetup"});
    Call(m_desktop, L"GetSetups");
    Call(m_desktop, L"Analyze", {L"Setup1"});

    std::ofstream log(m_log, std::ios::app);
    log << 1 << ',' << 0.01;
    Call(m_desktop, L"GetChildObject", {L"Results"});
    Call(m_desktop, L"GetChildNames");
    Call(m_desktop, L"GetModule", {L"ReportSetup"});
    for (int body = 0; body < m_bodies; ++body) {
        const std::wstring bodyName = L"B" + std::to_wstring(body);
        Call(m_desktop, L"GetModule", {L"OutputVariable"});
        for (int pose = 0; pose < 6; ++pose)
            log << ',' << 0.0123456 * (body + 1);
        for (const wchar_t* load : {L"Force_", L"Torque_"})
            for (const wchar_t* axis : {L"_X", L"_Y", L"_Z"}) {
                const std::wstring variable = load + bodyName + axis;
                log << ','
                    << static_cast<double>(
                           Call(m_desktop, L"GetOutputVariableValue",
                                {variable.c_str(), L"", L"Setup1 : LastAdaptive", L"Magnetostatic", Array({})}));
            }
        Call(m_desktop, L"GetRegistryString", {L"Desktop\\Settings\\ProjectOptions\\Veltrix 3D\\UpdateReportsOnSolve"});
    }
    log << std::endl;
}
