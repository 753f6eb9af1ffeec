"""Talks to the emulator: QEMU's machine protocol, QMP, over a socket."""

import json
import socket

from boards import CheckError


class Qmp:
    """A client on a connected socket, which becomes its own."""

    def __init__(self, connection: socket.socket, seconds: float):
        connection.settimeout(seconds)
        self._connection = connection
        self._lines = connection.makefile("r", encoding="utf-8")
        self._read()  # the greeting
        self.call("qmp_capabilities")

    def call(self, command, **arguments):
        request = {"execute": command, "arguments": arguments}
        self._connection.sendall(json.dumps(request).encode() + b"\n")
        while True:
            answer = self._read()
            if "error" in answer:
                raise CheckError(f"{command}: {answer['error']['desc']}")
            if "return" in answer:
                return answer["return"]

    def close(self):
        self._lines.close()
        self._connection.close()

    def _read(self):
        try:
            line = self._lines.readline()
        except OSError as error:
            raise CheckError(f"the emulator does not answer: {error}") from error
        if not line:
            raise CheckError("the emulator has gone")
        return json.loads(line)
