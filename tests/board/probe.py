"""board_probe on the board: commands through its FIFO, answers among the written lines."""

import re

from boards import CheckError
from checks import wait_for
from guest import Guest

_FIFO = "/board/tmp/board_probe"


class Probe:
    def __init__(self, guest: Guest):
        self._guest = guest

    def ask(self, command, beginning):
        """The answer to a command: the first new line that begins with these words."""
        since = self._guest.lines.stat().st_size
        self._guest.shell(f"echo '{command}' >{_FIFO}")
        found = wait_for(lambda: re.search(rf"board_probe: ({beginning}.*)$",
                                           self._guest.written(since), re.MULTILINE))
        if not found:
            raise CheckError(f"board_probe does not answer: {command}")
        return found.group(1)

    def state(self):
        """The pointer's place, its buttons, the idle seconds."""
        return self.ask("state", "pointer")

    def resolution(self, code):
        return self.ask(f"resolution {code}", "resolution")
