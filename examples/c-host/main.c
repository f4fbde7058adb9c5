#include "kinora_veltrix.h"

#include <stdio.h>

#define BODIES 2

static const char* const lower_objects[] = {"lower_magnet"};
static const char* const upper_objects[] = {"upper_magnet"};
/* As drawn: places in metres, and the axes x, y, z. */
static const kv_group groups[BODIES] = {
    {sizeof(kv_group), "lower", {0, 0, 0}, {1, 0, 0, 0, 1, 0, 0, 0, 1}, lower_objects, 1},
    {sizeof(kv_group), "upper", {0, 0, 0.012}, {1, 0, 0, 0, 1, 0, 0, 0, 1}, upper_objects, 1}};
/* Magnetised along z. */
static const kv_material materials[BODIES] = {{sizeof(kv_material), "lower_magnet", "magnet_1T", {0, 0, 1}},
                                              {sizeof(kv_material), "upper_magnet", "magnet_1T", {0, 0, 1}}};

/** Pulls the upper one of two magnets away, a millimetre per step. */
static kv_status pull(kv_coupling* coupling, const char* project, const char* geometry) {
    kv_pose poses[BODIES] = {{sizeof(kv_pose), "lower", {0, 0, 0}, {1, 0, 0, 0, 1, 0, 0, 0, 1}},
                             {sizeof(kv_pose), "upper", {0, 0, 0.012}, {1, 0, 0, 0, 1, 0, 0, 0, 1}}};
    kv_load loads[BODIES];
    loads[0].size = loads[1].size = sizeof(kv_load);

    kv_status status = kv_create_project(coupling, project, geometry, "mm");
    if (status == KV_OK) {
        status = kv_init_magnetic_objects(coupling, groups, BODIES, materials, BODIES);
    }
    for (int step = 0; step < 5 && status == KV_OK; ++step) {
        size_t count = 0;
        int32_t solver_status = 0;
        status = kv_analyze(coupling, 0.01 * step, poses, BODIES, loads, &count, &solver_status);
        if (status == KV_OK) {
            printf("z = %2.0f mm: %8.4f N\n", 1e3 * poses[1].position[2], loads[1].force[2]);
            poses[1].position[2] += 0.001;
        }
    }
    return status;
}

/** Says why the last call failed, if it did, and gives its status on. */
static kv_status told(kv_coupling* coupling, kv_status status) {
    const char* text = "";
    if (status != KV_OK && kv_error_text(coupling, &text) == KV_OK) {
        fprintf(stderr, "%s\n", text);
    }
    return status;
}

int main(int count, char** arguments) {
    if (count != 3) {
        fprintf(stderr, "usage: c-host PROJECT GEOMETRY\n"
                        "  PROJECT   the project file to make (on Windows in ASCII: there main gets no UTF-8)\n"
                        "  GEOMETRY  a file with the objects lower_magnet and upper_magnet\n");
        return 2;
    }
    kv_coupling* coupling = NULL;
    kv_status status = told(NULL, kv_new(KV_API_VERSION, NULL, &coupling));
    if (status == KV_OK) {
        status = told(coupling, pull(coupling, arguments[1], arguments[2]));
        const kv_status quit = told(coupling, kv_quit(coupling)); /* saves and closes the project */
        status = status == KV_OK ? quit : status;
    }
    kv_delete(coupling); /* lets go of the desktop in any case */
    return status == KV_OK ? 0 : 1;
}
