"""quillmate-service as a test uses it: on free ports, with a folder of its own."""

import os
import subprocess
import tempfile

LIVE_HOST = os.environ.get("QUILLMATE_LIVE_HOST", "")  # the build's
PATIENCE = int(os.environ.get("PATIENCE", "60"))  # seconds; a sanitizer makes the program slow


class Service:
    """The service for the extension's live host."""

    def __init__(self, program, arguments):
        self.folder = tempfile.TemporaryDirectory()
        self.authority = self.folder.name + "/ca.pem"
        self.process = subprocess.Popen(
            [program, "--port", "0", "--data", self.folder.name, *arguments], stdout=subprocess.PIPE
        )
        self.origin = self.process.stdout.readline().decode().split()[-1]

    def environment(self):
        return {
            "QUILLMATE_CONNECT_TO": LIVE_HOST + "=" + self.origin.removeprefix("https://"),
            "QUILLMATE_CA_FILE": self.authority,
        }

    def end(self):
        self.process.terminate()
        status = self.process.wait(PATIENCE)
        self.process.stdout.close()
        self.folder.cleanup()
        return status
