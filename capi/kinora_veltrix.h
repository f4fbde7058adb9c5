#ifndef KINORA_VELTRIX_H
#define KINORA_VELTRIX_H

/**
 * @file
 * The coupling for any compiler and any language: a C interface, in kinora_veltrix.dll, on Linux libkinora_veltrix.so.
 *
 * Couples a multibody host with the "Veltrix 3D" magnetostatic solver of the QUORIX Vantor Desktop. Life of a coupled
 * run, in the order of the calls:
 *  1. `kv_new` makes a handle.
 *  2. `kv_create_project` makes a project and imports the geometry; or `kv_open_project` opens one. Both start the
 *     desktop when it is not running yet; `kv_launch` starts it beforehand, or another version of it.
 *  3. `kv_init_magnetic_objects` turns bodies and materials into the field model.
 *  4. `kv_analyze` once per time step, the first one at time 0.0 exactly: poses in, forces and torques out.
 *  5. `kv_save_project`, `kv_close_project`. Another project may follow on the same handle.
 *  6. `kv_quit` ends the desktop, or `kv_release` lets go of it and leaves it running.
 *  7. `kv_delete`.
 *
 * Status. Every function returns a code (`kv_code`) and gives what it makes through pointers. Unless it says otherwise,
 * a function that fails leaves these as they were, and undoes nothing of what it had done in the desktop by then.
 * `kv_error_text` tells operation, cause and cure.
 *
 * Texts are UTF-8 and end in a zero character, in both directions. Inside, the library and the desktop exchange texts
 * in the system's ANSI code page (UTF-8 on Linux): one that this code page cannot hold is `KV_BAD_TEXT`, and nothing is
 * done. Texts and arrays that are handed over are the caller's, and are needed until the call returns.
 *
 * Pointers. None may be null, but for what says so; an array may be where it has no elements. A null pointer is
 * `KV_BAD_ARGUMENT`.
 *
 * Records begin with their size, `sizeof` as the caller's compiler sees it. They grow at their ends in later versions,
 * codes are only added: a program that is compiled with this header runs with every later library. All elements of an
 * array have the same size.
 *
 * Threads. A handle has a thread of its own, on which everything is done: its calls may come from any thread, and from
 * several at once; then they queue up, first come, first served. Handles are independent of each other. COM is
 * initialised on that thread only, and a caller's thread may have initialised it in whatever way, or not.
 * A call returns when it is done: a thread that must not wait makes none.
 *
 * Units and frames. Positions in metres; forces in newtons; torques in newton-metres, about the body's origin.
 * Orientations are 3x3 matrices of nine numbers, row by row: the rows are the body's axes x, y, z seen from the global
 * frame. Every rotation arrives exactly (to 1.5e-6 radians, for the desktop is told angles with six decimals).
 * Directions of coercivity and loads are components in the body's axes.
 */

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__) && !defined(_WIN32)
#define KV_API __attribute__((visibility("default")))
#else
/** Mark of the functions. A DLL's need none: its list of exports names them. */
#define KV_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Version of this interface, for `kv_new`. It grows when functions, codes or fields are added. */
#define KV_API_VERSION 1

/** `kv_options::busy_wait_ms`: as long as it takes. */
#define KV_WAIT_FOREVER UINT32_MAX

/** A code of `kv_code`. */
typedef int32_t kv_status;

/** What a call came to. Further codes may be added: treat unknown ones as failures. */
enum kv_code {
    /** Done. */
    KV_OK = 0,
    /** The operation answered false: the desktop refused something, does not answer any more, or the calls came in the
     *  wrong order. */
    KV_FAILED = 1,
    /** `kv_analyze`: solved, but there are fewer loads than bodies. */
    KV_INCOMPLETE = 2,
    /** `kv_analyze`: the solver failed; its status is set. */
    KV_SOLVER = 3,
    /** No desktop of this version is installed. */
    KV_NOT_INSTALLED = 4,
    /** The desktop is installed and does not start (a licence, its configuration). */
    KV_NOT_STARTED = 5,
    /** A file or folder that was named is not there. */
    KV_NO_SUCH_FILE = 6,
    /** An argument breaks a rule of its function; or the handle is none (any more). Nothing was done. */
    KV_BAD_ARGUMENT = 7,
    /** A text is no UTF-8, or holds characters that the system's code page lacks. Nothing was done. */
    KV_BAD_TEXT = 8,
    /** The desktop turned calls away for longer than `kv_options::busy_wait_ms`: a dialog is open, or it is at work. */
    KV_BUSY = 9,
    /** Out of memory, or of threads. */
    KV_NO_MEMORY = 10,
    /** An error of this library. */
    KV_INTERNAL = 11
};

/** A coupling: one connection to a desktop, with a thread of its own. */
typedef struct kv_coupling kv_coupling;

/** A list of texts that the library has made. */
typedef struct kv_texts kv_texts;

/** Settings of a handle. */
typedef struct kv_options {
    /** sizeof(kv_options) */
    size_t size;
    /** How long a call is repeated, in milliseconds, that a busy desktop turns away; 0: not at all. */
    uint32_t busy_wait_ms;
    /** 0 */
    uint32_t reserved;
} kv_options;

/** One rigid body and the solids that move with it, as the geometry file has them. */
typedef struct kv_group {
    /** sizeof(kv_group) */
    size_t size;
    /** Name of the body: a letter followed by letters, digits and underscores. Names differ in more than upper and lower
     *  case. The body's variables, coordinate systems, loads and files are named after it. */
    const char* body;
    /** Where the body is drawn: its origin, in metres. */
    double position[3];
    /** How the body is drawn: the rows are its axes in the geometry's global frame. The identity (1 0 0, 0 1 0, 0 0 1)
     *  where the body is to have the global axes while it is as drawn. */
    double rotation[9];
    /** Names of the modeler's objects that belong to the body; no object belongs to two. */
    const char* const* objects;
    /** How many. */
    size_t object_count;
} kv_group;

/** The material wanted for one of the modeler's objects. */
typedef struct kv_material {
    /** sizeof(kv_material) */
    size_t size;
    /** Name of the object; no other material of the call has it. */
    const char* object;
    /** Name of an existing material. */
    const char* material;
    /** Wanted components of the material's coercivity vector, in the axes of the object's body (global axes where it
     *  belongs to none). Where they differ from the stored material's, the object gets a clone of the material with
     *  these components. Ignored for materials without coercivity. */
    double coercivity_direction[3];
} kv_material;

/** The pose of one body at a time. */
typedef struct kv_pose {
    /** sizeof(kv_pose) */
    size_t size;
    /** Name of the body. */
    const char* body;
    /** Its origin in the global frame, in metres. */
    double position[3];
    /** Its orientation: the rows are the body's axes x, y, z seen from the global frame. */
    double rotation[9];
} kv_pose;

/** The load on one body, in the body's axes. */
typedef struct kv_load {
    /** sizeof(kv_load), set by the caller */
    size_t size;
    /** x, y, z, in newtons. */
    double force[3];
    /** x, y, z, in newton-metres, about the body's origin. */
    double torque[3];
} kv_load;

/**
 * @param api      receives the newest `KV_API_VERSION` that the library knows
 * @param version  receives the library's version, for example "0.1.0"; valid as long as it is loaded
 */
KV_API kv_status kv_version(int32_t* api, const char** version);

/** @param build  receives a line about how the library was built: version, system, compiler; valid as long as it is
 *  loaded */
KV_API kv_status kv_build(const char** build);

/**
 * Makes a handle. The desktop is not started yet.
 * @param api      `KV_API_VERSION` as the caller was compiled
 * @param options  null for the usual: 60 seconds of waiting for a busy desktop
 * @param handle   receives the handle; null on failure
 * @return KV_OK; KV_BAD_ARGUMENT, also for an interface newer than the library's; KV_NO_MEMORY
 */
KV_API kv_status kv_new(int32_t api, const kv_options* options, kv_coupling** handle);

/**
 * Lets go of the desktop as `kv_release` does, ends the handle's thread, and frees the handle. Waits for the call that is
 * under way; a busy desktop is not waited for any longer. Calls that wait for their turn, and all later ones, are
 * KV_BAD_ARGUMENT. Lists of texts stay.
 * @param handle  may be null: nothing happens
 */
KV_API kv_status kv_delete(kv_coupling* handle);

/**
 * Starts the desktop, or finds the one that runs. Nothing happens when the handle has one already.
 * @param version  the desktop is the ProgID "Pellux.VantorDesktop." and this text, for example "Simulator"; the plain
 *                 "Pellux.VantorDesktop" for an empty text. Null: what the environment variable
 *                 KINORA_VELTRIX_VTDK_VERSION says, which all functions go by that start the desktop themselves.
 * @return KV_OK; KV_NOT_INSTALLED; KV_NOT_STARTED; KV_FAILED when it starts and gives no desktop object
 */
KV_API kv_status kv_launch(kv_coupling* handle, const char* version);

/**
 * Makes a project with the magnetostatic design "Veltrix3DDesign1", saves it (never over an existing file) and imports
 * the geometry as `kv_init_geometry` does. A project that the handle held before is released, not closed.
 * @param project   path of the new project file. Relative paths, here and below, begin in the process's current folder.
 * @param geometry  path of the geometry file
 * @param units     length unit of the model, for example "mm"
 * @return KV_OK; KV_FAILED, or KV_NO_SUCH_FILE when there is no such geometry file, the new project staying open; as
 *         `kv_launch`
 */
KV_API kv_status kv_create_project(kv_coupling* handle, const char* project, const char* geometry, const char* units);

/**
 * Opens a project file, or takes the project over when the desktop has it open already, and activates a design. A
 * project that the handle held before is released, not closed.
 * @param project  path of an existing project file
 * @param design   design to activate; null or empty for none
 * @return KV_OK; KV_NO_SUCH_FILE; KV_FAILED when the desktop refuses the project or the design, the opened project
 *         staying the current one; as `kv_launch`
 */
KV_API kv_status kv_open_project(kv_coupling* handle, const char* project, const char* design);

/**
 * Opens a project as `kv_open_project` without a design does, and lists its "Veltrix 3D" designs.
 * @param designs  receives their names in ascending order, for `kv_texts_free`; null on failure
 * @return as `kv_open_project`
 */
KV_API kv_status kv_get_designs(kv_coupling* handle, const char* project, kv_texts** designs);

/**
 * Sets the model unit, imports the geometry, has every object solved inside and makes sure of an analysis setup. For a
 * project that was opened and has no geometry yet: what the file brings is added.
 * @return KV_OK; KV_FAILED; KV_NO_SUCH_FILE
 */
KV_API kv_status kv_init_geometry(kv_coupling* handle, const char* geometry, const char* units);

/**
 * Builds the field model: materials, a driven coordinate system per body, forces and torques, region, outputs, reports.
 * Once per design, after the geometry and before `kv_analyze`. A body that the design holds from an earlier run keeps
 * its place.
 * @param groups     the bodies, with their poses as drawn
 * @param materials  the materials of their objects
 * @return KV_OK; KV_FAILED; KV_BAD_ARGUMENT for poses that are no poses, and names that may not be or are there twice
 */
KV_API kv_status kv_init_magnetic_objects(kv_coupling* handle, const kv_group* groups, size_t group_count,
                                          const kv_material* materials, size_t material_count);

/**
 * One coupling step: moves the bodies, solves, returns the loads and records the step.
 * @param time           in seconds; exactly 0.0 starts a new run (history and reports are emptied)
 * @param poses          the poses of all bodies, the same bodies in the same order at every step of a run. Where
 *                       `kv_init_magnetic_objects` was not called for a body with this handle, since the model is from
 *                       an earlier run, the body's axes are the global ones as drawn.
 * @param loads          `pose_count` loads, each with its size set; the first `count` are filled in, in the order of the
 *                       poses, also on failure
 * @param count          receives how many
 * @param solver_status  receives the solver's error code; 0 unless the solve itself failed
 * @return KV_OK; KV_SOLVER; KV_INCOMPLETE, when the solve went well and recording it ended it early; KV_FAILED;
 *         KV_BAD_ARGUMENT, also for a time or pose that is not finite and a rotation that is none
 */
KV_API kv_status kv_analyze(kv_coupling* handle, double time, const kv_pose* poses, size_t pose_count, kv_load* loads,
                            size_t* count, int32_t* solver_status);

/**
 * Reads the desktop's messages for the open project and its active design.
 * @param severity  0 information, 1 warning, 2 error, 3 fatal; handed on to the desktop
 * @param messages  receives them, for `kv_texts_free`; null on failure
 * @return KV_OK; KV_FAILED without a project or an active design
 */
KV_API kv_status kv_get_messages(kv_coupling* handle, int32_t severity, kv_texts** messages);

/** Saves the open project. @return KV_OK; KV_FAILED without one, and when the desktop refuses */
KV_API kv_status kv_save_project(kv_coupling* handle);

/** Closes the open project without saving it. @return KV_OK; KV_FAILED without one, and when the desktop refuses */
KV_API kv_status kv_close_project(kv_coupling* handle);

/**
 * Saves and closes the open project, if any, and ends the desktop. The handle may launch another one.
 * @return KV_OK, also without a desktop; KV_FAILED when saving or closing failed: nothing else was done then, and
 *         `kv_release` lets go in any case
 */
KV_API kv_status kv_quit(kv_coupling* handle);

/** Lets go of project and desktop, which keeps running; nothing is saved or closed. The handle may launch again.
 *  @return KV_OK, also without a desktop */
KV_API kv_status kv_release(kv_coupling* handle);

/** @param count  receives how many texts the list has */
KV_API kv_status kv_texts_count(const kv_texts* texts, size_t* count);

/** @param text  receives a text of the list, valid as long as the list
 *  @return KV_OK; KV_BAD_ARGUMENT for an index from the count on */
KV_API kv_status kv_texts_at(const kv_texts* texts, size_t index, const char** text);

/** Frees a list. @param texts  may be null: nothing happens */
KV_API kv_status kv_texts_free(kv_texts* texts);

/**
 * Why the handle's last call that failed did so: the operation, what failed, what the desktop's messages said, and what
 * to do, in several lines. Calls that succeed leave it as it is.
 * @param handle  null for the last failure on this thread that belongs to no handle: of `kv_new`, or of a handle that is
 *                none
 * @param text    receives the text, empty when nothing has failed; valid until this thread's next call of this function
 */
KV_API kv_status kv_error_text(kv_coupling* handle, const char** text);

/** @param text  receives what a code means, in a line; valid as long as the library is loaded
 *  @return KV_OK; KV_BAD_ARGUMENT for a code that is none */
KV_API kv_status kv_code_text(kv_status code, const char** text);

/** @param text  receives the text of a script error code of the desktop, such as "0x0202: Bad argument value"; valid as
 *               long as the library is loaded
 *  @return KV_OK; KV_BAD_ARGUMENT for a code that the desktop does not have */
KV_API kv_status kv_script_error_text(int32_t code, const char** text);

#ifdef __cplusplus
}
#endif

#endif
