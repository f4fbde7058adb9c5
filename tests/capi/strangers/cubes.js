// The library loaded by a program that MSVC built: Node.js pulls two cube magnets apart, and has them
// pulled by two handles at once. Arguments: the library, the project's folder, an empty folder. Exit status 0 when all is
// as it should be.
"use strict";
const assert = require("assert");
const fs = require("fs");
const path = require("path");
const { promisify } = require("util");
const koffi = require("koffi");

const [libraryFile, projectFolder, workFolder] = process.argv.slice(2);
const cubes = path.join(projectFolder, "examples", "cube-magnets", "cube-magnets.obj");
const KV_OK = 0, KV_NO_SUCH_FILE = 6, KV_BAD_ARGUMENT = 7, KV_BAD_TEXT = 8;
const UPRIGHT = [1, 0, 0, 0, 1, 0, 0, 0, 1];

const vector = koffi.array("double", 3);
const matrix = koffi.array("double", 9);
const records = {
    kv_group: koffi.struct("kv_group", { size: "size_t", body: "str", position: vector, rotation: matrix,
                                         objects: koffi.pointer("str"), object_count: "size_t" }),
    kv_material: koffi.struct("kv_material", { size: "size_t", object: "str", material: "str",
                                               coercivity_direction: vector }),
    kv_pose: koffi.struct("kv_pose", { size: "size_t", body: "str", position: vector, rotation: matrix }),
    kv_load: koffi.struct("kv_load", { size: "size_t", force: vector, torque: vector }),
};
koffi.opaque("kv_coupling");
koffi.opaque("kv_texts");

const library = koffi.load(libraryFile);
const kv = {};
for (const declaration of [
    "kv_new(int32_t api, const void *options, _Out_ kv_coupling **handle)",
    "kv_delete(kv_coupling *handle)",
    "kv_launch(kv_coupling *handle, const char *version)",
    "kv_create_project(kv_coupling *handle, const char *project, const char *geometry, const char *units)",
    "kv_open_project(kv_coupling *handle, const char *project, const char *design)",
    "kv_get_designs(kv_coupling *handle, const char *project, _Out_ kv_texts **designs)",
    "kv_init_magnetic_objects(kv_coupling *handle, const kv_group *groups, size_t group_count, " +
        "const kv_material *materials, size_t material_count)",
    "kv_analyze(kv_coupling *handle, double time, const kv_pose *poses, size_t pose_count, _Inout_ kv_load *loads, " +
        "_Out_ size_t *count, _Out_ int32_t *solver_status)",
    "kv_save_project(kv_coupling *handle)",
    "kv_quit(kv_coupling *handle)",
    "kv_texts_count(const kv_texts *texts, _Out_ size_t *count)",
    "kv_texts_at(const kv_texts *texts, size_t index, _Out_ const char **text)",
    "kv_texts_free(kv_texts *texts)",
    "kv_error_text(kv_coupling *handle, _Out_ const char **text)",
    "kv_code_text(int32_t code, _Out_ const char **text)",
]) {
    const name = declaration.slice(0, declaration.indexOf("("));
    kv[name] = library.func("int32_t " + declaration);
    // On a thread of Node's pool.
    kv[name].later = promisify(kv[name].async);
}

/** What a call gives through its last argument; ends the test when the call fails. */
function given(call, ...given) {
    const result = [null];
    assert.strictEqual(call(...given, result), KV_OK);
    return result[0];
}

const errorText = (handle) => given(kv.kv_error_text, handle);

function succeeds(handle, status) {
    assert.strictEqual(status, KV_OK, status === KV_OK ? "" : errorText(handle));
}

function launched(version) {
    const handle = given(kv.kv_new, 1, null);
    succeeds(handle, kv.kv_launch(handle, version));
    return handle;
}

const bodies = ["lower", "upper"];
const posesAt = (height) => bodies.map((body, i) => (
    { size: koffi.sizeof(records.kv_pose), body, position: [0, 0, i * height], rotation: UPRIGHT }));

/** Makes a project of the cubes and pulls the upper one away, a millimetre per step; gives the forces on it. */
async function pull(handle, project, steps) {
    const groups = posesAt(0.012).map((pose) => (
        { ...pose, size: koffi.sizeof(records.kv_group), objects: [pose.body + "_magnet"], object_count: 1 }));
    const materials = bodies.map((body) => ({ size: koffi.sizeof(records.kv_material), object: body + "_magnet",
                                              material: "magnet_1T", coercivity_direction: [0, 0, 1] }));
    succeeds(handle, await kv.kv_create_project.later(handle, project, cubes, "mm"));
    succeeds(handle, await kv.kv_init_magnetic_objects.later(handle, groups, 2, materials, 2));
    const forces = [];
    for (let step = 0; step < steps; ++step) {
        const loads = bodies.map(() => ({ size: koffi.sizeof(records.kv_load), force: [0, 0, 0], torque: [0, 0, 0] }));
        const count = [null], solverStatus = [null];
        succeeds(handle, await kv.kv_analyze.later(handle, 0.05 * step, posesAt(0.012 + 0.001 * step), 2, loads, count,
                                                   solverStatus));
        assert.deepStrictEqual([count[0], solverStatus[0]], [2, 0]);
        assert(Math.abs(loads[0].force[2] + loads[1].force[2]) < 1e-3, "the magnets pull at each other");
        forces.push(loads[1].force[2]);
    }
    return forces;
}

/** The closed form's forces on the upper cube, a millimetre apart. */
const expectedForces = fs.readFileSync(path.join(path.dirname(cubes), "scenario.expected.csv"), "utf8")
    .trim().split(/\r?\n/).slice(1).map((line) => Number(line.split(",")[1]));

function expectForces(forces, steps) {
    assert.strictEqual(forces.length, steps);
    forces.forEach((force, i) => assert(Math.abs(force - expectedForces[i]) < 1e-4 * Math.abs(expectedForces[0]),
                                        `step ${i}: ${force} N, not ${expectedForces[i]} N`));
}

/** Sizes and offsets are what capi/abi.txt says. */
function checkLayouts() {
    const lines = fs.readFileSync(path.join(projectFolder, "capi", "abi.txt"), "utf8").split(/\r?\n/);
    const facts = lines.map((line) => line.split(" ")).filter(([, record]) => record in records);
    assert.strictEqual(facts.length, 21);
    for (const [kind, record, ...rest] of facts) {
        const number = kind === "size" ? koffi.sizeof(records[record]) : koffi.offsetof(records[record], rest[0]);
        assert.strictEqual(number, Number(rest[rest.length - 1]), `${kind} ${record} ${rest}`);
    }
}

/** Texts arrive, also those that are no ASCII, in both directions. */
function checkTexts(handle, project) {
    assert.strictEqual(kv.kv_save_project(handle), KV_OK);
    const designs = given(kv.kv_get_designs, handle, project);
    assert.strictEqual(given(kv.kv_texts_count, designs), 1);
    assert.strictEqual(given(kv.kv_texts_at, designs, 0), "Veltrix3DDesign1");
    assert.strictEqual(kv.kv_texts_at(designs, 1, [null]), KV_BAD_ARGUMENT);
    assert.strictEqual(kv.kv_texts_free(designs), KV_OK);

    assert.strictEqual(kv.kv_open_project(handle, path.join(workFolder, "Größe.vtdk"), null), KV_NO_SUCH_FILE);
    assert(errorText(handle).includes("Größe.vtdk"), errorText(handle));
    assert.strictEqual(kv.kv_open_project(handle, path.join(workFolder, "中.vtdk"), null), KV_BAD_TEXT);
    assert(errorText(handle).includes("中.vtdk"), errorText(handle));
    assert.strictEqual(given(kv.kv_code_text, KV_OK), "done");
}

async function main() {
    checkLayouts();
    const inside = launched("SimulatorInProcess"), beside = launched("Simulator");

    const project = path.join(workFolder, "Länge.vtdk");
    expectForces(await pull(inside, project, expectedForces.length), expectedForces.length);
    checkTexts(inside, project);

    // A desktop of this process and one of its own, at the same time.
    const both = await Promise.all([pull(inside, path.join(workFolder, "inside.vtdk"), 5),
                                    pull(beside, path.join(workFolder, "beside.vtdk"), 5)]);
    both.forEach((forces) => expectForces(forces, 5));

    for (const handle of [inside, beside]) {
        succeeds(handle, kv.kv_quit(handle));
        assert.strictEqual(kv.kv_delete(handle), KV_OK);
        assert.strictEqual(kv.kv_save_project(handle), KV_BAD_ARGUMENT);
    }
    assert(fs.existsSync(project) && fs.existsSync(path.join(workFolder, "beside.vtdk")));
    console.log(`Node.js ${process.version} for ${process.platform}: ${expectedForces.length + 10} steps, ` +
                `${expectedForces[0]} N at first`);
}

main().catch((error) => {
    console.error(error);
    process.exit(1);
});
