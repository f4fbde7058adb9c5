#!/usr/bin/env python3
"""Tells Snakemake what has become of a job of Slurm: status.py JOB prints running, success or failed.

The controller is asked, which knows a job for some minutes after its end (MinJobAge); accounting is not needed. A job that it does not
know any more is called a success: Snakemake then looks for the job's file, and without it the job has failed.
"""

import subprocess
import sys

# Those that come back from a node that has died, too: Slurm starts them again.
WAITING = {"PENDING", "CONFIGURING", "RUNNING", "COMPLETING", "SUSPENDED", "REQUEUED", "REQUEUE_HOLD", "RESIZING",
           "SIGNALING", "STAGE_OUT", "STOPPED"}
TRIES = 5


def state_of(job: str) -> str:
    """The state's name; empty for a job that the controller does not know."""
    for _ in range(TRIES):
        asked = subprocess.run(["scontrol", "--oneliner", "show", "job", job], capture_output=True, encoding="utf-8",
                               check=False)
        if asked.returncode == 0:
            fields = dict(field.partition("=")[::2] for field in asked.stdout.split())
            return fields.get("JobState", "")
        if "Invalid job id" in asked.stderr:
            return ""
    return "PENDING"  # the controller is busy or away; Slurm goes on with what it has


def main() -> None:
    state = state_of(sys.argv[1])
    print("running" if state in WAITING else "success" if state in ("COMPLETED", "") else "failed")


if __name__ == "__main__":
    main()
