// The functions of FMI 3.0.
#include "fmu/binary/Calls.h"
#include "fmu/binary/Errors.h"
#include "fmu/fmi/Fmi3.h"
#include "scenario/Text.h"

namespace {

using namespace kinora::fmu;

template <class Action>
fmi3Status On3(fmi3Instance instance, const char* function, const Action& action) noexcept {
    return static_cast<fmi3Status>(Do(instance, function, action));
}

/// A function that this FMU does not have.
fmi3Status Without3(fmi3Instance instance, const char* function, const char* what) noexcept {
    return On3(instance, function, [&](Instance&) { Refuse(what); });
}

/// A function of a type that no variable has: right for no variables.
fmi3Status WithoutType(fmi3Instance instance, const char* function, size_t count) noexcept {
    return On3(instance, function, [&](Instance&) {
        if (count > 0) {
            Refuse(noVariables);
        }
    });
}

Log Fmi3LogOf(fmi3LogMessageCallback logMessage, fmi3InstanceEnvironment environment) {
    return [=](Status status, const char* category, const std::string& text) {
        if (logMessage) {
            logMessage(environment, static_cast<fmi3Status>(status), category, text.c_str());
        }
    };
}

fmi3Instance RefuseKind(const char* function, fmi3LogMessageCallback logMessage, fmi3InstanceEnvironment environment) {
    if (logMessage) {
        logMessage(environment, fmi3Error, errorCategory,
                   (std::string(function) + ": this FMU is for co-simulation only.").c_str());
    }
    return nullptr;
}

/// The elements that some variables have together.
size_t ElementsOf(const Instance& instance, const fmi3ValueReference* references, size_t count, Type type) {
    size_t elements = 0;
    for (size_t i = 0; i < count; ++i) {
        const Variable& variable = instance.Find(references[i], type);
        if (variable.reference != references[i]) {
            throw CallError("the reference " + std::to_string(references[i]) + " is of an element of \"" +
                            variable.name + "\", which is had as a whole by " + std::to_string(variable.reference) +
                            ".");
        }
        elements += type == Type::Text ? 1 : variable.start.size();
    }
    return elements;
}

enum class Access { Get, Set };

/// Does something for every element: the reference that it has, and its index among the values.
template <class Each>
fmi3Status ForEach(fmi3Instance instance, const char* function, Access access, const fmi3ValueReference* references,
                   size_t count, const void* values, size_t valueCount, Type type, const Each& each) {
    return On3(instance, function, [&](Instance& called) {
        RequirePointer(references, count);
        RequirePointer(values, count);
        const size_t elements = ElementsOf(called, references, count, type);
        if (elements != valueCount) {
            throw CallError("there are " + std::to_string(elements) + " values of these variables, not " +
                            std::to_string(valueCount) + ".");
        }
        for (size_t i = 0; access == Access::Set && i < count; ++i) {
            called.Settable(references[i]);
        }
        size_t index = 0;
        for (size_t i = 0; i < count; ++i) {
            const size_t size = ElementsOf(called, references + i, 1, type);
            for (size_t element = 0; element < size; ++element) {
                each(called, references[i] + static_cast<Reference>(element), index++);
            }
        }
    });
}

constexpr const char* noClocks = "clocks";
constexpr const char* noEvents = "event mode";
constexpr const char* noConfiguration = "structural parameters";

} // namespace

const char* fmi3GetVersion(void) {
    return "3.0";
}

fmi3Status fmi3SetDebugLogging(fmi3Instance instance, fmi3Boolean loggingOn, size_t nCategories,
                               const fmi3String categories[]) {
    return On3(instance, __func__, [&](Instance& called) {
        RequirePointer(categories, nCategories);
        called.SetLogging(loggingOn, {categories, categories + nCategories});
    });
}

fmi3Instance fmi3InstantiateModelExchange(fmi3String /*instanceName*/, fmi3String /*instantiationToken*/,
                                          fmi3String /*resourcePath*/, fmi3Boolean /*visible*/,
                                          fmi3Boolean /*loggingOn*/, fmi3InstanceEnvironment environment,
                                          fmi3LogMessageCallback logMessage) {
    return RefuseKind(__func__, logMessage, environment);
}

fmi3Instance fmi3InstantiateCoSimulation(fmi3String instanceName, fmi3String instantiationToken,
                                         fmi3String resourcePath, fmi3Boolean /*visible*/, fmi3Boolean loggingOn,
                                         fmi3Boolean eventModeUsed, fmi3Boolean /*earlyReturnAllowed*/,
                                         const fmi3ValueReference /*requiredIntermediateVariables*/[],
                                         size_t nRequiredIntermediateVariables, fmi3InstanceEnvironment environment,
                                         fmi3LogMessageCallback logMessage,
                                         fmi3IntermediateUpdateCallback /*intermediateUpdate*/) {
    try {
        const Log log = Fmi3LogOf(logMessage, environment);
        const auto refuse = [&](const char* why) {
            log(Status::Error, errorCategory, std::string("fmi3InstantiateCoSimulation: ") + why);
            return nullptr;
        };
        if (!instantiationToken || !resourcePath) {
            return refuse("the token or the path of the resources is missing.");
        }
        if (eventModeUsed) {
            return refuse("this FMU has no event mode.");
        }
        if (nRequiredIntermediateVariables > 0) {
            return refuse("this FMU has no intermediate values.");
        }
        return Make(__func__, {instanceName ? instanceName : "", instantiationToken,
                               kinora::scenario::PathFromUtf8(resourcePath), loggingOn, log});
    } catch (...) {
        return nullptr; // no memory
    }
}

fmi3Instance fmi3InstantiateScheduledExecution(fmi3String /*instanceName*/, fmi3String /*instantiationToken*/,
                                               fmi3String /*resourcePath*/, fmi3Boolean /*visible*/,
                                               fmi3Boolean /*loggingOn*/, fmi3InstanceEnvironment environment,
                                               fmi3LogMessageCallback logMessage,
                                               fmi3ClockUpdateCallback /*clockUpdate*/,
                                               fmi3LockPreemptionCallback /*lockPreemption*/,
                                               fmi3UnlockPreemptionCallback /*unlockPreemption*/) {
    return RefuseKind(__func__, logMessage, environment);
}

void fmi3FreeInstance(fmi3Instance instance) {
    Free(instance);
}

fmi3Status fmi3EnterInitializationMode(fmi3Instance instance, fmi3Boolean /*toleranceDefined*/,
                                       fmi3Float64 /*tolerance*/, fmi3Float64 startTime, fmi3Boolean stopTimeDefined,
                                       fmi3Float64 stopTime) {
    return On3(instance, __func__, [&](Instance& called) {
        called.SetUpExperiment(startTime, stopTimeDefined ? std::optional<double>(stopTime) : std::nullopt);
        called.EnterInitialization();
    });
}

fmi3Status fmi3ExitInitializationMode(fmi3Instance instance) {
    return On3(instance, __func__, [](Instance& called) { called.ExitInitialization(); });
}

fmi3Status fmi3EnterEventMode(fmi3Instance instance) {
    return Without3(instance, __func__, noEvents);
}

fmi3Status fmi3Terminate(fmi3Instance instance) {
    return On3(instance, __func__, [](Instance& called) { called.Terminate(); });
}

fmi3Status fmi3Reset(fmi3Instance instance) {
    return On3(instance, __func__, [](Instance& called) { called.Reset(); });
}

fmi3Status fmi3GetFloat64(fmi3Instance instance, const fmi3ValueReference valueReferences[], size_t nValueReferences,
                          fmi3Float64 values[], size_t nValues) {
    return ForEach(instance, __func__, Access::Get, valueReferences, nValueReferences, values, nValues, Type::Real,
                   [&](Instance& called, Reference reference, size_t i) { values[i] = called.Number(reference); });
}

fmi3Status fmi3SetFloat64(fmi3Instance instance, const fmi3ValueReference valueReferences[], size_t nValueReferences,
                          const fmi3Float64 values[], size_t nValues) {
    return ForEach(instance, __func__, Access::Set, valueReferences, nValueReferences, values, nValues, Type::Real,
                   [&](Instance& called, Reference reference, size_t i) { called.SetNumber(reference, values[i]); });
}

fmi3Status fmi3GetInt32(fmi3Instance instance, const fmi3ValueReference valueReferences[], size_t nValueReferences,
                        fmi3Int32 values[], size_t nValues) {
    return ForEach(instance, __func__, Access::Get, valueReferences, nValueReferences, values, nValues, Type::Integer,
                   [&](Instance& called, Reference reference, size_t i) {
                       values[i] = static_cast<fmi3Int32>(called.Number(reference));
                   });
}

fmi3Status fmi3SetInt32(fmi3Instance instance, const fmi3ValueReference valueReferences[], size_t nValueReferences,
                        const fmi3Int32 values[], size_t nValues) {
    return ForEach(instance, __func__, Access::Set, valueReferences, nValueReferences, values, nValues, Type::Integer,
                   [&](Instance& called, Reference reference, size_t i) { called.SetNumber(reference, values[i]); });
}

fmi3Status fmi3GetString(fmi3Instance instance, const fmi3ValueReference valueReferences[], size_t nValueReferences,
                         fmi3String values[], size_t nValues) {
    return ForEach(
        instance, __func__, Access::Get, valueReferences, nValueReferences, values, nValues, Type::Text,
        [&](Instance& called, Reference reference, size_t i) { values[i] = called.Text(reference).c_str(); });
}

fmi3Status fmi3SetString(fmi3Instance instance, const fmi3ValueReference valueReferences[], size_t nValueReferences,
                         const fmi3String values[], size_t nValues) {
    return ForEach(instance, __func__, Access::Set, valueReferences, nValueReferences, values, nValues, Type::Text,
                   [&](Instance& called, Reference reference, size_t i) {
                       RequirePointer(values[i], 1);
                       called.SetText(reference, values[i]);
                   });
}

/// The types that no variable has.
#define KINORA_WITHOUT_TYPE(Type)                                                                                      \
    fmi3Status fmi3Get##Type(fmi3Instance instance, const fmi3ValueReference /*valueReferences*/[],                    \
                             size_t nValueReferences, fmi3##Type /*values*/[], size_t /*nValues*/) {                   \
        return WithoutType(instance, __func__, nValueReferences);                                                      \
    }                                                                                                                  \
    fmi3Status fmi3Set##Type(fmi3Instance instance, const fmi3ValueReference /*valueReferences*/[],                    \
                             size_t nValueReferences, const fmi3##Type /*values*/[], size_t /*nValues*/) {             \
        return WithoutType(instance, __func__, nValueReferences);                                                      \
    }
KINORA_WITHOUT_TYPE(Float32)
KINORA_WITHOUT_TYPE(Int8)
KINORA_WITHOUT_TYPE(UInt8)
KINORA_WITHOUT_TYPE(Int16)
KINORA_WITHOUT_TYPE(UInt16)
KINORA_WITHOUT_TYPE(UInt32)
KINORA_WITHOUT_TYPE(Int64)
KINORA_WITHOUT_TYPE(UInt64)
KINORA_WITHOUT_TYPE(Boolean)
#undef KINORA_WITHOUT_TYPE

fmi3Status fmi3GetBinary(fmi3Instance instance, const fmi3ValueReference /*valueReferences*/[], size_t nValueReferences,
                         size_t /*valueSizes*/[], fmi3Binary /*values*/[], size_t /*nValues*/) {
    return WithoutType(instance, __func__, nValueReferences);
}

fmi3Status fmi3SetBinary(fmi3Instance instance, const fmi3ValueReference /*valueReferences*/[], size_t nValueReferences,
                         const size_t /*valueSizes*/[], const fmi3Binary /*values*/[], size_t /*nValues*/) {
    return WithoutType(instance, __func__, nValueReferences);
}

fmi3Status fmi3GetClock(fmi3Instance instance, const fmi3ValueReference /*valueReferences*/[], size_t nValueReferences,
                        fmi3Clock /*values*/[]) {
    return WithoutType(instance, __func__, nValueReferences);
}

fmi3Status fmi3SetClock(fmi3Instance instance, const fmi3ValueReference /*valueReferences*/[], size_t nValueReferences,
                        const fmi3Clock /*values*/[]) {
    return WithoutType(instance, __func__, nValueReferences);
}

fmi3Status fmi3GetNumberOfVariableDependencies(fmi3Instance instance, fmi3ValueReference /*valueReference*/,
                                               size_t* /*nDependencies*/) {
    return Without3(instance, __func__, "dependencies of single elements");
}

fmi3Status fmi3GetVariableDependencies(fmi3Instance instance, fmi3ValueReference /*dependent*/,
                                       size_t /*elementIndicesOfDependent*/[], fmi3ValueReference /*independents*/[],
                                       size_t /*elementIndicesOfIndependents*/[],
                                       fmi3DependencyKind /*dependencyKinds*/[], size_t /*nDependencies*/) {
    return Without3(instance, __func__, "dependencies of single elements");
}

fmi3Status fmi3GetFMUState(fmi3Instance instance, fmi3FMUState* /*state*/) {
    return Without3(instance, __func__, noStates);
}

fmi3Status fmi3SetFMUState(fmi3Instance instance, fmi3FMUState /*state*/) {
    return Without3(instance, __func__, noStates);
}

fmi3Status fmi3FreeFMUState(fmi3Instance instance, fmi3FMUState* /*state*/) {
    return Without3(instance, __func__, noStates);
}

fmi3Status fmi3SerializedFMUStateSize(fmi3Instance instance, fmi3FMUState /*state*/, size_t* /*size*/) {
    return Without3(instance, __func__, noStates);
}

fmi3Status fmi3SerializeFMUState(fmi3Instance instance, fmi3FMUState /*state*/, fmi3Byte /*serializedState*/[],
                                 size_t /*size*/) {
    return Without3(instance, __func__, noStates);
}

fmi3Status fmi3DeserializeFMUState(fmi3Instance instance, const fmi3Byte /*serializedState*/[], size_t /*size*/,
                                   fmi3FMUState* /*state*/) {
    return Without3(instance, __func__, noStates);
}

fmi3Status fmi3GetDirectionalDerivative(fmi3Instance instance, const fmi3ValueReference /*unknowns*/[],
                                        size_t /*nUnknowns*/, const fmi3ValueReference /*knowns*/[], size_t /*nKnowns*/,
                                        const fmi3Float64 /*seed*/[], size_t /*nSeed*/, fmi3Float64 /*sensitivity*/[],
                                        size_t /*nSensitivity*/) {
    return Without3(instance, __func__, "directional derivatives");
}

fmi3Status fmi3GetAdjointDerivative(fmi3Instance instance, const fmi3ValueReference /*unknowns*/[],
                                    size_t /*nUnknowns*/, const fmi3ValueReference /*knowns*/[], size_t /*nKnowns*/,
                                    const fmi3Float64 /*seed*/[], size_t /*nSeed*/, fmi3Float64 /*sensitivity*/[],
                                    size_t /*nSensitivity*/) {
    return Without3(instance, __func__, "adjoint derivatives");
}

fmi3Status fmi3EnterConfigurationMode(fmi3Instance instance) {
    return Without3(instance, __func__, noConfiguration);
}

fmi3Status fmi3ExitConfigurationMode(fmi3Instance instance) {
    return Without3(instance, __func__, noConfiguration);
}

fmi3Status fmi3GetIntervalDecimal(fmi3Instance instance, const fmi3ValueReference /*valueReferences*/[],
                                  size_t /*nValueReferences*/, fmi3Float64 /*intervals*/[],
                                  fmi3IntervalQualifier /*qualifiers*/[]) {
    return Without3(instance, __func__, noClocks);
}

fmi3Status fmi3GetIntervalFraction(fmi3Instance instance, const fmi3ValueReference /*valueReferences*/[],
                                   size_t /*nValueReferences*/, fmi3UInt64 /*counters*/[], fmi3UInt64 /*resolutions*/[],
                                   fmi3IntervalQualifier /*qualifiers*/[]) {
    return Without3(instance, __func__, noClocks);
}

fmi3Status fmi3GetShiftDecimal(fmi3Instance instance, const fmi3ValueReference /*valueReferences*/[],
                               size_t /*nValueReferences*/, fmi3Float64 /*shifts*/[]) {
    return Without3(instance, __func__, noClocks);
}

fmi3Status fmi3GetShiftFraction(fmi3Instance instance, const fmi3ValueReference /*valueReferences*/[],
                                size_t /*nValueReferences*/, fmi3UInt64 /*counters*/[], fmi3UInt64 /*resolutions*/[]) {
    return Without3(instance, __func__, noClocks);
}

fmi3Status fmi3SetIntervalDecimal(fmi3Instance instance, const fmi3ValueReference /*valueReferences*/[],
                                  size_t /*nValueReferences*/, const fmi3Float64 /*intervals*/[]) {
    return Without3(instance, __func__, noClocks);
}

fmi3Status fmi3SetIntervalFraction(fmi3Instance instance, const fmi3ValueReference /*valueReferences*/[],
                                   size_t /*nValueReferences*/, const fmi3UInt64 /*counters*/[],
                                   const fmi3UInt64 /*resolutions*/[]) {
    return Without3(instance, __func__, noClocks);
}

fmi3Status fmi3SetShiftDecimal(fmi3Instance instance, const fmi3ValueReference /*valueReferences*/[],
                               size_t /*nValueReferences*/, const fmi3Float64 /*shifts*/[]) {
    return Without3(instance, __func__, noClocks);
}

fmi3Status fmi3SetShiftFraction(fmi3Instance instance, const fmi3ValueReference /*valueReferences*/[],
                                size_t /*nValueReferences*/, const fmi3UInt64 /*counters*/[],
                                const fmi3UInt64 /*resolutions*/[]) {
    return Without3(instance, __func__, noClocks);
}

fmi3Status fmi3EvaluateDiscreteStates(fmi3Instance instance) {
    return Without3(instance, __func__, noEvents);
}

fmi3Status fmi3UpdateDiscreteStates(fmi3Instance instance, fmi3Boolean* /*discreteStatesNeedUpdate*/,
                                    fmi3Boolean* /*terminateSimulation*/,
                                    fmi3Boolean* /*nominalsOfContinuousStatesChanged*/,
                                    fmi3Boolean* /*valuesOfContinuousStatesChanged*/,
                                    fmi3Boolean* /*nextEventTimeDefined*/, fmi3Float64* /*nextEventTime*/) {
    return Without3(instance, __func__, noEvents);
}

fmi3Status fmi3EnterStepMode(fmi3Instance instance) {
    return Without3(instance, __func__, noEvents);
}

fmi3Status fmi3GetOutputDerivatives(fmi3Instance instance, const fmi3ValueReference /*valueReferences*/[],
                                    size_t /*nValueReferences*/, const fmi3Int32 /*orders*/[], fmi3Float64 /*values*/[],
                                    size_t /*nValues*/) {
    return Without3(instance, __func__, "derivatives of outputs");
}

fmi3Status fmi3DoStep(fmi3Instance instance, fmi3Float64 currentCommunicationPoint, fmi3Float64 communicationStepSize,
                      fmi3Boolean /*noSetFMUStatePriorToCurrentPoint*/, fmi3Boolean* eventHandlingNeeded,
                      fmi3Boolean* terminateSimulation, fmi3Boolean* earlyReturn, fmi3Float64* lastSuccessfulTime) {
    return On3(instance, __func__, [&](Instance& called) {
        RequirePointer(eventHandlingNeeded, 1);
        RequirePointer(terminateSimulation, 1);
        RequirePointer(earlyReturn, 1);
        RequirePointer(lastSuccessfulTime, 1);
        *eventHandlingNeeded = *terminateSimulation = *earlyReturn = false;
        *lastSuccessfulTime = called.Time();
        called.DoStep(currentCommunicationPoint, communicationStepSize);
        *lastSuccessfulTime = called.Time();
    });
}

fmi3Status fmi3EnterContinuousTimeMode(fmi3Instance instance) {
    return Without3(instance, __func__, noModelExchange);
}

fmi3Status fmi3CompletedIntegratorStep(fmi3Instance instance, fmi3Boolean /*noSetFMUStatePriorToCurrentPoint*/,
                                       fmi3Boolean* /*enterEventMode*/, fmi3Boolean* /*terminateSimulation*/) {
    return Without3(instance, __func__, noModelExchange);
}

fmi3Status fmi3SetTime(fmi3Instance instance, fmi3Float64 /*time*/) {
    return Without3(instance, __func__, noModelExchange);
}

fmi3Status fmi3SetContinuousStates(fmi3Instance instance, const fmi3Float64 /*continuousStates*/[],
                                   size_t /*nContinuousStates*/) {
    return Without3(instance, __func__, noModelExchange);
}

fmi3Status fmi3GetContinuousStateDerivatives(fmi3Instance instance, fmi3Float64 /*derivatives*/[],
                                             size_t /*nContinuousStates*/) {
    return Without3(instance, __func__, noModelExchange);
}

fmi3Status fmi3GetEventIndicators(fmi3Instance instance, fmi3Float64 /*eventIndicators*/[],
                                  size_t /*nEventIndicators*/) {
    return Without3(instance, __func__, noModelExchange);
}

fmi3Status fmi3GetContinuousStates(fmi3Instance instance, fmi3Float64 /*continuousStates*/[],
                                   size_t /*nContinuousStates*/) {
    return Without3(instance, __func__, noModelExchange);
}

fmi3Status fmi3GetNominalsOfContinuousStates(fmi3Instance instance, fmi3Float64 /*nominals*/[],
                                             size_t /*nContinuousStates*/) {
    return Without3(instance, __func__, noModelExchange);
}

fmi3Status fmi3GetNumberOfEventIndicators(fmi3Instance instance, size_t* /*nEventIndicators*/) {
    return Without3(instance, __func__, noModelExchange);
}

fmi3Status fmi3GetNumberOfContinuousStates(fmi3Instance instance, size_t* /*nContinuousStates*/) {
    return Without3(instance, __func__, noModelExchange);
}

fmi3Status fmi3ActivateModelPartition(fmi3Instance instance, fmi3ValueReference /*clockReference*/,
                                      fmi3Float64 /*activationTime*/) {
    return Without3(instance, __func__, "scheduled execution");
}
