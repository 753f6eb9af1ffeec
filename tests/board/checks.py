"""What is expected of a running board: a line for each expectation, and proof of each failure."""

import contextlib
import time

import scenes
from boards import CheckError
from guest import Guest

# Longest wait for a picture or a line, on a loaded machine.
_PATIENCE_SECONDS = 60
_POLL_SECONDS = 0.2


def wait_for(condition, seconds=_PATIENCE_SECONDS):
    """Polls until `condition` gives something true; returns that, or what it gave last."""
    deadline = time.monotonic() + seconds
    while True:
        found = condition()
        if found or time.monotonic() > deadline:
            return found
        time.sleep(_POLL_SECONDS)


class Checks:
    """Expectations of one boot; counts those that fail and goes on."""

    def __init__(self, guest: Guest, grab, pictures, pixel_format):
        self.guest = guest
        self.failures = 0
        self._grab = grab  # takes the layer out of the board
        self._pictures = pictures
        self._format = pixel_format

    def expect(self, condition, what, details=""):
        print(f"  {'ok  ' if condition else 'FAIL'}  {what}", flush=True)
        if not condition:
            self.failures += 1
            if details:
                print(details, flush=True)
        return condition

    def shows(self, name, what=""):
        """The board shows what the virtual device does, in every channel of every pixel; where texts
        are, as near as the board can."""
        expected = self._pictures[self._format, name]
        seen = None

        def same():
            nonlocal seen
            seen = self._grab()
            return seen.is_near(expected, self._step(name))

        equal = wait_for(same)
        details = "" if equal else self._proof(name, seen, expected)
        self.expect(equal, f"picture: {what or name}", details)

    def keeps_showing(self, name, what, seconds):
        """The same, at every look for a while."""
        expected = self._pictures[self._format, name]
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline:
            seen = self._grab()
            if not seen.is_near(expected, self._step(name)):
                self.expect(False, f"picture: {what}", self._proof(what, seen, expected))
                return
            time.sleep(_POLL_SECONDS)
        self.expect(True, f"picture: {what}")

    def writes(self, line, since, times=1):
        """The processes write a line, so many times from a byte of their log on."""
        found = wait_for(lambda: self.guest.written(since).count(line) >= times)
        exact = found and self.guest.written(since).count(line) == times
        self.expect(exact, f"line: {line}", self.guest.written(since))

    def serves(self, pid):
        """The process answers commands; ends the boot when it does not."""
        def answers():
            if not self.guest.is_running(pid):
                raise CheckError("the process on the board has ended\n" + self.guest.written())
            return self.guest.control("ping", check=False)[0] == 0

        if not wait_for(answers):
            raise CheckError("the process on the board serves no commands\n" + self.guest.written())

    def _step(self, name):
        return self.guest.parts.board.edge_step if name in scenes.WITH_TEXT else 0

    def _proof(self, name, seen, expected):
        """Saves what was seen and where it differs; returns a text about it."""
        folder = self.guest.work
        stem = name.replace(" ", "_")
        seen.save(folder / f"{stem}_seen.png")
        expected.save(folder / f"{stem}_expected.png")
        if (seen.width, seen.height) != (expected.width, expected.height):
            return f"{seen.width}x{seen.height} in place of {expected.width}x{expected.height}"
        seen.difference(expected).save(folder / f"{stem}_difference.png")
        count, (x, y) = seen.differing_pixels(expected)
        at = (y * seen.width + x) * 4
        return (f"        {count} pixels differ, the first at {x},{y}: "
                f"{seen.pixels[at:at + 4].hex()} in place of {expected.pixels[at:at + 4].hex()} "
                f"(blue, green, red, alpha); see {folder}/{stem}_*.png")


@contextlib.contextmanager
def boot(checks: Checks):
    """A boot from its start to its end; shows the ends of its logs when something was not right."""
    fine = False
    try:
        with checks.guest:
            yield
        fine = checks.failures == 0
    finally:
        if not fine:
            _show_logs(checks.guest)


def _show_logs(guest: Guest, lines=40):
    for log in (guest.lines, guest.console):
        if log.exists():
            print(f"---- {log}")
            print("\n".join(log.read_text(errors="replace").splitlines()[-lines:]), flush=True)
