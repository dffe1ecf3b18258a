"""A connection to a running Thunderbird, over the Marionette protocol of Mozilla's applications, version 3."""

import json
import socket


class Marionette:
    """Runs scripts in Thunderbird's own windows."""

    def __init__(self, port):
        self.socket = socket.create_connection(("127.0.0.1", port), timeout=120)
        self.stream = self.socket.makefile("rwb")
        self.last = 0
        self.receive()  # It introduces itself.
        self.command("WebDriver:NewSession", {})
        self.command("Marionette:SetContext", {"value": "chrome"})

    def receive(self):
        length = b""
        while not length.endswith(b":"):
            byte = self.stream.read(1)
            if not byte:
                raise ConnectionError("Thunderbird has closed the connection")
            length += byte
        return json.loads(self.stream.read(int(length[:-1])))

    def command(self, name, parameters):
        self.last += 1
        data = json.dumps([0, self.last, name, parameters]).encode()
        self.stream.write(b"%d:%s" % (len(data), data))
        self.stream.flush()
        _, number, error, result = self.receive()
        assert number == self.last
        if error:
            raise RuntimeError(f"{name}: {error['message']}\n{error.get('stacktrace', '')}")
        return result

    def run(self, script, *arguments):
        """The script's result; its text is the body of an asynchronous function of `args`."""
        body = (
            "const [args, done] = [arguments[0], arguments[1]];"
            f"(async () => {{ {script} }})().then(value => done({{value}}), error => done({{error: String(error)}}));"
        )
        result = self.command(
            "WebDriver:ExecuteAsyncScript",
            {"script": body, "args": [list(arguments)], "scriptTimeout": 60_000, "newSandbox": True},
        )["value"]
        if "error" in result:
            raise RuntimeError(result["error"])
        return result.get("value")

    def close(self):
        self.stream.close()
        self.socket.close()
