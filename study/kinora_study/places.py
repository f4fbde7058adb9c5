"""Where what belongs to this program is: in the sources, in a build tree or in an installation."""

from __future__ import annotations

import sys
from pathlib import Path

# The folder with the package, the Snakefile and the profiles.
ROOM = Path(__file__).resolve().parent.parent
LAUNCHER = Path(sys.argv[0]).resolve()

_IS_SOURCE = (ROOM / "kinora-study").exists()
# Of a build tree or an installation the room is PREFIX/share/kinora/study; of the sources its programs are in a build.
_PREFIX = ROOM.parent / "build" / "native-release" if _IS_SOURCE else ROOM.parent.parent.parent

HOST = _PREFIX / "bin" / "kinora-run"
TEMPLATE = _PREFIX / "share" / "kinora" / "study.html"
