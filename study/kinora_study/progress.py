"""What is seen of a study that runs: a line that redraws itself on a terminal, a line now and then elsewhere."""

from __future__ import annotations

import shutil
import sys
import time

SECONDS_BETWEEN_LINES = 10.0
BAR = 24


def duration(seconds: float) -> str:
    """'45 s', '3 min 20 s' or '2 h 05 min'."""
    whole = round(seconds)
    if whole < 60:
        return f"{whole} s"
    if whole < 3600:
        return f"{whole // 60} min {whole % 60:02d} s"
    return f"{whole // 3600} h {whole % 3600 // 60:02d} min"


class Progress:
    """Tells how far a study is."""

    def __init__(self, is_quiet: bool = False) -> None:
        self._is_quiet = is_quiet
        self._is_terminal = sys.stdout.isatty()
        self._start = self._last = 0.0
        self._waiting = 0
        self._is_line_open = False
        self._shown = ""

    def begin(self, runs: int, waiting: int) -> None:
        """Of so many runs so many are still to be done."""
        self._waiting = waiting
        self._start = self._last = time.monotonic()
        if not self._is_quiet:
            done = f", {runs - waiting:,} of them done already" if runs > waiting else ""
            print(f"{runs:,} runs{done}", flush=True)

    def show(self, done: int, failed: int) -> None:
        """So many of those that were to be done are done, and so many have failed so far."""
        now = time.monotonic()
        is_early = not self._is_terminal and now - self._last < SECONDS_BETWEEN_LINES and done < self._waiting
        if self._is_quiet or is_early:
            return
        self._last = now
        left = (now - self._start) / done * (self._waiting - done) if done else None
        text = f"{done:,} of {self._waiting:,} runs"
        text += f", {failed:,} failed" if failed else ""
        text += f", {duration(left)} left" if left is not None and done < self._waiting else ""
        if not self._is_terminal:
            if text != self._shown:
                print(text, flush=True)
            self._shown = text
            return
        filled = BAR * done // self._waiting
        line = f"[{'#' * filled}{'.' * (BAR - filled)}] {100 * done // self._waiting:3d}%  {text}"
        width = shutil.get_terminal_size().columns - 1
        print(f"\r{line[:width]:<{width}}", end="", flush=True)
        self._is_line_open = True

    def end(self) -> None:
        """What follows begins on a line of its own."""
        if self._is_line_open:
            print(flush=True)
            self._is_line_open = False
        if not self._is_quiet and self._waiting:
            print(f"{duration(time.monotonic() - self._start)} for it", flush=True)
