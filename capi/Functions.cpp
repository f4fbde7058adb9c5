// The functions of the C interface. Nothing is thrown out of them.
#include "capi/Handles.h"
#include "capi/TextConversion.h"
#include "interface/KinoraVeltrixBinaryInterface.h"
#include "interface/KinoraVeltrixScriptErrors.h"
#include "programs/StayLoaded.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

/// Made by one function, freed by another; what a caller holds is its address.
struct kv_texts {
    std::vector<std::string> texts;
};

namespace kinora::capi {
namespace {

constexpr std::uint32_t usualBusyWaitMs = 60000;

void NeedPointer(const void* pointer, const char* argument) {
    if (!pointer) {
        throw Error(KV_BAD_ARGUMENT, std::string(argument) + " is a null pointer.", "Hand over an address.");
    }
}

/// @param action  throws what fails
template <class Action>
kv_status WithoutHandle(const char* operation, const Action& action) noexcept {
    try {
        action();
        return KV_OK;
    } catch (...) {
        return NoteForThread(operation);
    }
}

/// @param action  takes the handle's session; throws what fails
template <class Action>
kv_status OnHandle(const kv_coupling* handle, const char* operation, const Action& action) noexcept {
    const std::shared_ptr<Handle> found = Handles::Find(handle);
    return found ? found->Do(operation, action) : NoHandle(operation);
}

/// A function that gives a list of texts; null when it fails.
template <class Action>
kv_status GiveTexts(const kv_coupling* handle, const char* operation, kv_texts** texts, const char* argument,
                    const Action& action) {
    if (texts) {
        *texts = nullptr;
    }
    return OnHandle(handle, operation, [&](Session& session) {
        NeedPointer(texts, argument);
        auto list = std::make_unique<kv_texts>();
        list->texts = action(session);
        *texts = list.release();
    });
}

std::uint32_t BusyWaitOf(const kv_options* options) {
    if (!options) {
        return usualBusyWaitMs;
    }
    const Records<const kv_options> records(options, 1, "options");
    if (options->reserved != 0) {
        throw Error(KV_BAD_ARGUMENT, "options.reserved is not 0.", "Begin with a record of zeros.");
    }
    return options->busy_wait_ms;
}

void CheckApi(std::int32_t api) {
    if (api < 1 || api > KV_API_VERSION) {
        throw Error(KV_BAD_ARGUMENT,
                    "the program asks for version " + std::to_string(api) +
                        " of the interface, and the library has up to " + std::to_string(KV_API_VERSION) + ".",
                    "Use a library that is as new as the header with which the program was compiled.");
    }
}

void CheckTime(double time) {
    if (!std::isfinite(time)) {
        throw Error(KV_BAD_ARGUMENT, "the time is not finite.", "Look where it comes from.");
    }
}

/// Fills in the caller's records.
void GiveLoads(const std::vector<kv_load>& loads, const Records<kv_load>& records) {
    for (std::size_t i = 0; i < loads.size(); ++i) {
        std::copy(std::begin(loads[i].force), std::end(loads[i].force), records[i].force);
        std::copy(std::begin(loads[i].torque), std::end(loads[i].torque), records[i].torque);
    }
}

} // namespace
} // namespace kinora::capi

using namespace kinora::capi;

kv_status kv_version(int32_t* api, const char** version) {
    return WithoutHandle(__func__, [&] {
        NeedPointer(api, "api");
        NeedPointer(version, "version");
        *api = KV_API_VERSION;
        *version = KINORA_VERSION;
    });
}

kv_status kv_build(const char** build) {
    return WithoutHandle(__func__, [&] {
        NeedPointer(build, "build");
        *build = "kinora_veltrix " KINORA_VERSION ", " KINORA_SYSTEM "; " KINORA_VELTRIX_BINARY_INTERFACE;
    });
}

kv_status kv_new(int32_t api, const kv_options* options, kv_coupling** handle) {
    if (handle) {
        *handle = nullptr;
    }
    return WithoutHandle(__func__, [&] {
        NeedPointer(handle, "handle");
        CheckApi(api);
        const auto made = std::make_shared<Handle>(BusyWaitOf(options));
        try {
            kinora::programs::StayLoaded();
            *handle = Handles::Add(made);
        } catch (...) {
            made->End();
            throw;
        }
    });
}

kv_status kv_delete(kv_coupling* handle) {
    if (!handle) {
        return KV_OK;
    }
    return WithoutHandle(__func__, [&] {
        const std::shared_ptr<Handle> found = Handles::Find(handle);
        if (found && found->IsOwnThread()) {
            throw InTheMiddle();
        }
        const std::shared_ptr<Handle> removed = Handles::Remove(handle);
        if (!removed) {
            throw NoSuchHandle();
        }
        removed->End();
    });
}

kv_status kv_launch(kv_coupling* handle, const char* version) {
    return OnHandle(handle, __func__, [&](Session& session) {
        if (!version) {
            session.Launch(nullptr);
        } else {
            const std::string wanted = ToAnsi(version, "version");
            session.Launch(&wanted);
        }
    });
}

kv_status kv_create_project(kv_coupling* handle, const char* project, const char* geometry, const char* units) {
    return OnHandle(handle, __func__, [&](Session& session) {
        session.CreateProject(ToAnsiPath(project, "project"), ToAnsiPath(geometry, "geometry"), ToAnsi(units, "units"));
    });
}

kv_status kv_open_project(kv_coupling* handle, const char* project, const char* design) {
    return OnHandle(handle, __func__, [&](Session& session) {
        session.OpenProject(ToAnsiPath(project, "project"), design ? ToAnsi(design, "design") : std::string());
    });
}

kv_status kv_get_designs(kv_coupling* handle, const char* project, kv_texts** designs) {
    return GiveTexts(handle, __func__, designs, "designs",
                     [&](Session& session) { return session.GetDesigns(ToAnsiPath(project, "project")); });
}

kv_status kv_init_geometry(kv_coupling* handle, const char* geometry, const char* units) {
    return OnHandle(handle, __func__, [&](Session& session) {
        session.InitGeometry(ToAnsiPath(geometry, "geometry"), ToAnsi(units, "units"));
    });
}

kv_status kv_init_magnetic_objects(kv_coupling* handle, const kv_group* groups, size_t group_count,
                                   const kv_material* materials, size_t material_count) {
    return OnHandle(handle, __func__, [&](Session& session) {
        session.InitMagneticObjects(ReadGroups(groups, group_count), ReadMaterials(materials, material_count));
    });
}

kv_status kv_analyze(kv_coupling* handle, double time, const kv_pose* poses, size_t pose_count, kv_load* loads,
                     size_t* count, int32_t* solver_status) {
    return OnHandle(handle, __func__, [&](Session& session) {
        NeedPointer(count, "count");
        NeedPointer(solver_status, "solver_status");
        CheckTime(time);
        const Records<kv_load> records(loads, pose_count, "loads");
        std::vector<Transform> transforms = ReadPoses(poses, pose_count);
        *count = 0;
        *solver_status = 0;
        const Session::Step step = session.Analyze(time, std::move(transforms));
        GiveLoads(step.loads, records);
        *count = step.loads.size();
        *solver_status = step.status;
        if (step.failure) {
            throw Error(*step.failure);
        }
    });
}

kv_status kv_get_messages(kv_coupling* handle, int32_t severity, kv_texts** messages) {
    return GiveTexts(handle, __func__, messages, "messages",
                     [&](Session& session) { return session.GetMessages(severity); });
}

kv_status kv_save_project(kv_coupling* handle) {
    return OnHandle(handle, __func__, [](Session& session) { session.SaveProject(); });
}

kv_status kv_close_project(kv_coupling* handle) {
    return OnHandle(handle, __func__, [](Session& session) { session.CloseProject(); });
}

kv_status kv_quit(kv_coupling* handle) {
    return OnHandle(handle, __func__, [](Session& session) { session.Quit(); });
}

kv_status kv_release(kv_coupling* handle) {
    return OnHandle(handle, __func__, [](Session& session) { session.Release(); });
}

kv_status kv_texts_count(const kv_texts* texts, size_t* count) {
    return WithoutHandle(__func__, [&] {
        NeedPointer(texts, "texts");
        NeedPointer(count, "count");
        *count = texts->texts.size();
    });
}

kv_status kv_texts_at(const kv_texts* texts, size_t index, const char** text) {
    return WithoutHandle(__func__, [&] {
        NeedPointer(texts, "texts");
        NeedPointer(text, "text");
        if (index >= texts->texts.size()) {
            throw Error(KV_BAD_ARGUMENT,
                        "there is no text " + std::to_string(index) + " in a list of " +
                            std::to_string(texts->texts.size()) + ".",
                        "Indices begin with 0; kv_texts_count tells where they end.");
        }
        *text = texts->texts[index].c_str();
    });
}

kv_status kv_texts_free(kv_texts* texts) {
    delete texts;
    return KV_OK;
}

kv_status kv_error_text(kv_coupling* handle, const char** text) {
    return WithoutHandle(__func__, [&] {
        NeedPointer(text, "text");
        if (!handle) {
            *text = TextOfThreadsError();
            return;
        }
        const std::shared_ptr<Handle> found = Handles::Find(handle);
        if (!found) {
            throw NoSuchHandle();
        }
        *text = found->LastError().CopyForThread();
    });
}

kv_status kv_code_text(kv_status code, const char** text) {
    return WithoutHandle(__func__, [&] {
        NeedPointer(text, "text");
        const char* meaning = MeaningOf(code);
        if (!meaning) {
            throw Error(KV_BAD_ARGUMENT, std::to_string(code) + " is no code.", "A later version may have given it.");
        }
        *text = meaning;
    });
}

kv_status kv_script_error_text(int32_t code, const char** text) {
    return WithoutHandle(__func__, [&] {
        NeedPointer(text, "text");
        const char* meaning = GetKinoraVeltrixScriptErrorText(code);
        if (!meaning) {
            throw Error(KV_BAD_ARGUMENT, std::to_string(code) + " is no script error code of the desktop.",
                        "They are 0x0000 to 0x000D and 0x0200 to 0x022F.");
        }
        *text = meaning;
    });
}
