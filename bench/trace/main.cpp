// What the trace costs per call: the same look-up and call on a desktop in another process, with and without it, taken
// in turns in one run. Prints the medians in microseconds and their ratio.
// Needs the simulator and the trace registered.

#include "bench/step/Timing.h"

#include <windows.h>

#include <objbase.h>
#include <oleauto.h>

#include <cstdio>
#include <vector>

namespace {

IDispatch* Launch(const wchar_t* progId) {
    CLSID classId = {};
    IDispatch* application = nullptr;
    if (FAILED(CLSIDFromProgID(progId, &classId)) ||
        FAILED(
            CoCreateInstance(classId, nullptr, CLSCTX_SERVER, IID_IDispatch, reinterpret_cast<void**>(&application)))) {
        std::fprintf(stderr, "error: %ls cannot be created; register it first.\n", progId);
    }
    return application;
}

/// One look-up and one call that gives an object, as a client does them.
void CallOnce(IDispatch* application) {
    wchar_t name[] = L"GetAppDesktop";
    LPOLESTR names[] = {name};
    DISPPARAMS none = {};
    VARIANT result;
    VariantInit(&result);
    DISPID id = 0;
    application->GetIDsOfNames(IID_NULL, names, 1, LOCALE_SYSTEM_DEFAULT, &id);
    application->Invoke(id, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_METHOD, &none, &result, nullptr, nullptr);
    VariantClear(&result);
}

int Measure() {
    SetEnvironmentVariableW(L"VANTOR_TRACE_TARGET", L"Simulator");
    IDispatch* const plain = Launch(L"Pellux.VantorDesktop.Simulator");
    IDispatch* const traced = Launch(L"Pellux.VantorDesktop.Trace");
    if (!plain || !traced) {
        return 1;
    }
    constexpr int calls = 3000;
    std::vector<double> plainTimes;
    std::vector<double> tracedTimes;
    for (int i = 0; i < calls; ++i) {
        plainTimes.push_back(SecondsOf([&] { CallOnce(plain); }));
        tracedTimes.push_back(SecondsOf([&] { CallOnce(traced); }));
    }
    const double without = 1e6 * Median(plainTimes);
    const double with = 1e6 * Median(tracedTimes);
    std::printf("without %.1f us, with %.1f us, ratio %.3f\n", without, with, with / without);
    traced->Release();
    plain->Release();
    return 0;
}

} // namespace

int main() {
    CoInitialize(nullptr);
    const int status = Measure();
    CoUninitialize();
    return status;
}
