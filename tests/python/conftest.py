from pathlib import Path
from typing import Iterator

import magnet_pair
import pytest
from kinora_veltrix import Coupling


@pytest.fixture
def pair(tmp_path: Path) -> Iterator[Coupling]:
    """A coupling with the model of two cube magnets."""
    with Coupling() as coupling:
        yield magnet_pair.start(coupling, tmp_path)
        if not coupling.closed:
            coupling.close_project()
