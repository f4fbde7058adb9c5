// The functions of FMI 2.0.
#include "fmu/binary/Calls.h"
#include "fmu/binary/Errors.h"
#include "fmu/fmi/Fmi2.h"

namespace {

using namespace kinora::fmu;

template <class Action>
fmi2Status On2(fmi2Component c, const char* function, const Action& action) noexcept {
    return static_cast<fmi2Status>(Do(c, function, action));
}

/// A function that this FMU does not have.
fmi2Status Without2(fmi2Component c, const char* function, const char* what) noexcept {
    return On2(c, function, [&](Instance&) { Refuse(what); });
}

Log Fmi2LogOf(const fmi2CallbackFunctions& functions, std::string name) {
    return [logger = functions.logger, environment = functions.componentEnvironment,
            name = std::move(name)](Status status, const char* category, const std::string& text) {
        if (logger) {
            logger(environment, name.c_str(), static_cast<fmi2Status>(status), category, "%s", text.c_str());
        }
    };
}

/// Values are had from the initialization on.
void RequireValues(const Instance& instance) {
    if (instance.Now() == State::Instantiated) {
        throw CallError("there are no values before the initialization.");
    }
}

template <class Value, class Get>
fmi2Status GetEach(fmi2Component c, const char* function, const fmi2ValueReference* vr, size_t nvr, Value* value,
                   Type type, const Get& get) {
    return On2(c, function, [&](Instance& instance) {
        RequirePointer(vr, nvr);
        RequirePointer(value, nvr);
        RequireValues(instance);
        for (size_t i = 0; i < nvr; ++i) {
            instance.Find(vr[i], type);
        }
        for (size_t i = 0; i < nvr; ++i) {
            value[i] = get(instance, vr[i]);
        }
    });
}

template <class Set>
fmi2Status SetEach(fmi2Component c, const char* function, const fmi2ValueReference* vr, size_t nvr, const void* value,
                   Type type, const Set& set) {
    return On2(c, function, [&](Instance& instance) {
        RequirePointer(vr, nvr);
        RequirePointer(value, nvr);
        for (size_t i = 0; i < nvr; ++i) {
            instance.Find(vr[i], type);
            instance.Settable(vr[i]);
        }
        for (size_t i = 0; i < nvr; ++i) {
            set(instance, i);
        }
    });
}

} // namespace

const char* fmi2GetTypesPlatform(void) {
    return "default";
}

const char* fmi2GetVersion(void) {
    return "2.0";
}

fmi2Status fmi2SetDebugLogging(fmi2Component c, fmi2Boolean loggingOn, size_t nCategories,
                               const fmi2String categories[]) {
    return On2(c, __func__, [&](Instance& instance) {
        RequirePointer(categories, nCategories);
        instance.SetLogging(loggingOn != fmi2False, {categories, categories + nCategories});
    });
}

fmi2Component fmi2Instantiate(fmi2String instanceName, fmi2Type fmuType, fmi2String fmuGUID,
                              fmi2String fmuResourceLocation, const fmi2CallbackFunctions* functions,
                              fmi2Boolean /*visible*/, fmi2Boolean loggingOn) {
    if (!functions) {
        return nullptr;
    }
    try {
        const Log log = Fmi2LogOf(*functions, instanceName ? instanceName : "");
        if (fmuType != fmi2CoSimulation || !fmuGUID || !fmuResourceLocation) {
            log(Status::Error, errorCategory,
                fmuType != fmi2CoSimulation ? "fmi2Instantiate: this FMU is for co-simulation only."
                                            : "fmi2Instantiate: the GUID or the location of the resources is missing.");
            return nullptr;
        }
        std::filesystem::path resources;
        try {
            resources = PathFromLocation(fmuResourceLocation);
        } catch (const CallError& error) {
            log(Status::Error, errorCategory, std::string("fmi2Instantiate: ") + error.what());
            return nullptr;
        }
        return Make(__func__, {instanceName ? instanceName : "", fmuGUID, resources, loggingOn != fmi2False, log});
    } catch (...) {
        return nullptr; // no memory
    }
}

void fmi2FreeInstance(fmi2Component c) {
    Free(c);
}

fmi2Status fmi2SetupExperiment(fmi2Component c, fmi2Boolean /*toleranceDefined*/, fmi2Real /*tolerance*/,
                               fmi2Real startTime, fmi2Boolean stopTimeDefined, fmi2Real stopTime) {
    return On2(c, __func__, [&](Instance& instance) {
        instance.SetUpExperiment(startTime,
                                 stopTimeDefined != fmi2False ? std::optional<double>(stopTime) : std::nullopt);
    });
}

fmi2Status fmi2EnterInitializationMode(fmi2Component c) {
    return On2(c, __func__, [](Instance& instance) { instance.EnterInitialization(); });
}

fmi2Status fmi2ExitInitializationMode(fmi2Component c) {
    return On2(c, __func__, [](Instance& instance) { instance.ExitInitialization(); });
}

fmi2Status fmi2Terminate(fmi2Component c) {
    return On2(c, __func__, [](Instance& instance) { instance.Terminate(); });
}

fmi2Status fmi2Reset(fmi2Component c) {
    return On2(c, __func__, [](Instance& instance) { instance.Reset(); });
}

fmi2Status fmi2GetReal(fmi2Component c, const fmi2ValueReference vr[], size_t nvr, fmi2Real value[]) {
    return GetEach(c, __func__, vr, nvr, value, Type::Real,
                   [](Instance& instance, Reference reference) { return instance.Number(reference); });
}

fmi2Status fmi2GetInteger(fmi2Component c, const fmi2ValueReference vr[], size_t nvr, fmi2Integer value[]) {
    return GetEach(c, __func__, vr, nvr, value, Type::Integer, [](Instance& instance, Reference reference) {
        return static_cast<fmi2Integer>(instance.Number(reference));
    });
}

fmi2Status fmi2GetBoolean(fmi2Component c, const fmi2ValueReference /*vr*/[], size_t nvr, fmi2Boolean /*value*/[]) {
    return nvr == 0 && c ? fmi2OK : Without2(c, __func__, noVariables);
}

fmi2Status fmi2GetString(fmi2Component c, const fmi2ValueReference vr[], size_t nvr, fmi2String value[]) {
    return GetEach(c, __func__, vr, nvr, value, Type::Text,
                   [](Instance& instance, Reference reference) { return instance.Text(reference).c_str(); });
}

fmi2Status fmi2SetReal(fmi2Component c, const fmi2ValueReference vr[], size_t nvr, const fmi2Real value[]) {
    return SetEach(c, __func__, vr, nvr, value, Type::Real,
                   [&](Instance& instance, size_t i) { instance.SetNumber(vr[i], value[i]); });
}

fmi2Status fmi2SetInteger(fmi2Component c, const fmi2ValueReference vr[], size_t nvr, const fmi2Integer value[]) {
    return SetEach(c, __func__, vr, nvr, value, Type::Integer,
                   [&](Instance& instance, size_t i) { instance.SetNumber(vr[i], value[i]); });
}

fmi2Status fmi2SetBoolean(fmi2Component c, const fmi2ValueReference /*vr*/[], size_t nvr,
                          const fmi2Boolean /*value*/[]) {
    return nvr == 0 && c ? fmi2OK : Without2(c, __func__, noVariables);
}

fmi2Status fmi2SetString(fmi2Component c, const fmi2ValueReference vr[], size_t nvr, const fmi2String value[]) {
    return SetEach(c, __func__, vr, nvr, value, Type::Text, [&](Instance& instance, size_t i) {
        RequirePointer(value[i], 1);
        instance.SetText(vr[i], value[i]);
    });
}

fmi2Status fmi2GetFMUstate(fmi2Component c, fmi2FMUstate* /*state*/) {
    return Without2(c, __func__, noStates);
}

fmi2Status fmi2SetFMUstate(fmi2Component c, fmi2FMUstate /*state*/) {
    return Without2(c, __func__, noStates);
}

fmi2Status fmi2FreeFMUstate(fmi2Component c, fmi2FMUstate* /*state*/) {
    return Without2(c, __func__, noStates);
}

fmi2Status fmi2SerializedFMUstateSize(fmi2Component c, fmi2FMUstate /*state*/, size_t* /*size*/) {
    return Without2(c, __func__, noStates);
}

fmi2Status fmi2SerializeFMUstate(fmi2Component c, fmi2FMUstate /*state*/, fmi2Byte /*serialized*/[], size_t /*size*/) {
    return Without2(c, __func__, noStates);
}

fmi2Status fmi2DeSerializeFMUstate(fmi2Component c, const fmi2Byte /*serialized*/[], size_t /*size*/,
                                   fmi2FMUstate* /*state*/) {
    return Without2(c, __func__, noStates);
}

fmi2Status fmi2GetDirectionalDerivative(fmi2Component c, const fmi2ValueReference /*unknowns*/[], size_t /*nUnknowns*/,
                                        const fmi2ValueReference /*knowns*/[], size_t /*nKnowns*/,
                                        const fmi2Real /*seed*/[], fmi2Real /*sensitivity*/[]) {
    return Without2(c, __func__, "directional derivatives");
}

fmi2Status fmi2SetRealInputDerivatives(fmi2Component c, const fmi2ValueReference vr[], size_t nvr,
                                       const fmi2Integer order[], const fmi2Real value[]) {
    return SetEach(c, __func__, vr, nvr, value, Type::Real, [&](Instance& instance, size_t i) {
        RequirePointer(order, nvr);
        instance.SetDerivative(vr[i], order[i], value[i]);
    });
}

fmi2Status fmi2GetRealOutputDerivatives(fmi2Component c, const fmi2ValueReference /*vr*/[], size_t /*nvr*/,
                                        const fmi2Integer /*order*/[], fmi2Real /*value*/[]) {
    return Without2(c, __func__, "derivatives of outputs");
}

fmi2Status fmi2DoStep(fmi2Component c, fmi2Real currentCommunicationPoint, fmi2Real communicationStepSize,
                      fmi2Boolean /*noSetFMUStatePriorToCurrentPoint*/) {
    return On2(c, __func__,
               [&](Instance& instance) { instance.DoStep(currentCommunicationPoint, communicationStepSize); });
}

fmi2Status fmi2CancelStep(fmi2Component c) {
    return Without2(c, __func__, "steps that go on after the call");
}

fmi2Status fmi2GetStatus(fmi2Component c, fmi2StatusKind /*kind*/, fmi2Status* /*value*/) {
    return Without2(c, __func__, "steps that go on after the call");
}

fmi2Status fmi2GetRealStatus(fmi2Component c, fmi2StatusKind kind, fmi2Real* value) {
    return On2(c, __func__, [&](Instance& instance) {
        RequirePointer(value, 1);
        if (kind != fmi2LastSuccessfulTime) {
            Refuse("such status");
        }
        *value = instance.Time();
    });
}

fmi2Status fmi2GetIntegerStatus(fmi2Component c, fmi2StatusKind /*kind*/, fmi2Integer* /*value*/) {
    return Without2(c, __func__, "such status");
}

fmi2Status fmi2GetBooleanStatus(fmi2Component c, fmi2StatusKind kind, fmi2Boolean* value) {
    return On2(c, __func__, [&](Instance&) {
        RequirePointer(value, 1);
        if (kind != fmi2Terminated) {
            Refuse("such status");
        }
        *value = fmi2False; // it never asks to end
    });
}

fmi2Status fmi2GetStringStatus(fmi2Component c, fmi2StatusKind /*kind*/, fmi2String* /*value*/) {
    return Without2(c, __func__, "such status");
}

fmi2Status fmi2EnterEventMode(fmi2Component c) {
    return Without2(c, __func__, noModelExchange);
}

fmi2Status fmi2NewDiscreteStates(fmi2Component c, fmi2EventInfo* /*info*/) {
    return Without2(c, __func__, noModelExchange);
}

fmi2Status fmi2EnterContinuousTimeMode(fmi2Component c) {
    return Without2(c, __func__, noModelExchange);
}

fmi2Status fmi2CompletedIntegratorStep(fmi2Component c, fmi2Boolean /*noSetFMUStatePriorToCurrentPoint*/,
                                       fmi2Boolean* /*enterEventMode*/, fmi2Boolean* /*terminateSimulation*/) {
    return Without2(c, __func__, noModelExchange);
}

fmi2Status fmi2SetTime(fmi2Component c, fmi2Real /*time*/) {
    return Without2(c, __func__, noModelExchange);
}

fmi2Status fmi2SetContinuousStates(fmi2Component c, const fmi2Real /*x*/[], size_t /*nx*/) {
    return Without2(c, __func__, noModelExchange);
}

fmi2Status fmi2GetDerivatives(fmi2Component c, fmi2Real /*derivatives*/[], size_t /*nx*/) {
    return Without2(c, __func__, noModelExchange);
}

fmi2Status fmi2GetEventIndicators(fmi2Component c, fmi2Real /*indicators*/[], size_t /*ni*/) {
    return Without2(c, __func__, noModelExchange);
}

fmi2Status fmi2GetContinuousStates(fmi2Component c, fmi2Real /*x*/[], size_t /*nx*/) {
    return Without2(c, __func__, noModelExchange);
}

fmi2Status fmi2GetNominalsOfContinuousStates(fmi2Component c, fmi2Real /*nominals*/[], size_t /*nx*/) {
    return Without2(c, __func__, noModelExchange);
}
