#include "capi/Error.h"

#include <comdef.h>

#include <new>
#include <stdexcept>
#include <system_error>

namespace kinora::capi {
namespace {

const char reportIt[] = "This is an error of the library: please report it with this text.";

Error OutOfMemory() {
    return {KV_NO_MEMORY, "the memory is used up.", "Free some; then kv_release and begin anew."};
}

} // namespace

std::string TextOf(const char* operation, const Error& error) {
    std::string text = std::string(operation) + ": " + error.cause;
    if (!error.messages.empty()) {
        text += "\nThe desktop's messages:";
        for (const std::string& message : error.messages) {
            text += "\n  " + message;
        }
    }
    return text + "\n" + error.cure;
}

Error CurrentError() {
    try {
        throw;
    } catch (Error& error) {
        return std::move(error);
    } catch (const std::bad_alloc&) {
        return OutOfMemory();
    } catch (const std::length_error&) { // of a conversion whose system call had no memory
        return OutOfMemory();
    } catch (const std::system_error& error) {
        return error.code() == std::errc::resource_unavailable_try_again
                   ? Error(KV_NO_MEMORY, "the system has no thread left.", "End others: every handle has one.")
                   : Error(KV_INTERNAL, error.what(), reportIt);
    } catch (const _com_error& error) {
        return error.Error() == E_OUTOFMEMORY ? OutOfMemory()
                                              : Error(KV_INTERNAL, "the platform raised an error.", reportIt);
    } catch (const std::exception& error) {
        return {KV_INTERNAL, error.what(), reportIt};
    } catch (...) {
        return {KV_INTERNAL, "an unknown error was raised.", reportIt};
    }
}

const char* MeaningOf(kv_status code) {
    switch (code) {
    case KV_OK:
        return "done";
    case KV_FAILED:
        return "the operation failed: the desktop refused something, or the calls came in the wrong order";
    case KV_INCOMPLETE:
        return "solved, but there are fewer loads than bodies";
    case KV_SOLVER:
        return "the solver failed";
    case KV_NOT_INSTALLED:
        return "no desktop of this version is installed";
    case KV_NOT_STARTED:
        return "the desktop is installed and does not start";
    case KV_NO_SUCH_FILE:
        return "there is no such file";
    case KV_BAD_ARGUMENT:
        return "an argument breaks a rule of the function, or the handle is none";
    case KV_BAD_TEXT:
        return "a text is no UTF-8, or holds characters that the system's code page lacks";
    case KV_BUSY:
        return "the desktop turned calls away for longer than it is waited for";
    case KV_NO_MEMORY:
        return "the memory is used up";
    case KV_INTERNAL:
        return "an error of the library";
    default:
        return nullptr;
    }
}

} // namespace kinora::capi
