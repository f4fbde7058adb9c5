#!/usr/bin/env python3
"""AxialDrive.mo without a tool: imports AxialCoupling.fmu (FMI 2.0) and drives a load through it.

Two inertias; a motor turns one, the other works against a load that grows with its speed. The field of the coupling is
all that connects them. Usage: drive.py AxialCoupling.fmu [--step SECONDS] [--without-speeds] [--output FOLDER]; prints
time, the discs' angles and speeds, and the torque on the driven one, as comma-separated values.
"""
import argparse
import ctypes
import pathlib
import platform
import sys
import tempfile
import xml.etree.ElementTree as ET
import zipfile

MOTOR_TORQUE = 0.6  # N m
INERTIA = 5e-4  # of each disc, kg m^2
LOAD_DAMPING = 0.02  # N m s/rad
END = 0.24  # s

LOGGER = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int, ctypes.c_char_p, ctypes.c_char_p,
                          ctypes.c_char_p)
ALLOCATE = ctypes.CFUNCTYPE(ctypes.c_void_p, ctypes.c_size_t, ctypes.c_size_t)
FREE = ctypes.CFUNCTYPE(None, ctypes.c_void_p)
FINISHED = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_int)


class Callbacks(ctypes.Structure):
    """What the FMU calls of its importer: here only the logger."""
    _fields_ = [("logger", LOGGER), ("allocate", ALLOCATE), ("free", FREE), ("finished", FINISHED),
                ("environment", ctypes.c_void_p)]


class Coupling:
    """An instance of the FMU."""

    def __init__(self, fmu, folder, output):
        zipfile.ZipFile(fmu).extractall(folder)
        root = ET.parse(folder / "modelDescription.xml").getroot()
        self.references = {variable.get("name"): int(variable.get("valueReference"))
                           for variable in root.find("ModelVariables")}
        identifier = root.find("CoSimulation").get("modelIdentifier")
        binary = f"win64/{identifier}.dll" if platform.system() == "Windows" else f"linux64/{identifier}.so"
        self.library = ctypes.CDLL(str(folder / "binaries" / binary))
        self.library.fmi2Instantiate.restype = ctypes.c_void_p
        self.callbacks = Callbacks(LOGGER(self.log), ALLOCATE(), FREE(), FINISHED(), None)
        self.instance = ctypes.c_void_p(self.library.fmi2Instantiate(
            b"drive", 1, root.get("guid").encode(), (folder / "resources").as_uri().encode(),
            ctypes.byref(self.callbacks), 0, 1))
        if not self.instance:
            sys.exit(f"{fmu}: no instance")
        self.call("fmi2SetString", *self.references_of("outputFolder"), (ctypes.c_char_p * 1)(str(output).encode()))
        self.call("fmi2SetupExperiment", 0, ctypes.c_double(0), ctypes.c_double(0), 0, ctypes.c_double(0))
        self.call("fmi2EnterInitializationMode")
        self.call("fmi2ExitInitializationMode")

    @staticmethod
    def log(_environment, _name, _status, category, _format, text):
        print(f"{category.decode()}: {text.decode()}", file=sys.stderr)

    def call(self, function, *arguments):
        if getattr(self.library, function)(self.instance, *arguments) != 0:
            sys.exit(f"{function} failed")

    def references_of(self, *names):
        return (ctypes.c_uint * len(names))(*[self.references[name] for name in names]), ctypes.c_size_t(len(names))

    def set(self, values):
        self.call("fmi2SetReal", *self.references_of(*values), (ctypes.c_double * len(values))(*values.values()))

    def torques(self):
        """On driver and driven disc, by the field."""
        values = (ctypes.c_double * 2)()
        self.call("fmi2GetReal", *self.references_of("driver_hinge.torque", "driven_hinge.torque"), values)
        return list(values)

    def close(self):
        self.call("fmi2Terminate")
        self.library.fmi2FreeInstance(self.instance)


def drive(coupling, step, tells_speeds):
    """Rows of time, two angles, two speeds, and the torque on the driven disc.

    The mechanics of each step are exact for torques that change from those at its beginning to those at its end along a
    line, but for the load, whose torque is that at the beginning.
    """
    angles, speeds = [0.0, 0.0], [0.0, 0.0]
    fields = coupling.torques()
    for count in range(round(END / step)):
        yield [count * step, *angles, *speeds, fields[1]]
        coupling.set({f"{name}_hinge.{what}": value for what, values in (("angle", angles), ("angularVelocity", speeds))
                      for name, value in zip(("driver", "driven"), values) if what == "angle" or tells_speeds})
        coupling.call("fmi2DoStep", ctypes.c_double(count * step), ctypes.c_double(step), 1)
        after = coupling.torques()
        others = [MOTOR_TORQUE, -LOAD_DAMPING * speeds[1]]
        for i in range(2):
            begin, end = (fields[i] + others[i]) / INERTIA, (after[i] + others[i]) / INERTIA
            angles[i] += step * speeds[i] + step * step * (2 * begin + end) / 6
            speeds[i] += step * (begin + end) / 2
        fields = after
    yield [END, *angles, *speeds, fields[1]]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("fmu", type=pathlib.Path)
    parser.add_argument("--step", type=float, default=0.001, help="communication step, seconds (default: 0.001)")
    parser.add_argument("--without-speeds", action="store_true", help="hand over the angles alone")
    parser.add_argument("--output", type=pathlib.Path, help="folder for the run's own files (default: none are kept)")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as scratch:
        folder = pathlib.Path(scratch)
        coupling = Coupling(arguments.fmu, folder / "fmu", arguments.output or folder / "runs")
        print("time,driver.angle,driven.angle,driver.speed,driven.speed,driven.torque")
        for row in drive(coupling, arguments.step, not arguments.without_speeds):
            print(",".join(f"{value:.9g}" for value in row))
        coupling.close()


if __name__ == "__main__":
    main()
