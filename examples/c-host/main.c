#include "kinora_veltrix.h"

#include <stdio.h>

#define UNTURNED                                                                                                       \
    { 1, 0, 0, 0, 1, 0, 0, 0, 1 } /* the body's axes x, y, z, row by row */

/** Pulls the upper one of two magnets away, a millimetre per step. */
static kv_status pull(kv_coupling* coupling, const char* project, const char* geometry) {
    static const char* const objects[] = {"lower_magnet", "upper_magnet"};
    static const kv_group groups[] = {{sizeof(kv_group), "lower", {0, 0, 0}, UNTURNED, &objects[0], 1},
                                      {sizeof(kv_group), "upper", {0, 0, 0.012}, UNTURNED, &objects[1], 1}};
    static const kv_material materials[] = {{sizeof(kv_material), "lower_magnet", "magnet_1T", {0, 0, 1}},
                                            {sizeof(kv_material), "upper_magnet", "magnet_1T", {0, 0, 1}}};
    kv_pose poses[] = {{sizeof(kv_pose), "lower", {0, 0, 0}, UNTURNED},
                       {sizeof(kv_pose), "upper", {0, 0, 0}, UNTURNED}};
    kv_load loads[] = {{sizeof(kv_load), {0}, {0}}, {sizeof(kv_load), {0}, {0}}}; /* newtons and newton-metres */
    size_t count = 0;
    int32_t solver_status = 0;
    kv_status status = kv_create_project(coupling, project, geometry, "mm");
    status = status == KV_OK ? kv_init_magnetic_objects(coupling, groups, 2, materials, 2) : status;
    for (int step = 0; step < 5 && status == KV_OK; ++step) {
        poses[1].position[2] = 0.012 + 0.001 * step; /* metres */
        status = kv_analyze(coupling, 0.01 * step, poses, 2, loads, &count, &solver_status);
        if (status == KV_OK) {
            printf("z = %d mm: %8.4f N\n", 12 + step, loads[1].force[2]);
        }
    }
    return status == KV_OK ? kv_quit(coupling) : status; /* saves and closes the project */
}

int main(int count, char** arguments) {
    const char* text = "usage: c-host PROJECT GEOMETRY";
    kv_coupling* coupling = NULL;
    kv_status status = KV_BAD_ARGUMENT;
    if (count == 3) {
        status = kv_new(KV_API_VERSION, NULL, &coupling);
        status = status == KV_OK ? pull(coupling, arguments[1], arguments[2]) : status;
        kv_error_text(coupling, &text);
    }
    if (status != KV_OK) {
        fprintf(stderr, "%s\n", text);
    }
    kv_delete(coupling); /* lets go of the desktop in any case */
    return status == KV_OK ? 0 : count == 3 ? 1 : 2;
}
