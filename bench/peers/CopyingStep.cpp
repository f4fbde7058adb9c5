#include "bench/peers/CopyingStep.h"

#include <fstream>
#include <stdexcept>

namespace {

using Values = std::vector<_variant_t>;

_variant_t Array(const Values& values) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(values.size()));
    for (LONG place = 0; place < static_cast<LONG>(values.size()); ++place) {
        SafeArrayPutElement(array, &place, const_cast<_variant_t*>(&values[static_cast<std::size_t>(place)]));
    }
    VARIANT list = {};
    list.vt = VT_ARRAY | VT_VARIANT;
    list.parray = array;
    return _variant_t(list, false);
}

_variant_t Texts(const std::vector<std::wstring>& texts) {
    Values values;
    for (const std::wstring& text : texts) {
        values.push_back(text.c_str());
    }
    return Array(values);
}

_variant_t Int(int number) {
    VARIANT value = {};
    value.vt = VT_INT;
    value.intVal = number;
    return _variant_t(value, false);
}

std::wstring Text(double number, const wchar_t* unit) {
    return std::to_wstring(number) + unit;
}

_variant_t ChangeProperty(const std::vector<std::wstring>& names, const std::vector<std::wstring>& values) {
    Values properties = {L"NAME:ChangedProps"};
    for (std::size_t index = 0; index < names.size(); ++index) {
        properties.push_back(Texts({L"NAME:" + names[index], L"Value:=", values[index]}));
    }
    const _variant_t tab =
        Array({L"NAME:LocalVariableTab", Texts({L"NAME:PropServers", L"LocalVariables"}), Array(properties)});
    return Array({L"NAME:AllTabs", tab});
}

_variant_t History(const std::vector<std::wstring>& names, const std::vector<std::vector<std::wstring>>& rows) {
    Values sweeps = {L"NAME:Sweeps"};
    for (std::size_t column = 0; column < names.size(); ++column) {
        sweeps.push_back(Array({L"NAME:SweepDefinition", L"Variable:=", names[column].c_str(), L"Data:=",
                                rows.front()[column].c_str(), L"OffsetF1:=", false, L"Synchronize:=", 0.0}));
    }
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

_variant_t CallMethod(const _variant_t& object, const wchar_t* method, const std::vector<_variant_t>& arguments) {
    Values block(arguments.rbegin(), arguments.rend());
    LPOLESTR name = const_cast<LPOLESTR>(method);
    DISPID id = DISPID_UNKNOWN;
    DISPPARAMS parameters = {block.data(), nullptr, static_cast<UINT>(block.size()), 0};
    _variant_t result;
    EXCEPINFO exception = {};
    if (FAILED(object.pdispVal->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_SYSTEM_DEFAULT, &id)) ||
        FAILED(object.pdispVal->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD, &parameters, &result,
                                       &exception, nullptr))) {
        const std::wstring reason = exception.bstrDescription ? exception.bstrDescription : method;
        throw std::runtime_error("the desktop refused a call: " + std::filesystem::path(reason).string());
    }
    return result;
}

CopyingStep::CopyingStep(Objects objects, std::vector<std::wstring> bodies, std::size_t recordedSteps,
                         std::filesystem::path log)
    : m_objects(std::move(objects)), m_bodies(std::move(bodies)), m_names({L"SimTime"}), m_log(std::move(log)) {
    for (const std::wstring& body : m_bodies) {
        for (const wchar_t* ending : {L"_Phi", L"_Psi", L"_Theta", L"_X", L"_Y", L"_Z"}) {
            m_names.push_back(body + ending);
        }
    }
    m_rows.assign(recordedSteps, NextRow());
}

CopyingStep::Row CopyingStep::NextRow() {
    ++m_step;
    Row row = {Text(0.01 * m_step, L"s")};
    for (std::size_t body = 0; body < m_bodies.size(); ++body) {
        for (const wchar_t* unit : {L"Rad", L"Rad", L"Rad", L"Meter", L"Meter"}) {
            row.push_back(Text(0.0, unit));
        }
        row.push_back(Text(0.013 * static_cast<double>(body) + 0.0001 * m_step, L"Meter"));
    }
    return row;
}

void CopyingStep::Step() {
    const auto& [desktop, project, design] = m_objects;
    const _variant_t name = CallMethod(project, L"GetName"), path = CallMethod(project, L"GetPath");
    CallMethod(desktop, L"ClearMessages", {name, CallMethod(design, L"GetName"), Int(0)});
    CallMethod(design, L"GetProperties", {L"LocalVariableTab", L"LocalVariables"});

    const Row row = NextRow();
    CallMethod(design, L"ChangeProperty", {ChangeProperty(m_names, row)});
    m_rows.push_back(row);
    const _variant_t setups = CallMethod(design, L"GetChildObject", {L"Paravant"});
    CallMethod(setups, L"GetChildNames");
    CallMethod(setups, L"EditSetup", {L"KinoraHistory", History(m_names, m_rows)});
    m_rows.pop_back();
    const _variant_t analysis = CallMethod(design, L"GetModule", {L"AnalysisSetup"});
    CallMethod(analysis, L"GetSetups");
    CallMethod(design, L"Analyze", {L"Setup1"});
    Record();
}

void CopyingStep::Record() {
    const auto& [desktop, project, design] = m_objects;
    std::ofstream log(m_log, std::ios::app);
    log << m_step << ',' << 0.01 * m_step;
    const _variant_t results = CallMethod(design, L"GetChildObject", {L"Results"});
    CallMethod(results, L"GetChildNames");
    CallMethod(design, L"GetModule", {L"ReportSetup"});
    for (const std::wstring& body : m_bodies) {
        const _variant_t variables = CallMethod(design, L"GetModule", {L"OutputVariable"});
        for (int pose = 0; pose < 6; ++pose) {
            log << ',' << 0.0123456;
        }
        for (const wchar_t* load : {L"Force_", L"Torque_"}) {
            for (const wchar_t* axis : {L"_X", L"_Y", L"_Z"}) {
                log << ','
                    << static_cast<double>(CallMethod(
                           variables, L"GetOutputVariableValue",
                           {(load + body + axis).c_str(), L"", L"Setup1 : LastAdaptive", L"Magnetostatic", Array({})}));
            }
        }
        CallMethod(desktop, L"GetRegistryString",
                   {L"Desktop\\Settings\\ProjectOptions\\Veltrix 3D\\UpdateReportsOnSolve"});
    }
    log << std::endl;
}
